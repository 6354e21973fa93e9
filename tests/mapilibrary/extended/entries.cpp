// The exported functions of the Extended side of the recording MAPI library.
#include "platform/inc/faults.h"
#include "platform/inc/ole.h"
#include "tests/mapilibrary/extended/objects.h"
#include "tests/mapilibrary/transcript.h"

using namespace Mapi;

namespace {

// On a system that has OLE: whether the program has started it before MAPI, and not ended it.
std::string OleState() {
    const std::int32_t result = Platform::OleInitialize(nullptr);
    Platform::OleUninitialize();
    return result == Platform::SFalse ? "OLE is started" : "OLE is not started";
}

} // namespace

extern "C" {

PLATFORM_EXPORT std::int32_t MAPIInitialize(void* parameters) {
    Platform::DisarmFaults(); // the program is what is tested
    return Answer("MAPIInitialize", Joined(Shown(parameters), OleState()), [](const std::string&) { return 0; });
}

PLATFORM_EXPORT void MAPIUninitialize() {
    BeginCall("MAPIUninitialize", OleState());
    EndCall();
}

PLATFORM_EXPORT std::int32_t MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password,
                                         std::uint32_t flags, IMAPISession** session) {
    return Answer("MAPILogonEx", Joined(Shown(window), Shown(profile), Shown(password), Shown(flags)),
                  [&](const std::string&) {
                      *session = NewSession();
                      return 0;
                  });
}

PLATFORM_EXPORT std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer) {
    return Answer("MAPIAllocateBuffer", Shown(size), [&](const std::string&) {
        *buffer = AllocateBuffer(size, "buffer of " + Decimal(size));
        return 0;
    });
}

PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void* buffer) {
    BeginCall("MAPIFreeBuffer", NameOf(buffer));
    FreeBuffer(buffer);
    EndCall();
    return 0;
}

PLATFORM_EXPORT std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction,
                                            SSortOrderSet* order, std::int32_t most, SRowSet** rows) {
    return Answer("HrQueryAllRows",
                  Joined(NameOf(table), Shown(tags ? "given" : nullptr), Shown(restriction), Shown(order),
                         Shown(static_cast<std::uint32_t>(most))),
                  [&](const std::string&) {
                      *rows = AllRowsOf(table);
                      return 0;
                  });
}

PLATFORM_EXPORT void FreeProws(SRowSet* rows) {
    BeginCall("FreeProws", NameOf(rows));
    for (std::uint32_t i = 0; rows && i < rows->cRows; ++i) {
        FreeBuffer(rows->aRow[i].lpProps);
    }
    FreeBuffer(rows);
    EndCall();
}

PLATFORM_EXPORT void FreePadrlist(ADRLIST* list) {
    BeginCall("FreePadrlist", NameOf(list));
    for (std::uint32_t i = 0; list && i < list->cEntries; ++i) {
        FreeBuffer(list->aEntries[i].rgPropVals);
    }
    FreeBuffer(list);
    EndCall();
}

PLATFORM_EXPORT std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property) {
    return Answer("HrGetOneProp", Joined(NameOf(object), Shown(tag)), [&](const std::string& word) {
        *property = OutboxProperty(word);
        return 0;
    });
}

PLATFORM_EXPORT std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    return Answer("HrSetOneProp", Joined(NameOf(object), Shown(*property)), [](const std::string&) { return 0; });
}

// For tests that live in the same process: how much is given out at the moment.
PLATFORM_EXPORT std::uint32_t CorvaneThingsOut() {
    return ThingsOut();
}

} // extern "C"
