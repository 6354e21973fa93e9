#include "mapi/MapiEntries.h"

#include "mapi/MapiProvider.h"
#include "platform/inc/modules.h"

namespace Mapi {

namespace {

/// An entry by its exported name, and the generation of the library that it was looked up in.
template <class TFunction>
struct CBoundEntry {
    const char* name;
    TFunction* entry = nullptr;
    std::uint32_t generation = 0;

    /// The entry in the present library; null if there is none to call.
    TFunction* Get() {
        if (generation != providerGeneration || !providerModule) {
            const Platform::Module module = LocateMapiModule();
            generation = providerGeneration;
            entry = module ? reinterpret_cast<TFunction*>(Platform::GetProcAddress(module, name)) : nullptr;
        }
        return providerModule ? entry : nullptr;
    }

    /// Calls it; `missing` is the result without one.
    template <class TResult, class... TArguments>
    TResult Call(TResult missing, TArguments... arguments) {
        TFunction* const current = Get();
        return current ? current(arguments...) : missing;
    }
    /// Calls one without a result.
    template <class... TArguments>
    void Run(TArguments... arguments) {
        if (TFunction* const current = Get()) {
            current(arguments...);
        }
    }
};

#define MAPI_ENTRY(function)                                                                                           \
    constinit CBoundEntry<decltype(Mapi::function)> function##Entry {                                                  \
#function                                                                                                      \
    }
MAPI_ENTRY(MAPIInitialize);
MAPI_ENTRY(MAPIUninitialize);
MAPI_ENTRY(MAPILogonEx);
MAPI_ENTRY(MAPIAllocateBuffer);
MAPI_ENTRY(MAPIFreeBuffer);
MAPI_ENTRY(HrQueryAllRows);
MAPI_ENTRY(FreeProws);
MAPI_ENTRY(FreePadrlist);
MAPI_ENTRY(HrGetOneProp);
MAPI_ENTRY(HrSetOneProp);
#undef MAPI_ENTRY

} // namespace

std::int32_t MAPIInitialize(void* parameters) {
    return MAPIInitializeEntry.Call(ResultFail, parameters);
}

void MAPIUninitialize() {
    MAPIUninitializeEntry.Run();
}

std::int32_t MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password, std::uint32_t flags,
                         IMAPISession** session) {
    return MAPILogonExEntry.Call(ResultFail, window, profile, password, flags, session);
}

std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer) {
    return MAPIAllocateBufferEntry.Call(ResultFail, size, buffer);
}

std::uint32_t MAPIFreeBuffer(void* buffer) {
    return MAPIFreeBufferEntry.Call(0U, buffer);
}

std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction, SSortOrderSet* order,
                            std::int32_t most, SRowSet** rows) {
    return HrQueryAllRowsEntry.Call(ResultFail, table, tags, restriction, order, most, rows);
}

void FreeProws(SRowSet* rows) {
    FreeProwsEntry.Run(rows);
}

void FreePadrlist(ADRLIST* list) {
    FreePadrlistEntry.Run(list);
}

std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property) {
    return HrGetOnePropEntry.Call(ResultFail, object, tag, property);
}

std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    return HrSetOnePropEntry.Call(ResultFail, object, property);
}

} // namespace Mapi
