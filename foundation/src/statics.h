// The foundation's static objects that only its own sources reach. All of them are defined in statics.cpp, in one
// order.
#pragma once

#include "foundation/inc/blockmanager.h"
#include "foundation/inc/criticalsection.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/resourceinfo.h"
#include "foundation/inc/threadobject.h"
#include "foundation/inc/tlsslot.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

extern CCriticalSection CharSetLeafLock;
extern CCriticalSection MessageListLock;
extern CCriticalSection StopModeLock;
extern CCriticalSection HandlerLock;
extern CCriticalSection ConsoleHandlerLock;
extern CCriticalSection EventLogHandlerLock;
extern CCriticalSection ApplicationNameLock;
extern CCriticalSection FoundationLock;

/// Whether the foundation can make strings: not yet, now, or no more.
enum class EStringStage { Before, Usable, After };
EStringStage GetStringStage();

/// Whether the static message handlers are there: not yet, or no more, otherwise.
bool DoStaticHandlersStand();

extern CTlsSlot MemoryManagerSlot;
extern CBlockManager CharSetLeaves;

extern CUnicodeString StoredApplicationName;
extern CUnicodeString UserRegistryPath;
extern CUnicodeString MachineRegistryPath;

/// The handler that is installed for a thread alone, or null.
struct CThreadHandler {
    CMessageHandler* Handler;
};
extern CThreadObject<CThreadHandler> threadHandler;
extern CMessageBoxHandler StaticMessageBoxHandler;
extern CConsoleMessageHandler StaticConsoleMessageHandler;
extern CEventLogMessageHandler StaticEventLogMessageHandler;
extern CResourceBase ResourceBase;
extern CFileSystemBase& NativeFileSystem;

} // namespace Tsx
