#include "foundation/inc/modulelist.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagelog.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/modules.h"
#include <algorithm>

namespace Tsx {

namespace {

/// The first file of that name in the folders of `path` (null: where the system looks); empty if there is none.
CUnicodeString SearchFile(const char16_t* path, const CUnicodeString& name) {
    CUnicodeString found;
    for (std::int32_t room = Platform::MaxPath;; room *= 2) {
        const std::uint32_t length = Platform::SearchPath(path, name.Text(), nullptr, static_cast<std::uint32_t>(room),
                                                          found.GetBuffer(room - 1), nullptr);
        if (length < static_cast<std::uint32_t>(room)) {
            found.SetLength(static_cast<std::int32_t>(length));
            return found;
        }
    }
}

CUnicodeString ResolveLibraryPath(const CUnicodeString& name) {
    const TPathType type = FileSystem::GetPathType(name);
    if (type == PT_UNC || type == PT_DriveAbsolute) {
        return name;
    }
    CUnicodeString path;
    if (!LibrarySearchPath.IsEmpty()) {
        path = SearchFile(LibrarySearchPath.Text(), name);
    }
    return path.IsEmpty() ? SearchFile(nullptr, name) : path;
}

/// Under FoundationLock.
void CountLoad(Platform::Module module) {
    CModuleEntry* entry = std::find_if(ModuleList.begin(), ModuleList.end(),
                                       [module](const CModuleEntry& known) { return known.handle == module; });
    if (entry == ModuleList.end()) {
        ModuleList.Append({.handle = module});
        entry = ModuleList.end() - 1;
    }
    ++entry->loadCount;
}

CUnicodeString DescribeStart(const CModuleEntry& entry) {
    return entry.isStatic
               ? u"Tessarix: Initializing static module with address " + CUnicodeString::DescribeAddress(entry.handle)
               : u"Tessarix: Initializing " + FileSystem::GetModulePath(entry.handle);
}

// By index: an entry may load a further module.
void CallInitEntries() {
    for (std::int32_t i = 0; i < ModuleList.Size(); ++i) {
        if (ModuleList[i].initialized) {
            continue;
        }
        ModuleList[i].initialized = true;
        if (const CModuleFunction initEntry = ModuleList[i].initEntry) {
            WriteMessageLogLine(DescribeStart(ModuleList[i]).Text());
            initEntry();
        }
    }
}

void CallTermEntries() {
    for (std::int32_t i = ModuleList.Size() - 1; i >= 0; --i) {
        if (!ModuleList[i].initialized) {
            continue;
        }
        ModuleList[i].initialized = false;
        if (const CModuleFunction termEntry = ModuleList[i].termEntry) {
            RunAndShowFailure(termEntry);
        }
    }
}

// From a copy: the end of a library may run foundation code of its own, which loads or unloads.
void UnloadModules() {
    const CModuleList copy = ModuleList;
    for (std::int32_t i = copy.Size() - 1; i >= 0; --i) {
        for (std::int32_t n = copy[i].isStatic ? 0 : copy[i].loadCount; n > 0; --n) {
            Platform::FreeLibrary(copy[i].handle);
        }
    }
}

bool IsUnloaded(const CModuleEntry& entry) {
    char16_t name[Platform::MaxPath] = {};
    return !entry.isStatic && Platform::GetModuleFileName(entry.handle, name, Platform::MaxPath) == 0;
}

void ForgetUnloadedModules() {
    for (std::int32_t i = ModuleList.Size() - 1; i >= 0; --i) {
        ModuleList[i].loadCount = 0;
        if (IsUnloaded(ModuleList[i])) {
            ModuleList.RemoveAt(i);
        }
    }
}

} // namespace

Platform::Module LoadLibraryInThisMode(const char16_t* name) {
    CThreadErrorMode& mode = *ThreadErrorMode.Get();
    const bool noExceptions = mode.NoExceptions;
    const Platform::Module module = Platform::LoadLibraryEx(name, Platform::LoadWithAlteredSearchPath);
    mode.NoExceptions = noExceptions;
    return module;
}

Platform::Module LoadLibrarySearched(const char16_t* name) {
    std::uint32_t error = 0;
    const CScopeExit setError([&error] { Platform::SetLastError(error); }); // last: the end of a string may change it
    CUnicodeString path = ResolveLibraryPath(name);
    Platform::Module module = nullptr;
    if (!path.IsEmpty()) {
        Platform::FoldLibraryPath(path.GetBuffer(path.Length()));
        const CRuntimeHeapSwitcher switcher;
        module = LoadLibraryInThisMode(path.Text());
    }
    error = module ? 0 : Platform::GetLastError();
    return module;
}

Platform::Module TryLoadModule(const char16_t* name) {
    const Platform::Module module = LoadLibrarySearched(name);
    if (!module) {
        return nullptr;
    }
    const CCriticalSectionLock guard(FoundationLock);
    CountLoad(module);
    if (GetFoundationState() == FS_Initialised) {
        const CRuntimeHeapSwitcher switcher;
        InitializeModules();
    }
    return module;
}

Platform::Module LoadModule(const char16_t* name) {
    const Platform::Module module = TryLoadModule(name);
    if (!module) {
        GenerateCheckException(ERR_CANT_LOAD_DLL, name, GetLastErrorText(Platform::GetLastError()).Text());
    }
    return module;
}

void AddStaticModule(Platform::Module handle, CModuleFunction initEntry, CModuleFunction termEntry) {
    const CCriticalSectionLock guard(FoundationLock);
    ModuleList.Append({.handle = handle, .initEntry = initEntry, .termEntry = termEntry, .isStatic = true});
}

bool InitializeModules() {
    const CCriticalSectionLock guard(FoundationLock);
    return RunAndShowFailure(&CallInitEntries);
}

void TerminateModules() {
    const CCriticalSectionLock guard(FoundationLock);
    CallTermEntries();
    UnloadModules();
    ForgetUnloadedModules();
}

} // namespace Tsx
