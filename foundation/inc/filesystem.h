// Paths as text, and the choice of the file system that serves one. Paths have Windows syntax; `\` and `/` are equal
// everywhere.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "platform/inc/types.h"

namespace Tsx {

/// Mode word for CheckFile: does the name exist at all, whatever could be done with it?
constexpr std::uint32_t FA_Exists = 0xFF00FF00;

class CFileSystemBase {
public:
    CFileSystemBase() = default;
    virtual ~CFileSystemBase() = default;
    CFileSystemBase(const CFileSystemBase&) = delete;
    CFileSystemBase& operator=(const CFileSystemBase&) = delete;

    /// Whether the path exists. An empty path does not.
    virtual bool CheckFile(const CUnicodeString& path, std::uint32_t mode) = 0;
};

/// The four fields of a path:
///
///   C:\a\b.tar.gz    drive "C:", dir "\a\", name "b.tar", ext ".gz"
///   a/b              drive "",   dir "a/",  name "b",     ext ""
///   C:.x             drive "C:", dir "",    name "",      ext ".x"
class FileSystem {
public:
    FileSystem() = delete;

    static void SplitName(const CUnicodeString& path, CUnicodeString& drive, CUnicodeString& dir, CUnicodeString& name,
                          CUnicodeString& ext);
    static CUnicodeString GetName(const CUnicodeString& path);
    static CUnicodeString GetExt(const CUnicodeString& path);
    static CUnicodeString GetNameAndExt(const CUnicodeString& path);

    /// The path of a module's file (null: the program). Raises CFileException.
    static CUnicodeString GetModulePath(Platform::Module module);
    static CUnicodeString GetProgramPath();

    /// The file system that a path belongs to. So far all paths are the native one's.
    static CFileSystemBase& GetFileSystem(const CUnicodeString& path);
};

} // namespace Tsx
