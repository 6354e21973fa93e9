// A simple model of files in memory, as byte vectors in a map, and steps that do the same to both and compare. Whoever
// drives it chooses: a random generator, or the bytes of a fuzzer.
#pragma once

#include "foundation/inc/filesystem.h"
#include "foundation/inc/virtualfilesystem.h"
#include "platform/inc/files.h"
#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

class CVirtualModel {
public:
    /// `choose(n)` gives a number below n.
    using TChoose = std::function<std::uint32_t(std::uint32_t)>;
    explicit CVirtualModel(TChoose choose) : Choose(std::move(choose)) {}
    CVirtualModel(const CVirtualModel&) = delete;
    CVirtualModel& operator=(const CVirtualModel&) = delete;
    /// Closes and deletes all it made.
    ~CVirtualModel() {
        while (!Handles.empty()) {
            Close(0);
        }
        System.DeleteTree(Tsx::CVirtualFileSystem::GetRootName(), true);
    }

    /// One operation and a look at all invariants. What differed, or an empty text; `done` tells the operation.
    std::string Step(std::string& done) {
        const std::uint32_t choice = Choose(8);
        if (Handles.empty() || (choice == 0 && Handles.size() < 8)) {
            done = "open";
            const std::string name(1, static_cast<char>('a' + Choose(4)));
            if (Choose(4) == 0 && System.TryDeleteFile(PathOf(name))) { // nobody has it open
                Files.erase(name);
            }
            Open(name);
            return Wrong;
        }
        const std::size_t index = Choose(static_cast<std::uint32_t>(Handles.size()));
        const std::int64_t count = Choose(Choose(10) == 0 ? 150'000 : 300);
        done = choice < 2 ? "close" : choice < 4 ? "write" : choice < 6 ? "read" : "move ends";
        choice < 2   ? Close(index)
        : choice < 4 ? Write(Handles[index], count)
        : choice < 6 ? Read(Handles[index], count)
                     : MoveEnds(Handles[index]);
        std::for_each(Handles.begin(), Handles.end(), [this](const SHandle& open) { CheckInvariants(open); });
        return Wrong;
    }
    /// Reads every file.
    std::string CompareContents() {
        for (const auto& [name, file] : Files) {
            Open(name);
            Read(Handles.back(), file.size + 1);
            Close(Handles.size() - 1);
        }
        return Wrong;
    }

private:
    static constexpr std::uint32_t MostBytes = 1'000'000; // more than ten views
    struct SFile {
        std::vector<char> bytes; // all that were ever written: what is cut off comes back
        std::int64_t size = 0;
    };
    struct SHandle {
        Tsx::CVirtualFile* file;
        std::string name;
        std::int64_t length;
        std::int64_t position = 0;
    };

    TChoose Choose;
    Tsx::CFileSystemBase& System = Tsx::FileSystem::GetFileSystem(Tsx::CVirtualFileSystem::GetRootName());
    std::map<std::string, SFile> Files;
    std::vector<SHandle> Handles;
    char NextByte = 1;
    std::string Wrong;

    static Tsx::CUnicodeString PathOf(const std::string& name) {
        return Tsx::CVirtualFileSystem::GetRootName() + Tsx::CUnicodeString(name.c_str(), Tsx::AnsiCodePage);
    }
    void Expect(const char* what, std::int64_t expected, std::int64_t found) {
        if (expected != found) {
            Wrong += std::string(what) + ": " + std::to_string(found) + " and not " + std::to_string(expected) + "; ";
        }
    }
    void Open(const std::string& name) {
        Tsx::CBaseFile* opened =
            System.OpenFile(PathOf(name), Platform::GenericRead | Platform::GenericWrite, 3, nullptr,
                            Platform::OpenAlways, 128, nullptr, Choose(4) == 0 ? 200'000 : 0, nullptr);
        Handles.push_back({dynamic_cast<Tsx::CVirtualFile*>(opened), name, Files[name].size});
    }
    void Close(std::size_t index) {
        const SHandle handle = Handles[index];
        Handles.erase(Handles.begin() + static_cast<std::ptrdiff_t>(index));
        Files[handle.name].size = handle.length;
        System.CloseFile(handle.file, Choose(2) == 0);
    }
    void Write(SHandle& handle, std::int64_t count) {
        const std::int64_t end = handle.position + count;
        if (count == 0 || end >= MostBytes) {
            return;
        }
        SFile& file = Files[handle.name];
        const std::vector<char> bytes(static_cast<std::size_t>(count), ++NextByte);
        handle.file->Write(bytes.data(), static_cast<std::int32_t>(count));
        file.bytes.resize(std::max(file.bytes.size(), static_cast<std::size_t>(end)));
        std::copy(bytes.begin(), bytes.end(), file.bytes.begin() + handle.position);
        if (end > handle.length) {
            handle.length = file.size = end;
        }
        handle.position = end;
    }
    void Read(SHandle& handle, std::int64_t count) {
        const std::vector<char>& model = Files[handle.name].bytes;
        std::vector<char> bytes(static_cast<std::size_t>(count) + 1, '\x7F');
        const std::int64_t expected = std::clamp<std::int64_t>(handle.length - handle.position, 0, count);
        Expect("read", expected, handle.file->Read(bytes.data(), static_cast<std::int32_t>(count)));
        for (std::int64_t i = 0; i < expected && Wrong.empty(); ++i) {
            const auto at = static_cast<std::size_t>(handle.position + i);
            Expect("byte", at < model.size() ? model[at] : 0, bytes[static_cast<std::size_t>(i)]);
        }
        handle.position += expected;
    }
    void MoveEnds(SHandle& handle) {
        std::int64_t place = Choose(Choose(8) == 0 ? MostBytes : 100'000);
        place -= Choose(4) == 0 ? place % Tsx::ViewSize : 0; // where views and mappings meet
        if (Choose(3) == 0) {
            handle.file->SetLength(place);
            handle.length = handle.position = Files[handle.name].size = place;
            return;
        }
        const std::int64_t bases[] = {0, handle.position, handle.length};
        const std::uint32_t from = Choose(3);
        Expect("seek", place, handle.file->Seek(place - bases[from], from));
        handle.position = place;
    }
    void CheckInvariants(const SHandle& handle) {
        const Tsx::CVirtualFile& file = *handle.file;
        std::int64_t end = 0;
        for (const Tsx::CVirtualMapping* mapping : file.Data->Mappings) {
            Expect("start of a mapping", end, mapping->Start);
            end += mapping->Size;
        }
        Expect("capacity", end, file.Data->Capacity);
        Expect("unit", 0, end % Tsx::MappingUnit);
        Expect("most views", 1, file.Views.CountNodes() <= 10);
        Expect("length", handle.length, file.GetLength());
        Expect("position", handle.position, file.GetPosition());
        Expect("size", Files.at(handle.name).size, file.Data->Size);
    }
};
