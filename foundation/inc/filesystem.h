// Paths as text, and the choice of the file system that serves one. Paths have Windows syntax; `\` and `/` are equal
// everywhere. What only works on the text stands in src/pathtext.cpp and never asks the system.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/filesystembase.h"
#include "foundation/inc/openmode.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Tsx {

/// What a path begins with, tested in the order UNC, root-relative, drive:
///
///   ""   a\b   .\a       PT_Relative
///   \a   /   \/a         PT_RootRelative     two different separators count as one
///   \\srv\share   //a    PT_UNC
///   C:   C:a   1:x       PT_DriveRelative    any character may stand before the colon
///   C:\a   C:/           PT_DriveAbsolute
enum TPathType : std::int32_t {
    PT_Relative = 0,
    PT_RootRelative = 1,
    PT_UNC = 2,
    PT_DriveRelative = 3,
    PT_DriveAbsolute = 4
};

/// The operations on paths. Those on the text alone raise nothing but internal errors; those that ask the system raise
/// CFileException.
class FileSystem {
public:
    FileSystem() = delete;

    /// The order of paths: without regard to case, separators equal, closing separators ignored. 0 for equal ones, else
    /// the sign is the order. It holds for sorting among paths without closing separators: `a!` sorts before `a\`,
    /// which equals `a`, which sorts before `a!`.
    ///
    ///   C:\a\ = c:/A     a = a\\     a < ab     a\b < ab
    static std::int32_t Compare(const CUnicodeString& a, const CUnicodeString& b);

    /// By the text as it stands, blanks included.
    static TPathType GetPathType(const CUnicodeString& path);

    /// The components of a path, white space around it trimmed, empty ones dropped. Neither `.` nor `..` is resolved.
    ///
    ///   C:\a\b          C: a b          PT_DriveAbsolute
    ///   C:a\b           C: a b          PT_DriveRelative
    ///   \\srv\share\x   srv share x     PT_UNC
    ///   a\\\b\          a b             PT_Relative
    static TPathType SplitPath(const CUnicodeString& path, CArray<CUnicodeString>& parts);
    /// The inverse. The one component `C:` gives `C:\` with PT_DriveAbsolute and `C:` with PT_DriveRelative.
    static CUnicodeString JoinPath(const CArray<CUnicodeString>& parts, TPathType type);

    /// The four fields of a path:
    ///
    ///   C:\a\b.tar.gz    drive "C:", dir "\a\", name "b.tar", ext ".gz"
    ///   a/b              drive "",   dir "a/",  name "b",     ext ""
    ///   C:.x             drive "C:", dir "",    name "",      ext ".x"
    static void SplitName(const CUnicodeString& path, CUnicodeString& drive, CUnicodeString& dir, CUnicodeString& name,
                          CUnicodeString& ext);
    /// The inverse, as the run-time's path maker does it: of the drive the first character counts, the separator behind
    /// the directory and the dot before the extension are added where they are missing.
    static CUnicodeString MergeParts(const CUnicodeString& drive, const CUnicodeString& dir, const CUnicodeString& name,
                                     const CUnicodeString& ext);
    /// The name and extension of `fileName` in the directory `dir`.
    /// AS DESIGNED: a directory in `fileName` is dropped: `C:\a` and `b\c.txt` give `C:\a\c.txt`.
    static CUnicodeString MergeName(const CUnicodeString& dir, const CUnicodeString& fileName);
    static CUnicodeString MergeName(const CUnicodeString& dir, const CUnicodeString& name, const CUnicodeString& ext);
    static void ReplaceExt(CUnicodeString& path, const CUnicodeString& ext);

    static CUnicodeString GetDrive(const CUnicodeString& path);
    static CUnicodeString GetDirectory(const CUnicodeString& path);
    static CUnicodeString GetName(const CUnicodeString& path);
    static CUnicodeString GetExt(const CUnicodeString& path);
    /// Drive and directory, the closing separator included.
    static CUnicodeString GetPath(const CUnicodeString& path);
    static CUnicodeString GetNameAndExt(const CUnicodeString& path);

    /// Both texts with exactly one separator at the seam: `a` and `b`, `a\` and `b`, `a\` and `\b` give `a\b`.
    static CUnicodeString Concat(const CUnicodeString& base, const CUnicodeString& relative);
    /// `path` as seen from the directory `base`. A path relative to a drive asks the system for that drive's current
    /// directory.
    static CUnicodeString GetAbsoluteName(const CUnicodeString& base, const CUnicodeString& path);
    /// The root with its separator: `C:\`, `\\srv\share\`, or `\` for a path without a drive.
    static CUnicodeString GetRoot(const CUnicodeString& path);

    /// Adds the separator that the path uses:
    ///
    ///   "" -> \     C: -> C:\     a/b -> a/b/     \abc -> \abc\     x/ -> x/
    static CUnicodeString AddTrailingSlash(const CUnicodeString& path);
    /// Drops one closing separator, but not a drive's:
    ///
    ///   ab\\ -> ab\     C:\ -> C:\     C: -> C:\     / -> /
    ///
    /// AS DESIGNED: a bare drive becomes its root and so grows.
    static void RemoveTrailingSlash(CUnicodeString& path);

    /// Takes the next component from `pos` on and moves `pos` behind the separator that ended it; `separator` is 0 at
    /// the end of the path. False when there was nothing left. A component may be empty.
    static bool NextComponent(const CUnicodeString& path, std::int32_t& pos, CUnicodeString& component,
                              char16_t& separator);

    /// Whether the path begins with the name of the virtual file system's root, letter by letter but for case.
    static bool IsVirtualPath(const CUnicodeString& path);

    /// Makes a path absolute; white space around it is trimmed, an empty path stays empty.
    static void GetFullName(CUnicodeString& path);
    /// The spelling that the disk has of `dir` followed by `name`; `name` where there is no such entry.
    static CUnicodeString GetRealName(const CUnicodeString& dir, const CUnicodeString& name);
    static CUnicodeString GetRealPath(const CUnicodeString& path);
    /// The names of a directory's files that match a pattern, sorted, hidden ones left out.
    static void GetFileNames(const CUnicodeString& dir, CArray<CUnicodeString>& names, const CUnicodeString& pattern);

    /// The path of a module's file (null: the program).
    static CUnicodeString GetModulePath(Platform::Module module);
    static CUnicodeString GetProgramPath();
    static CUnicodeString GetProgramDirectory();

    /// The file system that a path belongs to, by its text as given: a relative path is always the native one's.
    static CFileSystemBase& GetFileSystem(const CUnicodeString& path);
    /// Ends the file layer: frees what the file systems hold. They can be used anew afterwards.
    static void ShutdownFileSystems();
};

} // namespace Tsx
