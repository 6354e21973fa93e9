#include "tests/support/virtualmodel.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/file.h"
#include "foundation/inc/filesystem.h"
#include "platform/inc/fileattributes.h"
#include "platform/inc/files.h"
#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

using namespace Tsx;

namespace {

constexpr std::uint32_t MostBytes = 1'000'000; // more than ten views
constexpr std::uint32_t BadSeek = 1009;        // a cause without a Windows code

std::string Key(const std::string& name) {
    std::string key = name;
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
    return key;
}

std::string Parent(const std::string& key) {
    const std::size_t slash = key.rfind('\\');
    return slash == std::string::npos ? std::string() : key.substr(0, slash);
}

/// The Windows code of what an action raises; 0 for nothing.
std::uint32_t CodeOf(const std::function<void()>& action) {
    try {
        action();
    } catch (CFileException* exception) {
        const std::unique_ptr<CFileException> owner(exception);
        return owner->lastError != 0 ? owner->lastError : 1000 + owner->cause;
    }
    return 0;
}

std::string Differ(const char* what, std::int64_t expected, std::int64_t found) {
    return expected == found
               ? std::string()
               : std::string(what) + ": " + std::to_string(found) + " and not " + std::to_string(expected);
}

/// Reaches the tables of the file system.
class CPeek : public CVirtualFileSystem {
public:
    static const COpenFileMap& Open(const CVirtualFileSystem& system) { return system.*&CPeek::OpenFiles; }
    static const COwnerMap& Owners(const CVirtualFileSystem& system) { return system.*&CPeek::FileOwners; }
};

} // namespace

CVirtualModel::CVirtualModel(TChoose choose)
    : Choose(std::move(choose)),
      System(dynamic_cast<CVirtualFileSystem&>(FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName()))),
      Directories{""} {}

CVirtualModel::~CVirtualModel() {
    for (const SHandle& handle : Handles) {
        System.CloseFile(handle.file, true);
    }
    System.DeleteTree(CVirtualFileSystem::GetRootName(), true);
}

std::string CVirtualModel::ChooseDirectory() {
    static const char* const names[] = {"", "a", "a\\b", "A\\B\\c", "d.d"};
    return names[Choose(std::size(names))];
}

std::string CVirtualModel::ChooseFile() {
    static const char* const names[] = {"f", "F", "g.txt", "h.h", "a"};
    const std::string directory = ChooseDirectory();
    return (directory.empty() ? directory : directory + '\\') + names[Choose(std::size(names))];
}

CUnicodeString CVirtualModel::PathOf(const std::string& name) const {
    return CVirtualFileSystem::GetRootName() + CUnicodeString(name.c_str(), AnsiCodePage);
}

void CVirtualModel::MakeParents(const std::string& key) {
    for (std::string parent = Parent(key); !parent.empty(); parent = Parent(parent)) {
        Directories.insert(parent);
    }
}

bool CVirtualModel::HasHandles(const std::string& key) const {
    return std::any_of(Handles.begin(), Handles.end(), [&](const SHandle& handle) { return handle.key == key; });
}

bool CVirtualModel::MayOpen(const std::string& key, std::uint32_t access) const {
    const bool write = access & Platform::GenericWrite;
    if (!HasHandles(key)) {
        return !(write && (Files.at(key).attributes & Platform::FileAttributeReadOnly));
    }
    std::uint32_t shared = 3;
    for (const SHandle& handle : Handles) {
        shared &= handle.key == key ? handle.share : 3;
    }
    return (!(access & Platform::GenericRead) || (shared & 1)) && (!write || (shared & 2));
}

CVirtualModel::SFile& CVirtualModel::Make(const std::string& name, std::uint32_t attributes) {
    MakeParents(Key(name));
    SFile& file = Files[Key(name)];
    file = {};
    file.name = PathOf(name);
    file.attributes = attributes;
    file.writable = !(attributes & Platform::FileAttributeReadOnly);
    return file;
}

std::string CVirtualModel::Open() {
    const std::string name = ChooseFile();
    const std::string key = Key(name);
    const std::uint32_t access = (Choose(3) + 1) << 30;
    const std::uint32_t share = Choose(4);
    const std::uint32_t disposition = Choose(4) + 1;
    const std::uint32_t attributes = Choose(8) == 0 ? 3 : 128;
    CBaseFile* opened = nullptr;
    const std::uint32_t code = CodeOf([&] {
        opened = System.OpenFile(PathOf(name), access, share, nullptr, disposition, attributes, nullptr,
                                 Choose(4) == 0 ? 200'000 : 0, nullptr);
    });
    const bool there = Files.contains(key);
    std::uint32_t expected = 0;
    if (there && disposition == Platform::CreateNew) {
        expected = 5;
    } else if (there && disposition == Platform::CreateAlways && HasHandles(key)) {
        expected = 32;
    } else if (!there && disposition == Platform::OpenExisting) {
        expected = 2;
    } else if (!there || disposition == Platform::CreateAlways) {
        Make(name, disposition == Platform::OpenAlways ? attributes : attributes | Platform::FileAttributeArchive);
    }
    expected = expected == 0 && !MayOpen(key, access) ? 32 : expected;
    if (opened) {
        Handles.push_back({dynamic_cast<CVirtualFile*>(opened), key, access, share, Files[key].size});
    }
    return Differ("open", expected, code);
}

std::string CVirtualModel::Close() {
    const std::size_t index = Choose(static_cast<std::uint32_t>(Handles.size()));
    const SHandle handle = Handles[index];
    Handles.erase(Handles.begin() + static_cast<std::ptrdiff_t>(index));
    Files[handle.key].size = handle.length;
    System.CloseFile(handle.file, Choose(2) == 0);
    return {};
}

std::string CVirtualModel::Write(SHandle& handle) {
    SFile& file = Files[handle.key];
    const auto count = static_cast<std::int32_t>(Choose(Choose(10) == 0 ? 150'000 : 300));
    const std::vector<char> bytes(static_cast<std::size_t>(count) + 1, ++NextByte);
    const std::uint32_t code = CodeOf([&] { handle.file->Write(bytes.data(), count); });
    if (!(handle.access & Platform::GenericWrite) || (count > 0 && !file.writable)) {
        return Differ("refused write", 32, code);
    }
    const std::int64_t end = handle.position + count;
    if (count > 0) {
        file.bytes.resize(std::max(file.bytes.size(), static_cast<std::size_t>(end)));
        std::copy_n(bytes.begin(), count, file.bytes.begin() + handle.position);
    }
    if (count > 0 && end > handle.length) {
        handle.length = file.size = end;
    }
    handle.position = end;
    return Differ("write", 0, code);
}

std::string CVirtualModel::Read(SHandle& handle) {
    const SFile& file = Files[handle.key];
    const auto wanted = static_cast<std::int32_t>(Choose(Choose(10) == 0 ? 150'000 : 300));
    std::vector<char> bytes(static_cast<std::size_t>(wanted) + 1, '\x7F');
    const std::int64_t expected = std::clamp<std::int64_t>(handle.length - handle.position, 0, wanted);
    const std::int32_t read = handle.file->Read(bytes.data(), wanted);
    for (std::int64_t i = 0; i < expected && read == expected; ++i) {
        if (bytes[static_cast<std::size_t>(i)] != file.ByteAt(handle.position + i)) {
            return "byte " + std::to_string(handle.position + i) + " of " + handle.key;
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
        handle.length = handle.position = Files[handle.key].size = place;
        return {};
    }
    const std::uint32_t from = Choose(3);
    const std::int64_t base = from == SeekFromStart ? 0 : from == SeekFromCurrent ? handle.position : handle.length;
    const std::int64_t offset = Choose(8) == 0 ? -base - 1 : place - base;
    const std::uint32_t code = CodeOf([&] { handle.file->Seek(offset, from); });
    handle.position = std::max<std::int64_t>(base + offset, 0);
    return Differ("seek", base + offset < 0 ? BadSeek : 0, code);
}

std::string CVirtualModel::ChangeNames() {
    const std::string directory = ChooseDirectory();
    const std::string key = Key(directory);
    if (Choose(3) == 0) {
        System.CreateDirectory(PathOf(directory), Choose(2) == 0);
        MakeParents(key);
        Directories.insert(key);
        return {};
    }
    if (Choose(2) == 0) {
        const auto isBelow = [&](const std::string& name) { return name != key && Parent(name) == key; };
        const bool full =
            std::any_of(Directories.begin(), Directories.end(), isBelow) ||
            std::any_of(Files.begin(), Files.end(), [&](const auto& file) { return isBelow(file.first); });
        const bool refused = Directories.contains(key) && full;
        if (!refused && !key.empty()) {
            Directories.erase(key);
        }
        return Differ("remove", refused ? 32 : 0, CodeOf([&] { System.RemoveDirectory(PathOf(directory)); }));
    }
    const std::string name = ChooseFile();
    const std::uint32_t expected = !Files.contains(Key(name)) ? 2 : HasHandles(Key(name)) ? 32 : 0;
    if (expected == 0) {
        Files.erase(Key(name));
    }
    return Choose(2) == 0 ? Differ("delete", expected, CodeOf([&] { System.DeleteFile(PathOf(name)); }))
                          : Differ("try", expected == 0, System.TryDeleteFile(PathOf(name)));
}

std::string CVirtualModel::List() {
    const std::string key = Key(ChooseDirectory());
    CArray<CFileStatus> found;
    System.FindFiles(PathOf(key), found, Choose(2) == 0 ? u"*" : u"*.*");
    const std::int32_t depth = CVirtualFileSystem::GetRootName().Length();
    std::int64_t expected = 0;
    for (const auto& [name, file] : Files) {
        expected += Parent(name) == key ? 1 : 0;
        for (const CFileStatus& status : found) {
            if (status.FullName == file.name && !(status.Attributes & Platform::FileAttributeDirectory) &&
                (status.Size != file.size || status.Attributes != file.attributes)) {
                return "status of " + name;
            }
        }
    }
    for (const std::string& name : Directories) {
        expected += !name.empty() && Parent(name) == key ? 1 : 0;
    }
    for (const CFileStatus& status : found) {
        const std::string name = Key(std::string(status.FullName.Mid(depth).ToNarrow(AnsiCodePage).Text()));
        const bool directory = status.Attributes & Platform::FileAttributeDirectory;
        if (directory ? !Directories.contains(name) : !Files.contains(name) || Files[name].name != status.FullName) {
            return "listed " + name;
        }
    }
    return Differ("entries", expected, found.Size());
}

std::uint32_t CVirtualModel::CopyInModel(const std::string& target, const std::string& source) {
    const std::string from = Key(source);
    const std::string to = Key(target);
    if (!Files.contains(from)) {
        return 2;
    }
    if (!MayOpen(from, Platform::GenericRead) || from == to || (Files.contains(to) && HasHandles(to))) {
        return 32;
    }
    const std::uint32_t kept = Files.contains(to) ? Files[to].attributes & 6 : 0;
    SFile& made = Make(target, 128 | 32 | kept);
    const SFile& original = Files[from];
    made.size = original.size;
    made.bytes = original.bytes;
    made.bytes.resize(static_cast<std::size_t>(original.size));
    return 0;
}

std::string CVirtualModel::Copy() {
    const std::string source = ChooseFile();
    const std::string target = ChooseFile();
    std::uint32_t expected = CopyInModel(target, source);
    if (Choose(2) == 0) {
        return Differ("copy", expected, CodeOf([&] { System.CopyFile(PathOf(target), PathOf(source)); }));
    }
    if (expected == 0 && HasHandles(Key(source))) {
        expected = 32; // the copy stays, and the source too
    } else if (expected == 0) {
        Files.erase(Key(source));
    }
    return Differ("move", expected, CodeOf([&] { System.MoveFile(PathOf(target), PathOf(source)); }));
}

std::string CVirtualModel::Ask() {
    const std::string name = ChooseFile();
    const std::string key = Key(name);
    const bool there = Files.contains(key);
    if (Choose(3) == 0) {
        const std::uint32_t attributes = Choose(2) == 0 ? 128 : Choose(8) | 128;
        const std::uint32_t code = CodeOf([&] { System.SetAttributes(PathOf(name), attributes); });
        if (there) {
            Files[key].attributes = attributes == 128 ? 128 : attributes & ~128U;
            return Differ("set attributes", 0, code);
        }
        if (Directories.contains(key)) {
            System.SetAttributes(PathOf(name), Platform::FileAttributeDirectory);
        }
        return Differ("set attributes", Directories.contains(key) ? 0 : 2, code);
    }
    const std::uint32_t mode = Choose(3) | (Choose(4) + 1) << 4;
    const bool may = there && MayOpen(key, CFile::GetDesiredAccess(mode));
    return Differ("exists", there, System.CheckFile(PathOf(name), FA_Exists)) +
           Differ("may open", may, System.CheckFile(PathOf(name), mode));
}

std::string CVirtualModel::CheckInvariants() const {
    std::size_t listed = 0;
    for (const auto& open : CPeek::Open(System)) {
        for (const auto& member : *open.Value) {
            const auto handle = std::find_if(Handles.begin(), Handles.end(),
                                             [&](const SHandle& one) { return one.file == member.Key; });
            if (handle == Handles.end() || open.Key != Files.at(handle->key).name) {
                return "a stranger among the open files";
            }
            ++listed;
        }
    }
    std::string wrong =
        Differ("registered", static_cast<std::int64_t>(Handles.size()), CPeek::Owners(System).GetItemCount());
    wrong += Differ("open files", static_cast<std::int64_t>(Handles.size()), static_cast<std::int64_t>(listed));
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
        wrong += Differ("size", Files.at(handle.key).size, file.Data->Size);
    }
    return wrong;
}

std::string CVirtualModel::Step(std::string& done) {
    constexpr std::size_t mostHandles = 8;
    const std::uint32_t choice = Choose(16);
    std::string wrong;
    if (choice < 8 && !Handles.empty()) {
        SHandle& handle = Handles[Choose(static_cast<std::uint32_t>(Handles.size()))];
        const bool fits = handle.position + 150'000 < MostBytes;
        done = "handle of " + handle.key;
        wrong = choice < 3 && fits ? Write(handle) : choice < 6 ? Read(handle) : MoveEnds(handle);
    } else if (Handles.size() < mostHandles && choice < 11) {
        done = "open";
        wrong = Open();
    } else if (!Handles.empty() && choice < 12) {
        done = "close";
        wrong = Close();
    } else {
        constexpr const char* names[] = {"names", "list", "copy", "ask"};
        constexpr std::string (CVirtualModel::*steps[])() = {&CVirtualModel::ChangeNames, &CVirtualModel::List,
                                                             &CVirtualModel::Copy, &CVirtualModel::Ask};
        done = names[choice % 4];
        wrong = (this->*steps[choice % 4])();
    }
    return wrong.empty() ? CheckInvariants() : wrong;
}

std::string CVirtualModel::CompareContents() {
    for (const auto& [key, file] : Files) {
        if (!MayOpen(key, Platform::GenericRead)) {
            continue;
        }
        CBaseFile* open = System.OpenFile(file.name, Platform::GenericRead, 3, nullptr, Platform::OpenExisting, 0,
                                          nullptr, 0, nullptr);
        std::vector<char> bytes(static_cast<std::size_t>(file.size) + 1);
        const std::int32_t read = open->Read(bytes.data(), static_cast<std::int32_t>(file.size + 1));
        System.CloseFile(open, true);
        bool same = read == file.size;
        for (std::int32_t i = 0; i < read && same; ++i) {
            same = bytes[static_cast<std::size_t>(i)] == file.ByteAt(i);
        }
        if (!same) {
            return "contents of " + key;
        }
    }
    return {};
}
