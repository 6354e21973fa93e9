#include "mapi/MapiEntries.h"

#include "mapi/MapiProvider.h"
#include "platform/inc/modules.h"

namespace Mapi {

namespace {

/// An entry and the generation of the library that it was looked up in.
template <class TFunction>
struct CBoundEntry {
    TFunction* entry = nullptr;
    std::uint32_t generation = 0;

    /// The current entry; null if it is not to be called.
    TFunction* Get(const char* name) {
        if (generation != providerGeneration || !providerModule) {
            const Platform::Module module = LocateMapiModule();
            generation = providerGeneration;
            entry = module ? reinterpret_cast<TFunction*>(Platform::GetProcAddress(module, name)) : nullptr;
        }
        return providerModule ? entry : nullptr;
    }
};

constinit CBoundEntry<decltype(MAPIInitialize)> InitializeEntry;

} // namespace

bool CanInitializeMapi() {
    return InitializeEntry.Get("MAPIInitialize") != nullptr;
}

std::int32_t MAPIInitialize(void* parameters) {
    auto* const entry = InitializeEntry.Get("MAPIInitialize");
    return entry ? entry(parameters) : ResultFail;
}

void MAPIUninitialize() {
    static constinit CBoundEntry<decltype(MAPIUninitialize)> bound;
    if (auto* const entry = bound.Get("MAPIUninitialize")) {
        entry();
    }
}

std::int32_t MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password, std::uint32_t flags,
                         IMAPISession** session) {
    static constinit CBoundEntry<decltype(MAPILogonEx)> bound;
    auto* const entry = bound.Get("MAPILogonEx");
    return entry ? entry(window, profile, password, flags, session) : ResultFail;
}

std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer) {
    static constinit CBoundEntry<decltype(MAPIAllocateBuffer)> bound;
    auto* const entry = bound.Get("MAPIAllocateBuffer");
    return entry ? entry(size, buffer) : ResultFail;
}

std::uint32_t MAPIFreeBuffer(void* buffer) {
    static constinit CBoundEntry<decltype(MAPIFreeBuffer)> bound;
    auto* const entry = bound.Get("MAPIFreeBuffer");
    return entry ? entry(buffer) : 0;
}

std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction, SSortOrderSet* order,
                            std::int32_t most, SRowSet** rows) {
    static constinit CBoundEntry<decltype(HrQueryAllRows)> bound;
    auto* const entry = bound.Get("HrQueryAllRows");
    return entry ? entry(table, tags, restriction, order, most, rows) : ResultFail;
}

void FreeProws(SRowSet* rows) {
    static constinit CBoundEntry<decltype(FreeProws)> bound;
    if (auto* const entry = bound.Get("FreeProws")) {
        entry(rows);
    }
}

void FreePadrlist(ADRLIST* list) {
    static constinit CBoundEntry<decltype(FreePadrlist)> bound;
    if (auto* const entry = bound.Get("FreePadrlist")) {
        entry(list);
    }
}

std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property) {
    static constinit CBoundEntry<decltype(HrGetOneProp)> bound;
    auto* const entry = bound.Get("HrGetOneProp");
    return entry ? entry(object, tag, property) : ResultFail;
}

std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    static constinit CBoundEntry<decltype(HrSetOneProp)> bound;
    auto* const entry = bound.Get("HrSetOneProp");
    return entry ? entry(object, property) : ResultFail;
}

} // namespace Mapi
