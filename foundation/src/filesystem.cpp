// What FileSystem asks the system, and the choice between the file systems.
#include "foundation/inc/filesystem.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/virtualfilesystem.h"
#include "foundation/src/statics.h"
#include "platform/inc/directories.h"
#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include "platform/inc/text.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\filesystem";

void AppendComponent(CUnicodeString& path, const CUnicodeString& component, char16_t separator) {
    path += component;
    if (separator != 0) {
        path += separator;
    }
}

/// Takes the next component over as it is, if there is one.
void CopyComponent(const CUnicodeString& path, std::int32_t& pos, CUnicodeString& result) {
    CUnicodeString component;
    char16_t separator = 0;
    if (FileSystem::NextComponent(path, pos, component, separator)) {
        AppendComponent(result, component, separator);
    }
}

/// One call of the system: the length of the full name in `full`, or the room it needs if that is more than `size`.
std::uint32_t AskFullName(const CUnicodeString& path, std::uint32_t size, CUnicodeString& full) {
    char16_t* buffer = full.GetBuffer(static_cast<std::int32_t>(size) - 1);
    const std::uint32_t length = Platform::GetFullPathName(path.Text(), size, buffer, nullptr);
    if (length == 0) {
        GenerateFileException(Platform::GetLastError(), path);
    }
    return length;
}

bool BeginsWithDrive(const CUnicodeString& path) {
    const char16_t lower = path.Length() >= 2 ? static_cast<char16_t>(path[0] | 0x20) : u'\0';
    return lower >= u'a' && lower <= u'z' && path[1] == u':';
}

} // namespace

bool FileSystem::IsVirtualPath(const CUnicodeString& path) {
    return path.Length() >= VirtualRootName.Length() &&
           Platform::wcsnicmp(path.Text(), VirtualRootName.Text(), VirtualRootName.Length()) == 0;
}

CFileSystemBase& FileSystem::GetFileSystem(const CUnicodeString& path) {
    CFileSystemBase* system = NativeFileSystem;
    if (IsVirtualPath(path)) {
        system = VirtualFileSystem;
    }
    TSX_ASSERT(system, ModuleName);
    return *system;
}

void FileSystem::ShutdownFileSystems() {
    TSX_REQUIRE(NativeFileSystem && VirtualFileSystem, ModuleName);
    CNativeFileSystem::ClearSpecialFolders();
    VirtualFileSystem->ReleaseAll();
}

void FileSystem::GetFullName(CUnicodeString& path) {
    path.Trim();
    if (path.IsEmpty()) {
        return;
    }
    CUnicodeString full;
    std::uint32_t size = Platform::MaxPath + 1;
    std::uint32_t length = AskFullName(path, size, full);
    if (length > size) {
        // One character may name the current directory, which can have grown by the second call.
        size = path.Length() == 1 ? length + Platform::MaxPath : length;
        length = AskFullName(path, size, full);
    }
    TSX_ASSERT(length < size, ModuleName);
    full.SetLength(static_cast<std::int32_t>(std::min(length, size - 1)));
    path = full;
}

CUnicodeString FileSystem::GetRealName(const CUnicodeString& dir, const CUnicodeString& name) {
    if (name.IsEmpty()) {
        return {};
    }
    Platform::FindData found;
    const Platform::Handle search = Platform::FindFirstFile((dir + name).Text(), found);
    if (search == Platform::InvalidHandle()) {
        return name;
    }
    Platform::FindClose(search);
    return found.name;
}

CUnicodeString FileSystem::GetRealPath(const CUnicodeString& path) {
    if (IsVirtualPath(path)) {
        return path;
    }
    CUnicodeString result;
    std::int32_t pos = 0;
    if (GetPathType(path) == PT_UNC) {
        result = path.Left(2);
        pos = 2;
        CopyComponent(path, pos, result); // the server
        CopyComponent(path, pos, result); // the share
    } else if (BeginsWithDrive(path)) {
        result = path.Left(2);
        pos = 2;
    }
    CUnicodeString component;
    char16_t separator = 0;
    while (NextComponent(path, pos, component, separator)) {
        AppendComponent(result, GetRealName(result, component), separator);
    }
    return result;
}

void FileSystem::GetFileNames(const CUnicodeString& dir, CArray<CUnicodeString>& names, const CUnicodeString& pattern) {
    CArray<CUnicodeString> before; // in which the arguments may stand
    names.Swap(before);
    CArray<CFileStatus> files;
    GetFileSystem(dir).FindFilesEx(dir, files, pattern, FF_Files, nullptr);
    // A heap stays within the array for any names; there are some (`a!`, `a\`, `a`) that have no order.
    const auto less = [](const CFileStatus& a, const CFileStatus& b) {
        return Compare(a.FullName, b.FullName) < 0;
    };
    std::make_heap(files.begin(), files.end(), less);
    std::sort_heap(files.begin(), files.end(), less);
    for (std::int32_t i = files.Size() - 1; i > 0; --i) {
        if (Compare(files[i].FullName, files[i - 1].FullName) == 0) {
            files.RemoveAt(i);
        }
    }
    for (const CFileStatus& file : files) {
        names.Append(file.Name);
    }
}

CUnicodeString FileSystem::GetModulePath(Platform::Module module) {
    CUnicodeString path;
    for (std::int32_t room = Platform::MaxPath;; room *= 2) {
        const auto result = static_cast<std::int32_t>(
            Platform::GetModuleFileName(module, path.GetBuffer(room), static_cast<std::uint32_t>(room) + 1));
        const std::uint32_t error = Platform::GetLastError();
        if (result == 0) {
            GenerateFileException(error, u"");
        }
        path.SetLength(std::min(result, room));
        if (result <= room) {
            return path;
        }
    }
}

CUnicodeString FileSystem::GetProgramPath() {
    return GetModulePath(nullptr);
}

CUnicodeString FileSystem::GetProgramDirectory() {
    return GetPath(GetProgramPath());
}

} // namespace Tsx
