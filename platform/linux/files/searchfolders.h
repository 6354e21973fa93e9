// Where libraries are looked for when their names have no path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Platform {

/// The native folder of the shipped modules, which stands for the system folder; empty if no path in Windows
/// syntax leads to the program's own.
std::string SystemFolder();

/// The folders to search, in wide form: of the program and of the system. What Windows adds, the current folder and
/// those of PATH, would run whatever somebody has left in a folder that others happen to stand in.
std::vector<std::u16string> SearchFolders();

/// The names to look for: as given, and for a name that ends in ".dll" with ".so" instead.
std::vector<std::u16string> CandidateNames(std::u16string_view name);

/// Whether a name has neither a drive nor a folder.
bool IsPlainName(std::u16string_view name);

/// The native path of a file with all its links resolved; empty on failure.
std::string Resolve(const char* native);

/// The native path of the running program at its start; empty where the system does not tell.
const std::string& ProgramFile();

} // namespace Platform
