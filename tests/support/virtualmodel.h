// A simple model of files in memory, as byte vectors in a map, and steps that do the same to both and compare. Whoever
// drives it chooses: a random generator, or the bytes of a fuzzer.
#pragma once

#include "foundation/inc/virtualfilesystem.h"
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

class CVirtualModel {
public:
    /// `choose(n)` gives a number below n.
    using TChoose = std::function<std::uint32_t(std::uint32_t)>;
    explicit CVirtualModel(TChoose choose);
    /// Closes and deletes all it made.
    ~CVirtualModel();
    CVirtualModel(const CVirtualModel&) = delete;
    CVirtualModel& operator=(const CVirtualModel&) = delete;

    /// One operation and a look at all invariants. What differed, or an empty text; `done` tells the operation.
    std::string Step(std::string& done);
    /// Reads every file.
    std::string CompareContents();

private:
    struct SFile {
        std::vector<char> bytes; // all that were ever written: what is cut off comes back
        std::int64_t size = 0;
        char ByteAt(std::int64_t at) const {
            return at < static_cast<std::int64_t>(bytes.size()) ? bytes[static_cast<std::size_t>(at)] : '\0';
        }
    };
    struct SHandle {
        Tsx::CVirtualFile* file;
        std::string name;
        std::int64_t length;
        std::int64_t position = 0;
    };

    TChoose Choose;
    Tsx::CVirtualFileSystem& System;
    std::map<std::string, SFile> Files;
    std::vector<SHandle> Handles;
    char NextByte = 1;

    bool HasHandles(const std::string& name) const;
    std::string Open();
    std::string Close();
    std::string Write(SHandle& handle);
    std::string Read(SHandle& handle);
    std::string MoveEnds(SHandle& handle);
    std::string CopyOrMove();
    std::string CheckInvariants() const;
};
