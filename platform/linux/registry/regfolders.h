// Where the files of the registry are: in the folder that TESSARIX_REGISTRY names and no other; or else in
// tessarix/registry in $XDG_CONFIG_HOME (~/.config) and, for the machine's file, in each of $XDG_CONFIG_DIRS
// (/etc/xdg). A file lies over those of the folders behind its own: what it says counts, also that a value or key goes.
// What is written goes to the first folder, so that an administrator's later changes of all else still count.
#pragma once

#include <string>
#include <vector>

namespace Platform {

/// The roots that have a file.
enum class RegistryRoot { CurrentUser, LocalMachine };

/// The name of a root, which is also that of its file without the ending.
const char16_t* NameOf(RegistryRoot root);

/// The folders in their order. The first one is an empty text where the environment tells of no folder of the user's.
std::vector<std::string> RegistryFolders(RegistryRoot root);
std::string RegistryFile(const std::string& folder, RegistryRoot root);

} // namespace Platform
