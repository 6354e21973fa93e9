#include "foundation/inc/foundation.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"
#include "platform/inc/text.h"
#include <atomic>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\foundation";

std::atomic<TFoundationState> foundationState{FS_NeverStarted};
std::int32_t initCount = 0; // starts that no stop has matched; under FoundationLock

void StoreRegistryPath(CUnicodeString& target, const char16_t* path) {
    target = path ? CUnicodeString(path) : u"Software\\Ostrel\\" + GetProgramTitle();
}

} // namespace

TFoundationState GetFoundationState() {
    return foundationState;
}

bool InitializeFoundation(const char16_t* userRegistryPath, const char16_t* machineRegistryPath) {
    const CCriticalSectionLock guard(FoundationLock);
    if (initCount++ != 0) {
        return foundationState == FS_Initialised;
    }
    TSX_ASSERT(foundationState == FS_NeverStarted || foundationState == FS_Stopped, ModuleName);
    foundationState = FS_Starting;
    try {
        Platform::SetUserLocale();
        StoreRegistryPath(UserRegistryPath, userRegistryPath);
        StoreRegistryPath(MachineRegistryPath, machineRegistryPath);
        foundationState = FS_Initialised;
    } catch (CException* exception) {
        DisplayException(exception);
        delete exception;
        foundationState = FS_Failed;
    }
    return foundationState == FS_Initialised;
}

void DeinitializeFoundation() {
    const CCriticalSectionLock guard(FoundationLock);
    if (foundationState == FS_Initialised && --initCount == 0) {
        foundationState = FS_Stopped;
    }
}

CUnicodeString GetModuleDirectory() {
    return FileSystem::GetPath(FileSystem::GetModulePath(Platform::GetProgramModule()));
}

CUnicodeString GetProgramTitle() {
    return FileSystem::GetName(FileSystem::GetProgramPath());
}

} // namespace Tsx
