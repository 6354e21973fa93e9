#include "mapi/MapiSession.h"

#include "mapi/MapiBuffers.h"
#include "mapi/MapiOpenEntry.h"
#include "mapi/MapiProperties.h"
#include "platform/inc/ole.h"

using namespace Tsx;

namespace Mapi {

namespace {

/// Ends OLE, which a library object has started, at the end of a scope; a fault that leaves the scope ends it too.
struct COleOwner {
    static void Release(CMapi*) { Platform::OleUninitialize(); }
};
using COleScope = CHeld<CMapi, COleOwner>;

struct CTwoColumns {
    std::uint32_t count = 2;
    std::uint32_t tags[2];
};

/// Opens the table of stores and reads it whole, with two columns.
void ReadStores(IMAPISession* session, CTwoColumns columns, CInterface<IMAPITable>& table, CMapiRows& rows) {
    table.Receive([&](IMAPITable** out) { return session->GetMsgStoresTable(0, out); });
    CheckResult(table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0));
    rows.Receive([&](SRowSet** out) { return HrQueryAllRows(table.Get(), nullptr, nullptr, nullptr, 0, out); });
}

void FlushQueues(IMAPISession* session, const SRow& row) {
    CInterface<IMAPIStatus> status;
    OpenEntry(session, CPropertyReader(row).EntryId(TagEntryId), status);
    CheckResult(status->FlushQueues(0, 0, nullptr, FlushUpload | FlushForce | FlushNoUi));
}

} // namespace

CHolder<CMapiMessageStore> CMapiSession::OpenDefaultMessageStore() {
    IMAPISession* session = Interface();
    CInterface<IMAPITable> table;
    CInterface<IMsgStore> store;
    CMapiRows rows;
    ReadStores(session, {.tags = {TagResourceFlags, TagEntryId}}, table, rows);
    const std::int32_t chosen = rows.Get() ? ChooseStoreRow(*rows.Get()) : -1;
    if (chosen < 0) {
        CheckResult(ResultUnexpected);
        return {}; // on a thread that must not throw
    }
    const SBinary entryId = CPropertyReader(rows->aRow[chosen]).EntryId(TagEntryId);
    store.Receive([&](IMsgStore** out) {
        return session->OpenMsgStore(0, entryId.cb, reinterpret_cast<ENTRYID*>(entryId.lpb), nullptr, FlagStoreWrite,
                                     out);
    });
    rows.Clear();
    return CHolder<CMapiMessageStore>(new CMapiMessageStore(store.Get()));
}

CHolder<CMapiAddressBook> CMapiSession::OpenAddressBook() {
    IMAPISession* session = Interface();
    CInterface<IAddrBook> book;
    book.Receive([&](IAddrBook** out) { return session->OpenAddressBook(0, nullptr, FlagNoAddressBookDialog, out); });
    return CHolder<CMapiAddressBook>(new CMapiAddressBook(book.Get()));
}

// AS DESIGNED: a spooler has its row in the status table, and the rows of the table of stores normally have other
// types. It is the table of stores that is searched; a store whose row has the spooler's type is flushed.
void CMapiSession::FlushOutgoingQueues() {
    IMAPISession* session = Interface();
    CInterface<IMAPITable> table;
    CMapiRows rows;
    ReadStores(session, {.tags = {TagResourceType, TagEntryId}}, table, rows);
    for (std::uint32_t i = 0; rows.Get() && i < rows->cRows; ++i) {
        if (CPropertyReader(rows->aRow[i]).Number(TagResourceType) == ResourceTypeSpooler) {
            FlushQueues(session, rows->aRow[i]);
        }
    }
}

CMapi::CMapi() {
    CheckResult(Platform::OleInitialize(nullptr));
    COleScope ole(this);
    CheckResult(MAPIInitialize(nullptr));
    ole.Detach(); // both stay started
}

CMapi::~CMapi() {
    const COleScope ole(this);
    MAPIUninitialize();
}

CHolder<CMapiSession> CMapi::Logon() {
    CInterface<IMAPISession> session;
    session.Receive([](IMAPISession** out) {
        return MAPILogonEx(0, nullptr, nullptr, FlagUnicode | LogonUseDefault | LogonExtended | LogonNewSession, out);
    });
    return CHolder<CMapiSession>(new CMapiSession(session.Get()));
}

} // namespace Mapi
