#include "tests/support/virtualmodel.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/files.h"
#include <algorithm>
#include <memory>

using namespace Tsx;

namespace {

constexpr std::uint32_t MostBytes = 1'000'000; // more than ten views
constexpr std::size_t MostHandles = 8;

CUnicodeString PathOf(const std::string& name) {
    return CVirtualFileSystem::GetRootName() + CUnicodeString(name.c_str(), AnsiCodePage);
}

/// Reaches the table of open files.
class CPeek : public CVirtualFileSystem {
public:
    static const COwnerMap& Owners(const CVirtualFileSystem& system) { return system.*&CPeek::FileOwners; }
};

} // namespace

CVirtualModel::CVirtualModel(TChoose choose)
    : Choose(std::move(choose)),
      System(dynamic_cast<CVirtualFileSystem&>(FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName()))) {}

CVirtualModel::~CVirtualModel() {
    for (const SHandle& handle : Handles) {
        System.CloseFile(handle.file, true);
    }
    System.DeleteTree(CVirtualFileSystem::GetRootName(), true);
}

void CVirtualModel::Expect(const char* what, std::int64_t expected, std::int64_t found) {
    if (expected != found) {
        Wrong += std::string(what) + ": " + std::to_string(found) + " and not " + std::to_string(expected) + "; ";
    }
}

void CVirtualModel::Open(const std::string& name) {
    CBaseFile* opened = System.OpenFile(PathOf(name), Platform::GenericRead | Platform::GenericWrite, 3, nullptr,
                                        Platform::OpenAlways, 128, nullptr, Choose(4) == 0 ? 200'000 : 0, nullptr);
    Handles.push_back({dynamic_cast<CVirtualFile*>(opened), name, Files[name].size});
}

void CVirtualModel::Close(std::size_t index) {
    const SHandle handle = Handles[index];
    Handles.erase(Handles.begin() + static_cast<std::ptrdiff_t>(index));
    Files[handle.name].size = handle.length;
    System.CloseFile(handle.file, Choose(2) == 0);
}

void CVirtualModel::Write(SHandle& handle) {
    const std::int64_t count = Choose(Choose(10) == 0 ? 150'000 : 300);
    if (handle.position + count >= MostBytes) {
        return;
    }
    SFile& file = Files[handle.name];
    const std::vector<char> bytes(static_cast<std::size_t>(count) + 1, ++NextByte);
    handle.file->Write(bytes.data(), static_cast<std::int32_t>(count));
    if (count > 0) {
        file.bytes.resize(std::max(file.bytes.size(), static_cast<std::size_t>(handle.position + count)));
        std::copy_n(bytes.begin(), count, file.bytes.begin() + handle.position);
        if (handle.position + count > handle.length) {
            handle.length = file.size = handle.position + count;
        }
    }
    handle.position += count;
}

void CVirtualModel::Read(SHandle& handle, std::int32_t count) {
    const std::vector<char>& model = Files[handle.name].bytes;
    std::vector<char> bytes(static_cast<std::size_t>(count) + 1, '\x7F');
    const std::int64_t expected = std::clamp<std::int64_t>(handle.length - handle.position, 0, count);
    Expect("read", expected, handle.file->Read(bytes.data(), count));
    for (std::int64_t i = 0; i < expected && Wrong.empty(); ++i) {
        const auto at = static_cast<std::size_t>(handle.position + i);
        Expect("byte", at < model.size() ? model[at] : 0, bytes[static_cast<std::size_t>(i)]);
    }
    handle.position += expected;
}

void CVirtualModel::MoveEnds(SHandle& handle) {
    std::int64_t place = Choose(Choose(8) == 0 ? MostBytes : 100'000);
    if (Choose(4) == 0) {
        place -= place % ViewSize; // where views and mappings meet
    }
    if (Choose(3) == 0) {
        handle.file->SetLength(place);
        handle.length = handle.position = Files[handle.name].size = place;
        return;
    }
    const std::uint32_t from = Choose(3);
    const std::int64_t base = from == SeekFromStart ? 0 : from == SeekFromCurrent ? handle.position : handle.length;
    const std::int64_t offset = Choose(8) == 0 ? -base - 1 : place - base;
    std::uint32_t cause = FC_None;
    try {
        handle.file->Seek(offset, from);
    } catch (CFileException* exception) {
        cause = std::unique_ptr<CFileException>(exception)->cause;
    }
    Expect("seek", base + offset < 0 ? FC_BadSeek : FC_None, cause);
    handle.position = std::max<std::int64_t>(base + offset, 0);
}

void CVirtualModel::CopyOrMove(const std::string& target, const std::string& source) {
    const bool isOpen = std::any_of(Handles.begin(), Handles.end(), [&](const SHandle& handle) {
        return handle.name == target || handle.name == source;
    });
    if (isOpen || source == target || !Files.contains(source)) {
        return;
    }
    SFile& made = Files[target] = Files[source];
    made.bytes.resize(static_cast<std::size_t>(made.size));
    if (Choose(2) == 0) {
        System.CopyFile(PathOf(target), PathOf(source));
    } else {
        System.MoveFile(PathOf(target), PathOf(source));
        Files.erase(source);
    }
}

void CVirtualModel::CheckInvariants() {
    Expect("registered", static_cast<std::int64_t>(Handles.size()), CPeek::Owners(System).GetItemCount());
    for (const SHandle& handle : Handles) {
        const CVirtualFile& file = *handle.file;
        std::int64_t end = 0;
        for (const CVirtualMapping* mapping : file.Data->Mappings) {
            Expect("start of a mapping", end, mapping->Start);
            end += mapping->Size;
        }
        Expect("capacity", end, file.Data->Capacity);
        Expect("unit", 0, end % MappingUnit);
        Expect("most views", 1, file.Views.CountNodes() <= 10);
        Expect("length", handle.length, file.GetLength());
        Expect("position", handle.position, file.GetPosition());
        Expect("size", Files.at(handle.name).size, file.Data->Size);
    }
}

std::string CVirtualModel::Step(std::string& done) {
    const std::uint32_t choice = Choose(16);
    const bool open = !Handles.empty();
    if (choice < 12 && (!open || (choice >= 10 && Handles.size() < MostHandles))) {
        done = "open";
        Open(ChooseName());
    } else if (choice < 10) {
        SHandle& handle = Handles[ChooseHandle()];
        done = choice < 4 ? "write" : choice < 7 ? "read" : "move ends";
        choice < 4   ? Write(handle)
        : choice < 7 ? Read(handle, static_cast<std::int32_t>(Choose(Choose(10) == 0 ? 150'000 : 300)))
                     : MoveEnds(handle);
    } else if (choice < 14 && open) {
        done = "close";
        Close(ChooseHandle());
    } else {
        done = "copy or move";
        const std::string target = ChooseName();
        CopyOrMove(target, ChooseName());
    }
    CheckInvariants();
    return Wrong;
}

std::string CVirtualModel::CompareContents() {
    for (const auto& [name, file] : Files) {
        Open(name);
        Read(Handles.back(), static_cast<std::int32_t>(file.size) + 1);
        Close(Handles.size() - 1);
    }
    return Wrong;
}
