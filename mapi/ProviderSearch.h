// The steps of the search for a library that implements Extended MAPI; MapiProvider.cpp starts it. Each step gives a
// loaded library, which the caller frees or keeps, or null; none raises. The keys, values and file names are those
// under which mail clients register on Windows.
#pragma once

#include "mapi/SearchTools.h"
#include "platform/inc/types.h"

namespace Mapi {

/// The whole search: the default mail client unless it is Outlook, Outlook by its own entry in the registry, the
/// system's library.
Platform::Module LoadMapiProvider();

/// The library that the default mail client names, unless that is Outlook, which has steps of its own.
Platform::Module LoadDefaultMailClient();
/// By the component that a client's key names, for which the system's library knows the path.
Platform::Module LoadClientByComponent(const CSearchKey& key);
/// By the path in a client's key.
Platform::Module LoadClientByPath(const CSearchKey& key);

/// Outlook's own MAPI library: by language in the folder of common files, then by component from the installer. False
/// if there is none.
bool LoadMsMapi(Platform::Module& module);
/// A library in the folder of common files. The last error tells why there is none.
Platform::Module LoadUnderCommonFiles(const char16_t* relativePath);
/// A component from the installer. If the process has a library of that file name already, that one is loaded. The last
/// error tells why there is none.
Platform::Module LoadQualifiedComponent(const char16_t* componentId, const char16_t* qualifier);

/// "mapi32.dll" in the system's folder.
Platform::Module LoadSystemMapi();

/// The language that Outlook was installed with, as an LCID; 0 if it is not known.
std::uint32_t ReadOutlookLcid();

} // namespace Mapi
