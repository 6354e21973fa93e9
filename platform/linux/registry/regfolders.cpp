#include "platform/linux/registry/regfolders.h"

#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace Platform {

namespace {

constexpr const char* RegistryFolder = "/tessarix/registry";

bool IsAbsolute(const char* path) {
    return path && *path == '/';
}

// Where the user's own configuration is; empty if the environment doesn't tell.
std::string UserFolder() {
    const char* named = std::getenv("XDG_CONFIG_HOME");
    if (IsAbsolute(named)) {
        return std::string(named) + RegistryFolder;
    }
    const char* home = std::getenv("HOME");
    return IsAbsolute(home) ? std::string(home) + "/.config" + RegistryFolder : std::string();
}

void AddSystemFolders(std::vector<std::string>& folders) {
    const char* named = std::getenv("XDG_CONFIG_DIRS");
    std::string_view rest = named && *named ? named : "/etc/xdg";
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (folder.starts_with('/')) { // a relative one is to be ignored
            folders.push_back(std::string(folder) + RegistryFolder);
        }
    }
}

} // namespace

const char16_t* NameOf(RegistryRoot root) {
    return root == RegistryRoot::CurrentUser ? u"HKEY_CURRENT_USER" : u"HKEY_LOCAL_MACHINE";
}

std::vector<std::string> RegistryFolders(RegistryRoot root) {
    const char* named = std::getenv("TESSARIX_REGISTRY");
    if (named && *named) {
        return {named};
    }
    std::vector<std::string> folders{UserFolder()};
    if (root == RegistryRoot::LocalMachine) {
        AddSystemFolders(folders);
    }
    return folders;
}

std::string RegistryFile(const std::string& folder, RegistryRoot root) {
    return folder + "/" + NativeName(NameOf(root)) + ".reg";
}

} // namespace Platform
