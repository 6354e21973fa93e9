// Where programs and libraries are looked for when their names have no path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Platform {

/// The native folder of the shipped modules, which stands for the system folder.
std::string SystemFolder();

/// The native folders to search: of the program, of the system, the current one, and those of PATH.
std::vector<std::string> SearchFolders();

/// The names to look for: as given, and for a name that ends in ".dll" with ".so" instead.
std::vector<std::u16string> CandidateNames(std::u16string_view name);

/// Whether a name has neither a drive nor a folder.
bool IsPlainName(std::u16string_view name);

/// The native path of a file with all its links resolved; empty on failure.
std::string Resolve(const char* native);

/// The native path of the running program at its start.
const std::string& ProgramFile();

} // namespace Platform
