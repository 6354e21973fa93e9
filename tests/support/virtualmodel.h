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
        std::vector<char> bytes; // all that were ever written, and zeros: what is cut off comes back
        std::int64_t size = 0;
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
    std::string Wrong;

    std::string ChooseName() { return std::string(1, static_cast<char>('a' + Choose(4))); }
    std::size_t ChooseHandle() { return Choose(static_cast<std::uint32_t>(Handles.size())); }
    void Expect(const char* what, std::int64_t expected, std::int64_t found);
    void Open(const std::string& name);
    void Close(std::size_t index);
    void Write(SHandle& handle);
    void Read(SHandle& handle, std::int32_t count);
    void MoveEnds(SHandle& handle);
    void CopyOrMove(const std::string& target, const std::string& source);
    void CheckInvariants();
};
