// The foundation's static objects that only its own sources reach. All of them are defined in statics.cpp, in one
// order.
#pragma once

#include "foundation/inc/blockmanager.h"
#include "foundation/inc/criticalsection.h"
#include "foundation/inc/hashtable.h"
#include "foundation/inc/map.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/modulelist.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/resourceinfo.h"
#include "foundation/inc/threadobject.h"
#include "foundation/inc/tlsslot.h"
#include "foundation/inc/unicodestring.h"
#include "foundation/inc/virtualfilesystem.h"

namespace Tsx {

extern CCriticalSection CharSetLeafLock;
extern CCriticalSection MessageListLock;
extern CCriticalSection StopModeLock;
extern CCriticalSection handlerLock;
extern CCriticalSection ConsoleHandlerLock;
extern CCriticalSection EventLogHandlerLock;
extern CCriticalSection ApplicationNameLock;
extern CCriticalSection FoundationLock;
extern CCriticalSection RegistryPathLock; // guards the two paths

/// Whether the foundation can make strings: not yet, now, or no more.
enum TStringStage { SS_Before, SS_Usable, SS_After };
TStringStage GetStringStage();

/// Whether the static message handlers exist.
bool DoStaticHandlersStand();

extern CTlsSlot MemoryManagerSlot;
extern CBlockManager CharSetLeaves;

/// NotEnoughMemoryText and FoundationTitle as strings made in advance: what tells of exhausted memory takes none.
extern const CUnicodeString NotEnoughMemoryString;
extern const CUnicodeString FoundationTitleString;

extern CUnicodeString StoredApplicationName;
extern CUnicodeString UserRegistryPath;
extern CUnicodeString MachineRegistryPath;

/// The handler that is installed for a thread alone, or null.
struct CThreadHandler {
    CMessageHandler* Handler;
};
extern CThreadObject<CThreadHandler> threadHandler;
extern CThreadObject<CThreadLanguage> ThreadLanguage;
extern CMessageBoxHandler StaticMessageBoxHandler;
extern CConsoleMessageHandler StaticConsoleMessageHandler;
extern CEventLogMessageHandler StaticEventLogMessageHandler;
extern CResourceBase ResourceBase;

/// The modules with their counts and entries, and where those without a complete name are looked for first. Both under
/// FoundationLock. Process heap: the list outlives the threads that add to it.
using CModuleList = CArray<CModuleEntry, CProcessHeapPolicy>;
extern CModuleList ModuleList;
extern CUnicodeString LibrarySearchPath; // folders, separated by `;`. AS DESIGNED: empty in this program
extern Platform::Module ProgramModule;

/// The system's numbers by TSpecialFolder, filled at the first question. SpecialFoldersLock guards filling and clearing
/// it, and stores into the application's folders; it is not held while the shell is asked.
extern CCriticalSection SpecialFoldersLock;
using CSpecialFolderMap = CMap<std::int32_t, std::int32_t, CNumberKeyTraits, CProcessHeapPolicy>;
extern CSpecialFolderMap SpecialFolders;
extern CUnicodeString LocalApplicationFolder;
extern CUnicodeString ApplicationFolder; // the one that follows the user to other machines
extern CUnicodeString CommonApplicationFolder;

/// What the shutdown sweeps. Runtime heap: it outlives the threads that add to it, and their managers.
using CPathSet = CHashTable<CUnicodeString, CPathKeyTraits, CRuntimeHeapPolicy>;
extern CCriticalSection TemporaryFilesLock; // guards these three
extern CUnicodeString TemporaryFolder;
extern CPathSet TemporaryFiles;
extern CPathSet TemporaryDirectories;

/// The two file systems; null before they are there and after they are gone.
extern const CUnicodeString VirtualRootName;
extern CNativeFileSystem* NativeFileSystem;
extern CVirtualFileSystem* VirtualFileSystem;

} // namespace Tsx
