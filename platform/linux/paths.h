// Windows paths on this system. Drive Z: is the root folder and the current drive; drive X: is the folder that the
// environment variable TESSARIX_DRIVE_X names. Both separators count. A name is looked up exactly first and then
// without regard to case.
//
//   /home/u/a.txt, \home\u\a.txt, Z:\home\u\a.txt   the file /home/u/a.txt
//   a\b, Z:a\b                                      a/b in the current folder
//   C:\a, C:a, with TESSARIX_DRIVE_C=/srv/c         /srv/c/a
//   \\server\share\a                                fails with ERROR_BAD_NETPATH
#pragma once

#include <string>
#include <string_view>

namespace Platform {

/// The native path of an existing file or folder, or the one at which it would be made. False, with the last error set,
/// for a path that nothing maps or that is empty.
bool MapPath(std::u16string_view path, std::string& native);

/// Ends a failed call on a mapped path: false, with the last error from errno, where a missing folder on the way is
/// told from a missing file in it as Windows tells them apart.
bool FailOnPath(const std::string& native);

/// The Windows form of an absolute native path, on drive Z:.
std::u16string WindowsPath(std::string_view native);

} // namespace Platform
