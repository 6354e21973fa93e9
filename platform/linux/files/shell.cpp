#include "platform/inc/shell.h"

#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/folders.h"
#include "platform/linux/files/fullpath.h"
#include "platform/linux/files/searchfolders.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <pwd.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace Platform {

/// A folder as an item list: its path, empty for one outside the file system.
struct ItemIdListObject {
    char16_t path[MaxPath];
};

namespace {

constexpr std::int32_t ResultInvalidArgument = static_cast<std::int32_t>(0x80070057); // E_INVALIDARG
constexpr std::int32_t ResultOutOfMemory = static_cast<std::int32_t>(0x8007000E);     // E_OUTOFMEMORY

// A row names a folder by a variable of the environment or of user-dirs.dirs if that is set, and by a path otherwise,
// in which "~" is the user's home. `below` follows in both cases. No path: a place outside the file system.
struct Row {
    std::int32_t number;
    const char* variable;
    const char* path;
    const char* below;
};

constexpr const char* ConfigHome = "XDG_CONFIG_HOME";
constexpr const char* DataHome = "XDG_DATA_HOME";
constexpr const char* StateHome = "XDG_STATE_HOME";
constexpr const char* Config = "~/.config";
constexpr const char* Data = "~/.local/share";
constexpr const char* State = "~/.local/state";
constexpr const char* SystemFolderMark = "*"; // SystemFolder()

// The nearest equivalent of each folder, which is named as its constant CSIDL_... is.
constexpr Row Rows[] = {
    {0, "XDG_DESKTOP_DIR", "~/Desktop", ""},      // DESKTOP
    {1, nullptr, nullptr, ""},                    // INTERNET
    {2, DataHome, Data, "/applications"},         // PROGRAMS
    {3, nullptr, nullptr, ""},                    // CONTROLS
    {4, nullptr, nullptr, ""},                    // PRINTERS
    {5, "XDG_DOCUMENTS_DIR", "~/Documents", ""},  // PERSONAL
    {6, DataHome, Data, "/favorites"},            // FAVORITES
    {7, ConfigHome, Config, "/autostart"},        // STARTUP
    {8, DataHome, Data, "/recent"},               // RECENT
    {9, DataHome, Data, "/sendto"},               // SENDTO
    {10, nullptr, nullptr, ""},                   // BITBUCKET
    {11, DataHome, Data, "/applications"},        // STARTMENU
    {13, "XDG_MUSIC_DIR", "~/Music", ""},         // MYMUSIC
    {16, "XDG_DESKTOP_DIR", "~/Desktop", ""},     // DESKTOPDIRECTORY
    {17, nullptr, nullptr, ""},                   // DRIVES
    {18, nullptr, nullptr, ""},                   // NETWORK
    {19, DataHome, Data, "/nethood"},             // NETHOOD
    {20, nullptr, "/usr/share/fonts", ""},        // FONTS
    {21, "XDG_TEMPLATES_DIR", "~/Templates", ""}, // TEMPLATES
    {22, nullptr, "/usr/share/applications", ""}, // COMMON_STARTMENU
    {23, nullptr, "/usr/share/applications", ""}, // COMMON_PROGRAMS
    {24, nullptr, "/etc/xdg/autostart", ""},      // COMMON_STARTUP
    {25, "XDG_PUBLICSHARE_DIR", "~/Public", ""},  // COMMON_DESKTOPDIRECTORY
    {26, ConfigHome, Config, ""},                 // APPDATA
    {27, DataHome, Data, "/printhood"},           // PRINTHOOD
    {28, DataHome, Data, ""},                     // LOCAL_APPDATA
    {29, ConfigHome, Config, "/autostart"},       // ALTSTARTUP
    {30, nullptr, "/etc/xdg/autostart", ""},      // COMMON_ALTSTARTUP
    {31, "XDG_PUBLICSHARE_DIR", "~/Public", ""},  // COMMON_FAVORITES
    {32, "XDG_CACHE_HOME", "~/.cache", ""},       // INTERNET_CACHE
    {33, StateHome, State, "/cookies"},           // COOKIES
    {34, StateHome, State, "/history"},           // HISTORY
    {35, nullptr, "/var/lib", ""},                // COMMON_APPDATA
    {36, nullptr, "/usr", ""},                    // WINDOWS
    {37, nullptr, SystemFolderMark, ""},          // SYSTEM
    {38, nullptr, "/opt", ""},                    // PROGRAM_FILES
    {39, "XDG_PICTURES_DIR", "~/Pictures", ""},   // MYPICTURES
    {40, nullptr, "~", ""},                       // PROFILE
    {43, nullptr, "/usr/lib", ""},                // PROGRAM_FILES_COMMON
    {45, nullptr, "/usr/share/templates", ""},    // COMMON_TEMPLATES
    {46, "XDG_PUBLICSHARE_DIR", "~/Public", ""},  // COMMON_DOCUMENTS
    {47, nullptr, "/usr/share/applications", ""}, // COMMON_ADMINTOOLS
    {48, DataHome, Data, "/applications"},        // ADMINTOOLS
};

const Row* FindRow(std::int32_t folder) {
    const std::int32_t number = folder & ~CsidlFlagCreate;
    const auto* row = std::find_if(std::begin(Rows), std::end(Rows), [&](const Row& r) { return r.number == number; });
    return row == std::end(Rows) ? nullptr : row;
}

// A value of the environment that is an absolute path; others have no meaning here.
std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value && *value == '/' ? value : "";
}

std::string Home() {
    std::string home = Variable("HOME");
    if (!home.empty()) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::string Expand(std::string_view path) {
    return path.starts_with('~') ? Home() + std::string(path.substr(1)) : std::string(path);
}

// The value of a line such as XDG_DESKTOP_DIR="$HOME/Desktop"; empty if this is another line. Only a path that is
// absolute or below $HOME counts.
std::string ValueInLine(std::string_view line, std::string_view name) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(name) || !line.substr(name.size()).starts_with("=\"")) {
        return {};
    }
    line.remove_prefix(name.size() + 2);
    constexpr std::string_view homeMark = "$HOME";
    std::string value;
    if (line.starts_with(homeMark)) {
        value = Home();
        line.remove_prefix(homeMark.size());
    }
    for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) {
            ++i; // the character behind it stands for itself
        }
        value += line[i];
    }
    return value.starts_with('/') ? value : std::string();
}

std::string UserFolder(const char* name) {
    std::string folder = Variable(ConfigHome);
    folder = (folder.empty() ? Expand(Config) : folder) + "/user-dirs.dirs";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(folder.c_str(), "re"), &std::fclose);
    std::string found; // the last line counts
    std::string line;
    for (int c = 0; file && c != EOF;) {
        c = std::fgetc(file.get());
        if (c != '\n' && c != EOF) {
            line += static_cast<char>(c);
            continue;
        }
        const std::string value = ValueInLine(line, name);
        found = value.empty() ? found : value;
        line.clear();
    }
    return found;
}

std::string FolderOf(const Row& row) {
    if (!row.path) {
        return {};
    }
    if (row.path == SystemFolderMark) {
        return SystemFolder();
    }
    const bool ofUser = row.variable && std::string_view(row.variable).ends_with("_DIR");
    std::string named;
    if (row.variable) {
        named = ofUser ? UserFolder(row.variable) : Variable(row.variable);
    }
    return (named.empty() ? Expand(row.path) : named) + row.below;
}

// The Windows form, empty for a place outside the file system and for one that no buffer of the caller has room for.
std::u16string PathOf(const Row& row) {
    const std::string native = FolderOf(row);
    FullPath full;
    if (native.empty() || !ParseFullPath(WindowsPath(native), full)) {
        return {};
    }
    full.closed = false;
    std::u16string path = full.Text();
    return path.size() < MaxPath ? path : std::u16string();
}

// The HRESULT for the last error.
[[maybe_unused]] std::int32_t LastResult() {
    return static_cast<std::int32_t>(0x80070000U | (GetLastError() & 0xFFFF));
}

} // namespace

// Windows sees to it that these folders are there; here a path says where one would be.
std::int32_t SHGetFolderPath(Window, std::int32_t folder, Handle, std::uint32_t, char16_t* path) {
    *path = u'\0';
    PLATFORM_FAULT(SHGetFolderPath, LastResult());
    const Row* row = FindRow(folder);
    if (!row) {
        return ResultInvalidArgument;
    }
    const std::u16string found = PathOf(*row);
    if (found.empty()) {
        return ResultInvalidArgument;
    }
    if ((folder & CsidlFlagCreate) != 0) {
        static_cast<void>(MakeFolders(FolderOf(*row))); // the path is the answer all the same
    }
    CopyPath(found, MaxPath, path);
    return 0;
}

std::int32_t SHGetSpecialFolderLocation(Window, std::int32_t folder, ItemIdList*& list) {
    list = nullptr;
    PLATFORM_FAULT(SHGetSpecialFolderLocation, LastResult());
    const Row* row = FindRow(folder);
    if (!row) {
        return ResultInvalidArgument;
    }
    auto* made = static_cast<ItemIdList*>(std::calloc(1, sizeof(ItemIdList)));
    if (!made) {
        return ResultOutOfMemory;
    }
    CopyPath(PathOf(*row), MaxPath, made->path);
    list = made;
    return 0;
}

bool SHGetPathFromIDList(const ItemIdList* list, char16_t* path) {
    *path = u'\0';
    PLATFORM_FAULT(SHGetPathFromIDList, false);
    if (!list || list->path[0] == u'\0') {
        return false;
    }
    std::memcpy(path, list->path, sizeof(list->path));
    return true;
}

void CoTaskMemFree(void* memory) {
    std::free(memory);
}

} // namespace Platform
