// The text side of Windows paths: what a path means in full, without a look at any file. ResolveFullPath in paths.h
// takes the closing dots and blanks of names away where no file has them.
//
//   path                  full form (current folder Z:\home\u)
//   a\.\b\..\c            Z:\home\u\a\c
//   \a, /a                Z:\a
//   C:\a\..\..\b          C:\b            ".." stops at the root
//   C:/a//b/              C:\a\b\         the letter keeps its case
//   C:a                   C:\a            the drive's current folder: its root, but for the current drive
//   \\s\h\..\x            \\s\h\x         server and share are the root
//   \\?\C:\a\..\b         \\?\C:\b        in GetFullPathName; a file is looked up as it stands
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

enum class PathKind { Drive, Share, Device };

struct FullPath {
    PathKind kind = PathKind::Drive;
    std::u16string root;               // "C:", "\\server\share", "\\?", without a closing separator
    std::vector<std::u16string> parts; // the components behind it, each as the path has it
    bool closed = false;               // a separator stands at the end

    std::u16string Text() const;
};

bool IsSeparator(char16_t c);

/// What Windows makes of a component: a closing dot is no part of it, but several are; of the last one of a path all
/// closing dots and blanks go.
std::u16string_view WithoutClosingDots(std::u16string_view component, bool last);

/// False, with the last error set, for a path that is empty or blank, and where the current folder is needed and gone.
bool ParseFullPath(std::u16string_view path, FullPath& full);

/// The components of a path between its backslashes, each as it stands.
std::vector<std::u16string> SplitAsItStands(std::u16string_view path);

/// Gives a path to a caller's buffer as GetFullPathName does: the length without the terminator, or the size that is
/// needed.
std::uint32_t CopyPath(std::u16string_view path, std::uint32_t size, char16_t* buffer);

/// The Windows form of an absolute native path, on drive Z:. A backslash in a name, which separates in any path, stands
/// as a lone surrogate in it, so that the current folder and the program are found wherever they are.
std::u16string WindowsPath(std::string_view native);

/// The name in the file system that a component of a path stands for, WindowsPath's included.
std::string EntryName(std::u16string_view component);
/// The stand-in for a backslash in it. No name has it otherwise: it would be the malformed byte 0x5C.
constexpr char16_t EscapedBackslash = 0xDC5C;

} // namespace Platform
