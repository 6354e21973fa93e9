// The operations on the text of paths. The input is UTF-16; two lines of it are two paths.
#include "foundation/inc/filesystem.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "fuzz/target.h"
#include "fuzz/widetext.h"

using namespace Tsx;

namespace {

int Sign(std::int32_t value) {
    return (value > 0) - (value < 0);
}

void CheckSplit(const CUnicodeString& path) {
    CArray<CUnicodeString> parts;
    const TPathType type = FileSystem::SplitPath(path, parts);
    const CUnicodeString joined = FileSystem::JoinPath(parts, type);
    CArray<CUnicodeString> again;
    const TPathType typeAgain = FileSystem::SplitPath(joined, again);
    // What is joined splits the same, but where a part looks like more: blanks around it, or a drive.
    for (const CUnicodeString& part : parts) {
        CUnicodeString trimmed = part;
        trimmed.Trim();
        if (trimmed != part || part.Find(u':') >= 0 || part.Find(u'\0') >= 0) {
            return;
        }
    }
    Require(parts.Size() == again.Size() || parts.IsEmpty());
    Require(type == typeAgain || parts.IsEmpty());
    for (std::int32_t i = 0; i < again.Size(); ++i) {
        Require(parts[i] == again[i]);
    }
}

void CheckCanonical(const CUnicodeString& path) {
    CUnicodeString trimmed = path;
    trimmed.Trim();
    const TPathType type = FileSystem::GetPathType(trimmed);
    CArray<CUnicodeString> parts;
    FileSystem::SplitPath(path, parts);
    if ((type != PT_UNC && type != PT_DriveAbsolute) || parts.IsEmpty()) {
        return;
    }
    const CUnicodeString canonical = CNativeFileSystem::GetCanonicalPath(path, type);
    trimmed = canonical;
    trimmed.Trim();
    if (trimmed != canonical) {
        return; // the split below would take blanks from its last part
    }
    FileSystem::SplitPath(canonical, parts);
    for (std::int32_t i = type == PT_UNC ? 2 : 1; i < parts.Size(); ++i) {
        Require(parts[i] != u"." && parts[i] != u"..");
    }
}

void CheckOrder(const CUnicodeString& a, const CUnicodeString& b) {
    const std::int32_t order = FileSystem::Compare(a, b);
    Require(Sign(order) == -Sign(FileSystem::Compare(b, a)));
    Require(FileSystem::Compare(a, a) == 0);
    const bool isText = a.Find(u'\0') < 0 && b.Find(u'\0') < 0;
    Require(order != 0 || !isText || HashPath(a) == HashPath(b));
}

void CheckFields(const CUnicodeString& path) {
    CUnicodeString drive;
    CUnicodeString dir;
    CUnicodeString name;
    CUnicodeString ext;
    FileSystem::SplitName(path, drive, dir, name, ext);
    Require(drive + dir + name + ext == path);
    Require(FileSystem::GetPath(path) + FileSystem::GetNameAndExt(path) == path);
}

} // namespace

void RunInput(const std::string& bytes) {
    const CUnicodeString text = WideText(bytes);
    const std::int32_t end = text.Find(u'\n');
    const CUnicodeString a = end < 0 ? text : text.Left(end);
    const CUnicodeString b = end < 0 ? CUnicodeString() : text.Mid(end + 1);
    CheckSplit(a);
    CheckCanonical(a);
    CheckOrder(a, b);
    CheckFields(a);
    static_cast<void>(FileSystem::MergeName(a, b));
    static_cast<void>(FileSystem::Concat(a, b));
    static_cast<void>(FileSystem::GetRoot(a));
    CUnicodeString slash = FileSystem::AddTrailingSlash(a);
    Require(slash.Length() - a.Length() <= 1);
    FileSystem::RemoveTrailingSlash(slash);
}
