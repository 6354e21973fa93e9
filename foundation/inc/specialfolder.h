// The folders that the system keeps for a user or for all.
#pragma once

#include <cstdint>

namespace Tsx {

/// In the alphabetical order of the system's own names, CSIDL_ADMINTOOLS to CSIDL_WINDOWS.
enum TSpecialFolder : std::int32_t {
    SF_AdminTools = 0,
    SF_AltStartup = 1,
    SF_AppData = 2,
    SF_BitBucket = 3,
    SF_CommonAdminTools = 4,
    SF_CommonAltStartup = 5,
    SF_CommonAppData = 6,
    SF_CommonDesktopDirectory = 7,
    SF_CommonDocuments = 8,
    SF_CommonFavorites = 9,
    SF_CommonPrograms = 10,
    SF_CommonStartMenu = 11,
    SF_CommonStartup = 12,
    SF_CommonTemplates = 13,
    SF_Controls = 14,
    SF_Cookies = 15,
    SF_Desktop = 16,
    SF_DesktopDirectory = 17,
    SF_Drives = 18,
    SF_Favorites = 19,
    SF_Fonts = 20,
    SF_History = 21,
    SF_Internet = 22,
    SF_InternetCache = 23,
    SF_LocalAppData = 24,
    SF_MyMusic = 25,
    SF_MyPictures = 26,
    SF_NetHood = 27,
    SF_Network = 28,
    SF_Personal = 29,
    SF_Printers = 30,
    SF_PrintHood = 31,
    SF_Profile = 32,
    SF_ProgramFiles = 33,
    SF_ProgramFilesCommon = 34,
    SF_Programs = 35,
    SF_Recent = 36,
    SF_SendTo = 37,
    SF_StartMenu = 38,
    SF_Startup = 39,
    SF_System = 40,
    SF_Templates = 41,
    SF_Windows = 42
};

} // namespace Tsx
