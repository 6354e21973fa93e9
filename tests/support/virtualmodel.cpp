#include "tests/support/virtualmodel.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/files.h"
#include <algorithm>
#include <memory>

using namespace Tsx;

namespace {

constexpr std::uint32_t MostBytes = 1'000'000; // more than ten views

CUnicodeString PathOf(const std::string& name) {
    return CVirtualFileSystem::GetRootName() + CUnicodeString(name.c_str(), AnsiCodePage);
}

/// The cause of the file failure that an action ends in; 0 for none.
std::uint32_t CauseOf(const std::function<void()>& action) {
    try {
        action();
    } catch (CFileException* exception) {
        return std::unique_ptr<CFileException>(exception)->cause;
    }
    return 0;
}

std::string Differ(const char* what, std::int64_t expected, std::int64_t found) {
    return expected == found
               ? std::string()
               : std::string(what) + ": " + std::to_string(found) + " and not " + std::to_string(expected);
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

bool CVirtualModel::HasHandles(const std::string& name) const {
    return std::any_of(Handles.begin(), Handles.end(), [&](const SHandle& handle) { return handle.name == name; });
}

std::string CVirtualModel::Open() {
    const std::string name(1, static_cast<char>('a' + Choose(4)));
    CBaseFile* opened = System.OpenFile(PathOf(name), Platform::GenericRead | Platform::GenericWrite, 3, nullptr,
                                        Platform::OpenAlways, 128, nullptr, Choose(4) == 0 ? 200'000 : 0, nullptr);
    Handles.push_back({dynamic_cast<CVirtualFile*>(opened), name, Files[name].size});
    return {};
}

std::string CVirtualModel::Close() {
    const std::size_t index = Choose(static_cast<std::uint32_t>(Handles.size()));
    const SHandle handle = Handles[index];
    Handles.erase(Handles.begin() + static_cast<std::ptrdiff_t>(index));
    Files[handle.name].size = handle.length;
    System.CloseFile(handle.file, Choose(2) == 0);
    return {};
}

std::string CVirtualModel::Write(SHandle& handle) {
    SFile& file = Files[handle.name];
    const auto count = static_cast<std::int32_t>(Choose(Choose(10) == 0 ? 150'000 : 300));
    const std::vector<char> bytes(static_cast<std::size_t>(count) + 1, ++NextByte);
    handle.file->Write(bytes.data(), count);
    const std::int64_t end = handle.position + count;
    if (count > 0) {
        file.bytes.resize(std::max(file.bytes.size(), static_cast<std::size_t>(end)));
        std::copy_n(bytes.begin(), count, file.bytes.begin() + handle.position);
    }
    if (count > 0 && end > handle.length) {
        handle.length = file.size = end;
    }
    handle.position = end;
    return {};
}

std::string CVirtualModel::Read(SHandle& handle) {
    const SFile& file = Files[handle.name];
    const auto wanted = static_cast<std::int32_t>(Choose(Choose(10) == 0 ? 150'000 : 300));
    std::vector<char> bytes(static_cast<std::size_t>(wanted) + 1, '\x7F');
    const std::int64_t expected = std::clamp<std::int64_t>(handle.length - handle.position, 0, wanted);
    const std::int32_t read = handle.file->Read(bytes.data(), wanted);
    for (std::int64_t i = 0; i < expected && read == expected; ++i) {
        if (bytes[static_cast<std::size_t>(i)] != file.ByteAt(handle.position + i)) {
            return "byte " + std::to_string(handle.position + i) + " of " + handle.name;
        }
    }
    handle.position += expected;
    return Differ("read", expected, read);
}

std::string CVirtualModel::MoveEnds(SHandle& handle) {
    std::int64_t place = Choose(Choose(8) == 0 ? MostBytes : 100'000);
    if (Choose(4) == 0) {
        place -= place % ViewSize; // where views and mappings meet
    }
    if (Choose(3) == 0) {
        handle.file->SetLength(place);
        handle.length = handle.position = Files[handle.name].size = place;
        return {};
    }
    const std::uint32_t from = Choose(3);
    const std::int64_t base = from == SeekFromStart ? 0 : from == SeekFromCurrent ? handle.position : handle.length;
    const std::int64_t offset = Choose(8) == 0 ? -base - 1 : place - base;
    const std::uint32_t cause = CauseOf([&] { handle.file->Seek(offset, from); });
    handle.position = std::max<std::int64_t>(base + offset, 0);
    return Differ("seek", base + offset < 0 ? FC_BadSeek : FC_None, cause);
}

std::string CVirtualModel::CopyOrMove() {
    const std::string target(1, static_cast<char>('a' + Choose(4)));
    const std::string source(1, static_cast<char>('a' + Choose(4)));
    if (HasHandles(target) || HasHandles(source) || source == target || !Files.contains(source)) {
        return {};
    }
    SFile& made = Files[target] = Files[source];
    made.bytes.resize(static_cast<std::size_t>(made.size));
    if (Choose(2) == 0) {
        System.CopyFile(PathOf(target), PathOf(source));
    } else {
        System.MoveFile(PathOf(target), PathOf(source));
        Files.erase(source);
    }
    return {};
}

std::string CVirtualModel::CheckInvariants() const {
    std::string wrong =
        Differ("registered", static_cast<std::int64_t>(Handles.size()), CPeek::Owners(System).GetItemCount());
    for (const SHandle& handle : Handles) {
        const CVirtualFile& file = *handle.file;
        std::int64_t end = 0;
        for (const CVirtualMapping* mapping : file.Data->Mappings) {
            wrong += Differ("start of a mapping", end, mapping->Start);
            end += mapping->Size;
        }
        wrong += Differ("capacity", end, file.Data->Capacity);
        wrong += Differ("unit", 0, end % MappingUnit);
        wrong += Differ("most views", 1, file.Views.CountNodes() <= 10);
        wrong += Differ("length", handle.length, file.GetLength());
        wrong += Differ("position", handle.position, file.GetPosition());
        wrong += Differ("size", Files.at(handle.name).size, file.Data->Size);
    }
    return wrong;
}

std::string CVirtualModel::Step(std::string& done) {
    constexpr std::size_t mostHandles = 8;
    const std::uint32_t choice = Choose(16);
    std::string wrong;
    if (choice < 10 && !Handles.empty()) {
        SHandle& handle = Handles[Choose(static_cast<std::uint32_t>(Handles.size()))];
        const bool fits = handle.position + 150'000 < MostBytes;
        done = "handle of " + handle.name;
        wrong = choice < 4 && fits ? Write(handle) : choice < 7 ? Read(handle) : MoveEnds(handle);
    } else if (choice < 12 && Handles.size() < mostHandles) {
        done = "open";
        wrong = Open();
    } else if (choice < 14 && !Handles.empty()) {
        done = "close";
        wrong = Close();
    } else {
        done = "copy or move";
        wrong = CopyOrMove();
    }
    return wrong.empty() ? CheckInvariants() : wrong;
}

std::string CVirtualModel::CompareContents() {
    for (const auto& [name, file] : Files) {
        CBaseFile* open = System.OpenFile(PathOf(name), Platform::GenericRead, 3, nullptr, Platform::OpenExisting, 0,
                                          nullptr, 0, nullptr);
        std::vector<char> bytes(static_cast<std::size_t>(file.size) + 1);
        const std::int32_t read = open->Read(bytes.data(), static_cast<std::int32_t>(file.size + 1));
        System.CloseFile(open, true);
        bool same = read == file.size;
        for (std::int32_t i = 0; i < read && same; ++i) {
            same = bytes[static_cast<std::size_t>(i)] == file.ByteAt(i);
        }
        if (!same) {
            return "contents of " + name;
        }
    }
    return {};
}
