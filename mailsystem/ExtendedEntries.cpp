// The exported functions of the Extended side.
#include "mailsystem/ExtendedSession.h"
#include "platform/inc/types.h"

using namespace MailSystem;
using namespace Mapi;

extern "C" {

PLATFORM_EXPORT std::int32_t MAPIInitialize(void*) {
    return Platform::SOk;
}

PLATFORM_EXPORT void MAPIUninitialize() {}

/// There is one user and one profile: name, password and flags are not read.
PLATFORM_EXPORT std::int32_t MAPILogonEx(WindowParameter, TextPointer, TextPointer, std::uint32_t,
                                         IMAPISession** session) {
    return HandOut<Session>(session);
}

PLATFORM_EXPORT std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer) {
    return Guarded([&] {
        *buffer = AllocateBuffer<void>(size);
        return Platform::SOk;
    });
}

PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void* buffer) {
    std::free(buffer);
    return 0;
}

/// A restriction and an order are refused: the program uses neither.
PLATFORM_EXPORT std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction,
                                            SSortOrderSet* order, std::int32_t most, SRowSet** rows) {
    *rows = nullptr;
    if (restriction || order) {
        return ResultNoSupport;
    }
    const std::int32_t result = tags ? table->SetColumns(tags, 0) : Platform::SOk;
    return result < 0 ? result : table->QueryRows(most > 0 ? most : INT32_MAX, 0, rows);
}

PLATFORM_EXPORT void FreeProws(SRowSet* rows) {
    for (std::uint32_t i = 0; rows && i < rows->cRows; ++i) {
        std::free(rows->aRow[i].lpProps);
    }
    std::free(rows);
}

PLATFORM_EXPORT void FreePadrlist(ADRLIST* list) {
    for (std::uint32_t i = 0; list && i < list->cEntries; ++i) {
        std::free(list->aEntries[i].rgPropVals);
    }
    std::free(list);
}

PLATFORM_EXPORT std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property) {
    SPropTagArray tags{1, {tag}};
    std::uint32_t count = 0;
    const std::int32_t result = object->GetProps(&tags, 0, &count, property);
    if (result < 0 || (*property)->ulPropTag == tag) {
        return result;
    }
    const std::int32_t error = (*property)->Value.err;
    std::free(*property);
    *property = nullptr;
    return error;
}

PLATFORM_EXPORT std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    return object->SetProps(1, property, nullptr);
}

} // extern "C"
