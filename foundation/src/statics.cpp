// Every static object of the foundation, in the order in which it comes up; destruction is the reverse. The priority
// puts all of them in front of the static objects of every other source, and within this file the order is that of the
// text. Each group says why it precedes the next. The whole way of a process:
//
//    1. locks                                     7. message handlers, the resource base
//    2. thread data, whether this thread throws   8. module list, class registry, file layer
//    3. memory, strings, memory exceptions        9. the program's module, entered in the resource base
//    4. character sets                           10. the static objects of the other sources, in no order that
//    5. the foundation's message names               anybody may rely on: message names, class registrations
//    6. strings, empty as yet                    11. main, and in it InitializeFoundation and its opposite
//
// What takes no constructor (debug flags, stop modes, the state of the foundation) is there before all of it. The
// system's page size is asked for by the first block manager that needs it.
#include "foundation/src/statics.h"

#include "foundation/inc/filemapping.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/classregistry.h"
#include "foundation/src/runtimehooks.h"
#include "platform/inc/modules.h"

// 101 is the first priority that programs may use.
#define TSX_STATIC __attribute__((init_priority(101)))

// TSX_OBJECT(type, name, arguments...) defines one object. A test compiles this file with a TSX_MARK of its own, which
// puts a mark behind each and hears when it is passed on the way up and down.
#ifndef TSX_MARK
#define TSX_MARK(name)
#endif
#define TSX_OBJECT(type, name, ...)                                                                                    \
    TSX_STATIC type name __VA_OPT__((__VA_ARGS__));                                                                    \
    TSX_MARK(name)

namespace Tsx {

namespace {

// Failures during static construction and destruction are shown and not thrown: nobody is there to catch them. The main
// guard of the program lifts this while it runs.
class CStaticStage {
public:
    CStaticStage() {
        InstallOuterHook();
        ThreadErrorMode.Get()->NoExceptions = true;
    }
};

constinit TStringStage stringStage = SS_Before;
constinit bool staticHandlersStand = false;

/// Stands behind the last object that strings need.
class CStringStage {
public:
    CStringStage() { stringStage = SS_Usable; }
    ~CStringStage() { stringStage = SS_After; }
    CStringStage(const CStringStage&) = delete;
    CStringStage& operator=(const CStringStage&) = delete;
};

/// Stands behind the last of the static message handlers.
class CHandlerStage {
public:
    CHandlerStage() { staticHandlersStand = true; }
    ~CHandlerStage() { staticHandlersStand = false; }
    CHandlerStage(const CHandlerStage&) = delete;
    CHandlerStage& operator=(const CHandlerStage&) = delete;
};

/// Stands behind the last object of the foundation. The program's messages are there from now on, for the static
/// objects of the program too.
class CProgramStage {
public:
    CProgramStage() {
        StoreProgramModule(Platform::GetProgramModule());
        ResourceBase.RegisterStaticModule(ProgramModule);
    }
    ~CProgramStage() { ResourceBase.UnregisterStaticModule(ProgramModule); }
    CProgramStage(const CProgramStage&) = delete;
    CProgramStage& operator=(const CProgramStage&) = delete;
};

} // namespace

TStringStage GetStringStage() {
    return stringStage;
}

bool DoStaticHandlersStand() {
    return staticHandlersStand;
}

// Locks: everything below may be used by several threads.
TSX_OBJECT(CCriticalSection, RegistryLock)
TSX_OBJECT(CCriticalSection, CharSetLeafLock)
TSX_OBJECT(CCriticalSection, MessageListLock)
TSX_OBJECT(CCriticalSection, StopModeLock)
TSX_OBJECT(CCriticalSection, handlerLock)
TSX_OBJECT(CCriticalSection, ConsoleHandlerLock)
TSX_OBJECT(CCriticalSection, EventLogHandlerLock)
TSX_OBJECT(CCriticalSection, ApplicationNameLock)
TSX_OBJECT(CCriticalSection, FoundationLock)
TSX_OBJECT(CCriticalSection, RegistryPathLock)
TSX_OBJECT(CCriticalSection, SpecialFoldersLock)
TSX_OBJECT(CCriticalSection, TemporaryFilesLock)

// Thread data: the first failure asks it whether it may throw.
TSX_OBJECT(CThreadObjectRegistry, ThreadObjectRegistry)
TSX_OBJECT(CTlsSlot, MemoryManagerSlot)
TSX_OBJECT(CThreadObject<CErrorGuardState>, ErrorGuardState)
TSX_OBJECT(CThreadObject<CThreadErrorMode>, ThreadErrorMode)
TSX_OBJECT(CThreadObject<CThreadHandler>, threadHandler)
TSX_OBJECT(CThreadObject<CThreadLanguage>, ThreadLanguage)
TSX_OBJECT(static const CStaticStage, StaticStage)

// Memory: pages, then the heap that serves every thread at first, then the strings that live on both.
TSX_OBJECT(CVirtualMemoryManager, VirtualMemoryManager)
TSX_OBJECT(CRuntimeHeapManager, RuntimeHeapManager)
TSX_OBJECT(CStringBlockAllocator, StringAllocator)
TSX_OBJECT(CBlockManager, CharSetLeaves, CUnicodeCharSet::LeafBytes)

// The pool of memory exceptions: from here on exhausted memory can be raised, and any failure be put into words.
TSX_OBJECT(constinit CMemoryExceptionPool, MemoryExceptionPool)
TSX_OBJECT(const CUnicodeString, NotEnoughMemoryString, NotEnoughMemoryText)
TSX_OBJECT(const CUnicodeString, FoundationTitleString, FoundationTitle)
TSX_OBJECT(static const CStringStage, StringStage)

// Character sets: trimming and numbers use them.
TSX_OBJECT(const CUnicodeCharSet, WhiteSpaceChars,
           u"\x09\x0A\x0B\x0C\x0D\x20\x85\xA0\x1680\x2000\x2001\x2002\x2003\x2004"
           u"\x2005\x2006\x2007\x2008\x2009\x200A\x2028\x2029\x202F"
           u"\x3000")
TSX_OBJECT(const CUnicodeCharSet, DigitChars, u"0123456789")
TSX_OBJECT(const CUnicodeCharSet, InvalidNameChars,
           u"*?<>:\"|\\/"
           u"\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10"
           u"\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F")

// Message names, before anything that could fail with one.
#define TSX_DEFINE_MESSAGE(name) TSX_OBJECT(CMessageName, name, u## #name)
TSX_FOUNDATION_MESSAGES(TSX_DEFINE_MESSAGE)
#undef TSX_DEFINE_MESSAGE

// Strings, empty until the start of the foundation and the application fill them.
TSX_OBJECT(CUnicodeString, StoredApplicationName)
TSX_OBJECT(CUnicodeString, UserRegistryPath)
TSX_OBJECT(CUnicodeString, MachineRegistryPath)
TSX_OBJECT(CUnicodeString, LibrarySearchPath)
TSX_OBJECT(CUnicodeString, LocalApplicationFolder)
TSX_OBJECT(CUnicodeString, ApplicationFolder)
TSX_OBJECT(CUnicodeString, CommonApplicationFolder)
TSX_OBJECT(CUnicodeString, TemporaryFolder)

// The message handlers, and the modules that texts come from.
TSX_OBJECT(CMessageBoxHandler, StaticMessageBoxHandler)
TSX_OBJECT(CConsoleMessageHandler, StaticConsoleMessageHandler)
TSX_OBJECT(CEventLogMessageHandler, StaticEventLogMessageHandler)
TSX_OBJECT(static const CHandlerStage, HandlerStage)
TSX_OBJECT(CResourceBase, ResourceBase)

// The modules that are loaded, and the classes that archives create, before any static record registers one.
TSX_OBJECT(CModuleList, ModuleList)
TSX_OBJECT(CClassRegistry, ClassRegistry)

// Tables of the file layer, empty until somebody asks or adds. They take no memory before that.
TSX_OBJECT(CSpecialFolderMap, SpecialFolders)
TSX_OBJECT(CPathSet, TemporaryFiles)
TSX_OBJECT(CPathSet, TemporaryDirectories)

// Sizes of the system: files in memory are cut by them.
TSX_OBJECT(const CMappingSizes, MappingSizes)

// File systems, last: their failures use all of the above. Each enters itself in its slot and leaves it when it goes.
constinit CNativeFileSystem* NativeFileSystem = nullptr;
constinit CVirtualFileSystem* VirtualFileSystem = nullptr;
TSX_OBJECT(const CUnicodeString, VirtualRootName, u"\\\\Ostrel\\Tessarix\\VirtualFiles$\\")
TSX_OBJECT(static CNativeFileSystem, NativeFileSystemObject)
TSX_OBJECT(static CVirtualFileSystem, VirtualFileSystemObject)

// The program's module, behind all that its messages and its failures need.
constinit Platform::Module ProgramModule = nullptr;
TSX_OBJECT(static const CProgramStage, ProgramStage)

} // namespace Tsx
