#include "mapi/MapiProvider.h"

#include "mapi/ProviderSearch.h"
#include "platform/inc/modules.h"

namespace Mapi {

constinit std::atomic<Platform::Module> providerModule{nullptr};
constinit std::atomic<std::uint32_t> providerGeneration{0};
constinit bool outlookOnly = false;

namespace {

// A library that the process has loaded already is used without a search.
Platform::Module FindProvider() {
    Platform::Module found = nullptr;
    if (Platform::GetModuleHandleEx(0, u"olmapi32.dll", found) ||
        Platform::GetModuleHandleEx(0, u"msmapi32.dll", found)) {
        return found;
    }
    return LoadMapiProvider();
}

} // namespace

Platform::Module LocateMapiModule() {
    if (const Platform::Module known = providerModule) {
        return known;
    }
    if (const Platform::Module found = FindProvider()) {
        Platform::Module none = nullptr;
        if (!providerModule.compare_exchange_strong(none, found)) {
            Platform::FreeLibrary(found);
        }
        ++providerGeneration;
    }
    return providerModule;
}

} // namespace Mapi
