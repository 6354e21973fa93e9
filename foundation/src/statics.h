// The foundation's static objects that only its own sources reach. All of them are defined in statics.cpp, in one
// order.
#pragma once

#include "foundation/inc/blockmanager.h"
#include "foundation/inc/criticalsection.h"
#include "foundation/inc/hashtable.h"
#include "foundation/inc/map.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/resourceinfo.h"
#include "foundation/inc/tlsslot.h"
#include "foundation/inc/unicodestring.h"
#include "foundation/inc/virtualfilesystem.h"

namespace Tsx {

extern CCriticalSection CharSetLeafLock;
extern CCriticalSection MessageListLock;
extern CCriticalSection HandlerLock;
extern CCriticalSection ApplicationNameLock;
extern CCriticalSection FoundationLock;

/// Whether the foundation can make strings: not yet, now, or no more.
enum class EStringStage { Before, Usable, After };
EStringStage GetStringStage();

extern CTlsSlot MemoryManagerSlot;
extern CBlockManager CharSetLeaves;

extern CUnicodeString StoredApplicationName;
extern CUnicodeString UserRegistryPath;
extern CUnicodeString MachineRegistryPath;

extern CMessageBoxHandler StaticMessageBoxHandler;
extern CResourceBase ResourceBase;

/// The system's numbers by TSpecialFolder, filled at the first question. SpecialFoldersLock guards filling and clearing
/// it, and stores into the application's folders; it is not held while the shell is asked.
extern CCriticalSection SpecialFoldersLock;
using CSpecialFolderMap = CMap<std::int32_t, std::int32_t, CNumberKeyTraits, CProcessHeapPolicy>;
extern CSpecialFolderMap SpecialFolders;
extern CUnicodeString LocalApplicationFolder;
extern CUnicodeString ApplicationFolder; // the one that follows the user to other machines
extern CUnicodeString CommonApplicationFolder;

/// What the shutdown sweeps. Process heap: it outlives the threads that add to it.
using CPathSet = CHashTable<CUnicodeString, CPathKeyTraits, CProcessHeapPolicy>;
extern CCriticalSection TemporaryFilesLock; // guards these three
extern CUnicodeString TemporaryFolder;
extern CPathSet TemporaryFiles;
extern CPathSet TemporaryDirectories;

/// The two file systems; null before they are there and after they are gone.
extern const CUnicodeString VirtualRootName;
extern CNativeFileSystem* NativeFileSystem;
extern CVirtualFileSystem* VirtualFileSystem;

} // namespace Tsx
