// What FileSystem does with the text of paths alone.
#include "foundation/inc/assertion.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/src/separators.h"
#include "platform/inc/text.h"
#include <string_view>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\pathtext";

bool IsLetter(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

/// The index of a separator at `from` or behind it, -1 if there is none.
std::int32_t FindSeparator(const CUnicodeString& text, std::int32_t from) {
    return static_cast<std::int32_t>(text.View().find_first_of(u"\\/", static_cast<std::size_t>(from)));
}

bool BeginsLikeUnc(const CUnicodeString& text) {
    return text.Length() >= 2 && IsSeparator(text[0]) && text[1] == text[0];
}

std::int32_t CompareCharacters(char16_t a, char16_t b) {
    a = IsSeparator(a) ? u'\\' : a;
    b = IsSeparator(b) ? u'\\' : b;
    return a == b ? 0 : Platform::wcsnicmp(&a, &b, 1);
}

const char16_t* SkipSeparators(const char16_t* text) {
    while (IsSeparator(*text)) {
        ++text;
    }
    return text;
}

struct PathFields {
    std::int32_t dir;  // where the directory begins: behind the drive
    std::int32_t name; // behind the last separator
    std::int32_t ext;  // the last dot of the name, or the end
};

PathFields FindFields(const CUnicodeString& path) {
    PathFields fields{};
    fields.dir = path.Length() >= 2 && path[1] == u':' ? 2 : 0;
    fields.name = std::max(fields.dir, FindLastSeparator(path) + 1);
    const std::int32_t dot = path.FindLast(u'.');
    fields.ext = dot >= fields.name ? dot : path.Length();
    return fields;
}

/// Cuts the drive off the first component, `C:foo`.
void SplitDriveFromName(CArray<CUnicodeString>& parts) {
    const std::int32_t colon = parts[0].Find(u':');
    TSX_REQUIRE(colon >= 0, ModuleName);
    if (colon + 1 < parts[0].Length()) {
        parts.InsertAt(1, parts[0].Mid(colon + 1));
        parts[0] = parts[0].Left(colon + 1);
    }
}

} // namespace

std::int32_t FileSystem::Compare(const CUnicodeString& a, const CUnicodeString& b) {
    const char16_t* left = a.Text();
    const char16_t* right = b.Text();
    for (; *left != 0 && *right != 0; ++left, ++right) {
        if (const std::int32_t order = CompareCharacters(*left, *right)) {
            return order;
        }
    }
    // At least one text is at its end; what is left of the other counts from behind its separators on.
    return std::int32_t{*SkipSeparators(left)} - std::int32_t{*SkipSeparators(right)};
}

TPathType FileSystem::GetPathType(const CUnicodeString& path) {
    if (BeginsLikeUnc(path)) {
        return PT_UNC;
    }
    if (!path.IsEmpty() && IsSeparator(path[0])) {
        return PT_RootRelative;
    }
    if (path.Length() >= 2 && path[1] == u':') {
        return path.Length() >= 3 && IsSeparator(path[2]) ? PT_DriveAbsolute : PT_DriveRelative;
    }
    return PT_Relative;
}

TPathType FileSystem::SplitPath(const CUnicodeString& path, CArray<CUnicodeString>& parts) {
    CUnicodeString text = path; // also for a path that stands in `parts`
    text.Trim();
    const TPathType type = GetPathType(text);
    parts.RemoveAll();
    for (std::int32_t start = 0; start < text.Length();) {
        const std::int32_t separator = FindSeparator(text, start);
        const std::int32_t end = separator < 0 ? text.Length() : separator;
        if (end > start) {
            parts.Append(text.Mid(start, end - start));
        }
        start = end + 1;
    }
    if (type == PT_DriveRelative && !parts.IsEmpty()) {
        SplitDriveFromName(parts);
    }
    return type;
}

CUnicodeString FileSystem::JoinPath(const CArray<CUnicodeString>& parts, TPathType type) {
    TSX_ASSERT(type >= PT_Relative && type <= PT_DriveAbsolute, ModuleName);
    CUnicodeString result;
    if (type == PT_RootRelative || type == PT_UNC) {
        result = type == PT_UNC ? u"\\\\" : u"\\";
    }
    for (std::int32_t i = 0; i < parts.Size(); ++i) {
        const bool behindDrive = i == 1 && type == PT_DriveRelative;
        if (i > 0 && !behindDrive) {
            result += u'\\';
        }
        result += parts[i];
    }
    const bool bareDrive = parts.Size() == 1 && type == PT_DriveAbsolute;
    if (bareDrive && !result.IsEmpty() && result[result.Length() - 1] == u':') {
        result += u'\\';
    }
    return result;
}

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

CUnicodeString FileSystem::MergeParts(const CUnicodeString& drive, const CUnicodeString& dir,
                                      const CUnicodeString& name, const CUnicodeString& ext) {
    // Each field counts up to its terminator, as for the run-time's path maker.
    CUnicodeString result;
    if (drive[0] != 0) {
        result += drive[0];
        result += u':';
    }
    if (dir[0] != 0) {
        result += dir.Text();
        if (!EndsInSeparator(result)) {
            result += u'\\';
        }
    }
    result += name.Text();
    if (ext[0] != 0 && ext[0] != u'.') {
        result += u'.';
    }
    result += ext.Text();
    return result;
}

CUnicodeString FileSystem::MergeName(const CUnicodeString& dir, const CUnicodeString& fileName) {
    CUnicodeString folder = dir;
    folder.Trim();
    if (!folder.IsEmpty()) {
        folder = AddTrailingSlash(folder);
    }
    return MergeParts(GetDrive(folder), GetDirectory(folder), GetName(fileName), GetExt(fileName));
}

CUnicodeString FileSystem::MergeName(const CUnicodeString& dir, const CUnicodeString& name, const CUnicodeString& ext) {
    return MergeName(dir, MergeParts({}, {}, name, ext));
}

void FileSystem::ReplaceExt(CUnicodeString& path, const CUnicodeString& ext) {
    path = MergeParts(GetDrive(path), GetDirectory(path), GetName(path), ext);
}

CUnicodeString FileSystem::GetDrive(const CUnicodeString& path) {
    return path.Left(FindFields(path).dir);
}

CUnicodeString FileSystem::GetDirectory(const CUnicodeString& path) {
    const PathFields fields = FindFields(path);
    return path.Mid(fields.dir, fields.name - fields.dir);
}

CUnicodeString FileSystem::GetName(const CUnicodeString& path) {
    const PathFields fields = FindFields(path);
    return path.Mid(fields.name, fields.ext - fields.name);
}

CUnicodeString FileSystem::GetExt(const CUnicodeString& path) {
    return path.Mid(FindFields(path).ext);
}

CUnicodeString FileSystem::GetPath(const CUnicodeString& path) {
    return path.Left(FindFields(path).name);
}

CUnicodeString FileSystem::GetNameAndExt(const CUnicodeString& path) {
    return path.Mid(FindFields(path).name);
}

CUnicodeString FileSystem::Concat(const CUnicodeString& base, const CUnicodeString& relative) {
    if (base.IsEmpty()) {
        return relative;
    }
    const bool ends = EndsInSeparator(base);
    const bool begins = !relative.IsEmpty() && IsSeparator(relative[0]);
    if (ends && begins) {
        return base.Left(base.Length() - 1) + relative;
    }
    return (ends || begins ? base : AddTrailingSlash(base)) + relative;
}

CUnicodeString FileSystem::GetAbsoluteName(const CUnicodeString& base, const CUnicodeString& path) {
    switch (GetPathType(path)) {
    case PT_Relative:
        return Concat(base, path);
    case PT_RootRelative:
        return Concat(GetRoot(base), path);
    case PT_DriveRelative: {
        CUnicodeString full = path;
        GetFullName(full);
        return full;
    }
    default:
        return path;
    }
}

CUnicodeString FileSystem::GetRoot(const CUnicodeString& path) {
    CUnicodeString text = path;
    text.Trim();
    if (!BeginsLikeUnc(text)) {
        return AddTrailingSlash(GetDrive(text));
    }
    const std::int32_t server = FindSeparator(text, 2);
    const std::int32_t share = server < 0 ? -1 : FindSeparator(text, server + 1);
    return AddTrailingSlash(share < 0 ? text : text.Left(share + 1));
}

CUnicodeString FileSystem::AddTrailingSlash(const CUnicodeString& path) {
    if (path.IsEmpty()) {
        return u"\\";
    }
    const std::int32_t last = std::max(FindLastSeparator(path), 0);
    if (last == 0 && !IsSeparator(path[0])) {
        return path + u'\\';
    }
    return last == path.Length() - 1 ? path : path + path[last];
}

void FileSystem::RemoveTrailingSlash(CUnicodeString& path) {
    const bool drive = path.Length() >= 2 && IsLetter(path[0]) && path[1] == u':';
    if (drive && path.Length() == 2) {
        path += u'\\';
        return;
    }
    const bool driveRoot = drive && path.Length() == 3;
    if (!driveRoot && path.Length() >= 2 && EndsInSeparator(path)) {
        path = path.Left(path.Length() - 1);
    }
}

bool FileSystem::NextComponent(const CUnicodeString& path, std::int32_t& pos, CUnicodeString& component,
                               char16_t& separator) {
    TSX_REQUIRE(pos >= 0 && pos <= path.Length(), ModuleName, false);
    if (pos == path.Length()) {
        return false;
    }
    const std::int32_t start = pos;
    const std::int32_t index = FindSeparator(path, start);
    const std::int32_t end = index < 0 ? path.Length() : index;
    separator = index < 0 ? u'\0' : path[index];
    pos = index < 0 ? end : end + 1;
    component = path.Mid(start, end - start);
    return true;
}

std::uint32_t HashPath(const CUnicodeString& path) {
    const std::u16string_view text = path.View();
    const std::size_t last = text.find_last_not_of(u"\\/"); // npos, the number before 0, if there is none
    std::uint32_t hash = 0;
    for (const char16_t c : text.substr(0, last + 1)) {
        hash = hash * 33 + Platform::towupper(IsSeparator(c) ? u'\\' : c);
    }
    return hash;
}

} // namespace Tsx
