// The folders that the system keeps for the user, and the application's own below them.
#include "foundation/inc/errors.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/src/statics.h"
#include "platform/inc/filenames.h"
#include "platform/inc/shell.h"
#include <iterator>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\specialfolders";

// By TSpecialFolder: the system's CSIDL numbers.
constexpr std::uint8_t CsidlOfFolder[] = {
    48, // CSIDL_ADMINTOOLS
    29, // CSIDL_ALTSTARTUP
    26, // CSIDL_APPDATA
    10, // CSIDL_BITBUCKET
    47, // CSIDL_COMMON_ADMINTOOLS
    30, // CSIDL_COMMON_ALTSTARTUP
    35, // CSIDL_COMMON_APPDATA
    25, // CSIDL_COMMON_DESKTOPDIRECTORY
    46, // CSIDL_COMMON_DOCUMENTS
    31, // CSIDL_COMMON_FAVORITES
    23, // CSIDL_COMMON_PROGRAMS
    22, // CSIDL_COMMON_STARTMENU
    24, // CSIDL_COMMON_STARTUP
    45, // CSIDL_COMMON_TEMPLATES
    3,  // CSIDL_CONTROLS
    33, // CSIDL_COOKIES
    0,  // CSIDL_DESKTOP
    16, // CSIDL_DESKTOPDIRECTORY
    17, // CSIDL_DRIVES
    6,  // CSIDL_FAVORITES
    20, // CSIDL_FONTS
    34, // CSIDL_HISTORY
    1,  // CSIDL_INTERNET
    32, // CSIDL_INTERNET_CACHE
    28, // CSIDL_LOCAL_APPDATA
    13, // CSIDL_MYMUSIC
    39, // CSIDL_MYPICTURES
    19, // CSIDL_NETHOOD
    18, // CSIDL_NETWORK
    5,  // CSIDL_PERSONAL
    4,  // CSIDL_PRINTERS
    27, // CSIDL_PRINTHOOD
    40, // CSIDL_PROFILE
    38, // CSIDL_PROGRAM_FILES
    43, // CSIDL_PROGRAM_FILES_COMMON
    2,  // CSIDL_PROGRAMS
    8,  // CSIDL_RECENT
    9,  // CSIDL_SENDTO
    11, // CSIDL_STARTMENU
    7,  // CSIDL_STARTUP
    37, // CSIDL_SYSTEM
    21, // CSIDL_TEMPLATES
    36, // CSIDL_WINDOWS
};

/// Under SpecialFoldersLock.
void BuildTable() {
    try {
        for (std::int32_t folder = 0; folder < static_cast<std::int32_t>(std::size(CsidlOfFolder)); ++folder) {
            SpecialFolders.Add(folder, CsidlOfFolder[folder]);
        }
    } catch (...) {
        SpecialFolders.DeleteAll(); // a table that is not empty is taken for complete
        throw;
    }
}

/// -1 for a number that is no folder's.
std::int32_t CsidlOf(TSpecialFolder folder) {
    const CCriticalSectionLock guard(SpecialFoldersLock);
    if (SpecialFolders.IsEmpty()) {
        BuildTable();
    }
    const std::int32_t* csidl = SpecialFolders.Find(folder);
    return csidl ? *csidl : -1;
}

/// Empty for a folder that is none of the file system.
CUnicodeString GetPathOfItem(std::int32_t csidl) {
    Platform::ItemIdList* item = nullptr;
    const std::int32_t result = Platform::SHGetSpecialFolderLocation(nullptr, csidl, item);
    if (result < 0) {
        GenerateCOMException(result);
    }
    const CScopeExit release([item] { Platform::CoTaskMemFree(item); });
    char16_t path[Platform::MaxPath + 1] = {};
    return Platform::SHGetPathFromIDList(item, path) ? path : u"";
}

} // namespace

CUnicodeString CNativeFileSystem::GetSpecialFolder(TSpecialFolder folder) {
    const std::int32_t csidl = CsidlOf(folder);
    TSX_REQUIRE(csidl >= 0, ModuleName, {});
    // A folder that isn't there yet has no path for the first question (1, not a failure), but for the second.
    char16_t path[Platform::MaxPath + 1] = {};
    const bool told = Platform::SHGetFolderPath(nullptr, csidl, nullptr, 0, path) == 0;
    return FileSystem::AddTrailingSlash(told ? CUnicodeString(path) : GetPathOfItem(csidl));
}

void CNativeFileSystem::ClearSpecialFolders() {
    const CCriticalSectionLock guard(SpecialFoldersLock);
    SpecialFolders.DeleteAll();
}

void CNativeFileSystem::SetApplicationFolders(const CUnicodeString& relativePath) {
    struct Row {
        TSpecialFolder base;
        CUnicodeString& target;
    };
    const Row rows[] = {{SF_LocalAppData, LocalApplicationFolder},
                        {SF_AppData, ApplicationFolder},
                        {SF_CommonAppData, CommonApplicationFolder}};
    for (const Row& row : rows) {
        const CUnicodeString folder = FileSystem::GetAbsoluteName(GetSpecialFolder(row.base), relativePath);
        const CCriticalSectionLock guard(SpecialFoldersLock);
        row.target = folder;
    }
}

void CNativeFileSystem::StoreApplicationFolders(const CUnicodeString& folder) {
    const CCriticalSectionLock guard(SpecialFoldersLock);
    LocalApplicationFolder = folder;
    ApplicationFolder = folder;
    CommonApplicationFolder = folder;
}

} // namespace Tsx
