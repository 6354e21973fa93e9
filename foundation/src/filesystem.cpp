#include "foundation/inc/filesystem.h"

#include "foundation/inc/errors.h"
#include "foundation/src/statics.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"

namespace Tsx {

namespace {

struct PathFields {
    std::int32_t dir;  // where the directory begins: behind the drive
    std::int32_t name; // behind the last separator
    std::int32_t ext;  // the last dot of the name, or the end
};

PathFields FindFields(const CUnicodeString& path) {
    PathFields fields{};
    fields.dir = path.Length() >= 2 && path[1] == u':' ? 2 : 0;
    fields.name = std::max({fields.dir, path.FindLast(u'\\') + 1, path.FindLast(u'/') + 1});
    const std::int32_t dot = path.FindLast(u'.');
    fields.ext = dot >= fields.name ? dot : path.Length();
    return fields;
}

} // namespace

void FileSystem::SplitName(const CUnicodeString& path, CUnicodeString& drive, CUnicodeString& dir, CUnicodeString& name,
                           CUnicodeString& ext) {
    // An output may be the path itself.
    const CUnicodeString whole = path; // NOLINT(performance-unnecessary-copy-initialization)
    const PathFields fields = FindFields(whole);
    drive = whole.Left(fields.dir);
    dir = whole.Mid(fields.dir, fields.name - fields.dir);
    name = whole.Mid(fields.name, fields.ext - fields.name);
    ext = whole.Mid(fields.ext);
}

CUnicodeString FileSystem::GetName(const CUnicodeString& path) {
    const PathFields fields = FindFields(path);
    return path.Mid(fields.name, fields.ext - fields.name);
}

CUnicodeString FileSystem::GetExt(const CUnicodeString& path) {
    return path.Mid(FindFields(path).ext);
}

CUnicodeString FileSystem::GetNameAndExt(const CUnicodeString& path) {
    return path.Mid(FindFields(path).name);
}

CUnicodeString FileSystem::GetModulePath(Platform::Module module) {
    CUnicodeString path;
    for (std::int32_t room = 260;; room *= 2) {
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

CFileSystemBase& FileSystem::GetFileSystem(const CUnicodeString& path) {
    static_cast<void>(path);
    return NativeFileSystem;
}

} // namespace Tsx
