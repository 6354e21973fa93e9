// Where the files of the registry are. The first folder that has a root's file counts: the one that TESSARIX_REGISTRY
// names and no other; or else tessarix/registry in $XDG_CONFIG_HOME (~/.config) and, for the machine's file, in each of
// $XDG_CONFIG_DIRS (/etc/xdg). What is written goes to the first folder.
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
