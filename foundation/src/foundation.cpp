#include "foundation/inc/foundation.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/debugtrace.h"
#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagelog.h"
#include "foundation/inc/modulelist.h"
#include "foundation/inc/programidentity.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/inc/settings.h"
#include "foundation/src/runtimehooks.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"
#include "platform/inc/process.h"
#include "platform/inc/text.h"
#include <atomic>
#include <cstdlib>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\foundation";

std::atomic<TFoundationState> FoundationState{FS_NeverStarted};
std::int32_t InitCount = 0; // starts that no stop has matched; under FoundationLock

/// Failures can be thrown while the result lives, whatever was decided before.
auto EnableExceptions() {
    return CScopeExit([before = ExceptionsEnabled.exchange(true)] { ExceptionsEnabled = before; });
}

/// A value that says neither yes nor no counts as yes.
void SetLocaleIfWanted() {
    bool wanted = true;
    if (!GetUserSetting(u"SetLocale", u"true").ToBool(wanted) || wanted) {
        Platform::SetUserLocale();
        WriteMessageLogLine(u"Tessarix: CRT locale changed.");
    }
}

void SetApplicationFolders() {
    if (!RunSilently([] { CNativeFileSystem::SetApplicationFolders(u"Ostrel\\" + GetProgramTitle()); })) {
        ReleaseTrace(u"Tessarix: Exception during application data path initialization. Using current module dir as "
                     u"application data path.\n");
        CNativeFileSystem::StoreApplicationFolders(GetModuleDirectory());
    }
}

void StoreRegistryPath(CUnicodeString& target, const char16_t* path) {
    const CUnicodeString stored = path ? CUnicodeString(path) : RegistryRoot + GetProgramTitle();
    const CCriticalSectionLock guard(RegistryPathLock);
    target = stored;
}

void SetTemporaryFolderIfGiven() {
    const CUnicodeString folder = GetMachineSetting(u"Temp", u"");
    if (!folder.IsEmpty()) {
        CNativeFileSystem::SetTemporaryFolder(folder);
    }
}

/// The steps of the start, in the order in which each finds what it relies on.
void Start(const char16_t* userRegistryPath, const char16_t* machineRegistryPath) {
    ReadDebugFlags();
    WriteMessageLogLine(u"Tessarix: Debug flags initialized.");
    SetLocaleIfWanted();
    SetApplicationFolders();
    WriteMessageLogLine(u"Tessarix: Application data path initialized.");
    SetUserRegistryPath(userRegistryPath);
    SetMachineRegistryPath(machineRegistryPath);
    WriteMessageLogLine(u"Tessarix: Registry paths initialized.");
    ResourceBase.Initialize();
    WriteMessageLogLine(u"Tessarix: Resource base initialized.");
    SetTemporaryFolderIfGiven();
    FoundationState = FS_Initialised;
    if (!InitializeModules()) {
        FoundationState = FS_Failed;
    }
    WriteMessageLogLine(u"Tessarix: All modules initialized.");
}

/// The lists that developers ask for. One that can't be written is dropped without a report.
void SaveMessageLists() {
    try {
        if (HasDebugFlag(DebugSaveAllMessages)) {
            SaveAllMessagesList(FileSystem::GetProgramDirectory() + GetProgramTitle() + u" all messages.txt");
            WriteMessageLogLine(u"Tessarix: All messages saved.");
        }
        if (HasDebugFlag(DebugSaveUndefinedMessages)) {
            CUnicodeString path = FileSystem::GetProgramPath();
            FileSystem::ReplaceExt(path, u".txt");
            SaveUndefinedMessagesList(path);
            WriteMessageLogLine(u"Tessarix: Undefined messages saved.");
        }
    } catch (CFileException* exception) {
        delete exception;
    }
}

void EndModules() {
    TerminateModules();
    WriteMessageLogLine(u"Tessarix: All modules terminated.");
}

void EndTemporaryFiles() {
    const CCriticalSectionLock guard(TemporaryFilesLock);
    CNativeFileSystem::ReleaseTemporaryObjects();
    TemporaryFiles.DeleteAll();
    TemporaryDirectories.DeleteAll();
    WriteMessageLogLine(u"Tessarix: Temporary files system terminated.");
}

void Stop() {
    WriteMessageLogLine(u"Tessarix: Deinitializing...");
    {
        const auto scope = EnableExceptions();
        RunAndShowFailure(&SaveMessageLists);
        RunAndShowFailure(&EndModules);
        RunAndShowFailure(&EndTemporaryFiles);
        RunAndShowFailure(&FileSystem::ShutdownFileSystems);
    }
    RestoreRuntimeHooks();
    FoundationState = FS_Stopped;
    ResourceBase.Deinitialize();
    WriteMessageLogLine(u"Tessarix: Resource base deinitialized.");
    WriteMessageLogLine(u"Tessarix: Deinitialization complete.");
    ReleaseTrace(u"Tessarix deinitialized!\n");
}

} // namespace

TFoundationState GetFoundationState() {
    return FoundationState;
}

bool InitializeFoundation(const char16_t* userRegistryPath, const char16_t* machineRegistryPath) {
    const CCriticalSectionLock guard(FoundationLock);
    if (InitCount++ != 0) {
        return FoundationState == FS_Initialised && InitializeModules();
    }
    TSX_ASSERT(FoundationState == FS_NeverStarted || FoundationState == FS_Stopped, ModuleName);
    FoundationState = FS_Starting;
    std::srand(Platform::GetCurrentProcessId());
    InstallRuntimeHooks();
    const auto scope = EnableExceptions();
    if (!RunAndShowFailure([&] { Start(userRegistryPath, machineRegistryPath); })) {
        ReleaseTrace(u"Exception during Tessarix Initialization\n");
        FoundationState = FS_Failed;
    }
    return FoundationState == FS_Initialised;
}

void DeinitializeFoundation() {
    const CCriticalSectionLock guard(FoundationLock);
    if (FoundationState == FS_Initialised && --InitCount < 1) {
        Stop();
    }
}

void SetUserRegistryPath(const char16_t* path) {
    StoreRegistryPath(UserRegistryPath, path);
}

void SetMachineRegistryPath(const char16_t* path) {
    StoreRegistryPath(MachineRegistryPath, path);
}

void StoreProgramModule(Platform::Module module) {
    TSX_ASSERT(!ProgramModule || ProgramModule == module, ModuleName);
    ProgramModule = module;
}

CUnicodeString GetModuleDirectory() {
    if (!ProgramModule) {
        ProgramModule = Platform::GetProgramModule();
        TSX_ASSERT(ProgramModule, ModuleName);
    }
    return FileSystem::GetPath(FileSystem::GetModulePath(ProgramModule));
}

CUnicodeString GetProgramTitle() {
    CUnicodeString path = FileSystem::GetProgramPath();
    FileSystem::GetFullName(path);
    return FileSystem::GetName(path);
}

} // namespace Tsx
