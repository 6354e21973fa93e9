// The forms of paths that the system takes without a limit of their length.
#include "foundation/inc/assertion.h"
#include "foundation/inc/nativefilesystem.h"
#include "platform/inc/filenames.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\longpaths";

} // namespace

CUnicodeString CNativeFileSystem::AddLongPathPrefix(const CUnicodeString& path) {
    if (path.Length() <= static_cast<std::int32_t>(Platform::MaxPath)) {
        return path;
    }
    switch (FileSystem::GetPathType(path)) {
    case PT_DriveAbsolute:
        return u"\\\\?\\" + GetCanonicalPath(path, PT_DriveAbsolute);
    case PT_UNC:
        return u"\\\\?\\UNC\\" + GetCanonicalPath(path, PT_UNC).Mid(2);
    default:
        return path;
    }
}

CUnicodeString CNativeFileSystem::GetCanonicalPath(const CUnicodeString& path, TPathType type) {
    TSX_ASSERT(type == PT_UNC || type == PT_DriveAbsolute, ModuleName);
    CArray<CUnicodeString> parts;
    FileSystem::SplitPath(path, parts);
    TSX_ASSERT(!parts.IsEmpty(), ModuleName);
    const std::int32_t rootParts = type == PT_UNC ? 2 : 1;
    std::int32_t cursor = rootParts;
    for (std::int32_t i = rootParts; i < parts.Size(); ++i) {
        if (parts[i] == u"..") {
            cursor = std::max(cursor - 1, rootParts);
        } else if (parts[i] != u".") {
            parts[cursor] = parts[i];
            ++cursor;
        }
    }
    parts.SetSize(cursor); // a server without a share gets an empty one
    return FileSystem::JoinPath(parts, type);
}

} // namespace Tsx
