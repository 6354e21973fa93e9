#include "mapi/MapiStore.h"

#include "mapi/MapiBuffers.h"
#include "mapi/MapiOpenEntry.h"
#include "mapi/MapiProperties.h"

using namespace Tsx;

namespace Mapi {

CHolder<CMapiMessage> CMapiFolder::CreateMessage() {
    IMAPIFolder* folder = Interface();
    CInterface<IMessage> message;
    message.Receive([&](IMessage** out) { return folder->CreateMessage(nullptr, 0, out); });
    SetBoolean(Required(message.Get()), TagDeleteAfterSubmit, true);
    return CHolder<CMapiMessage>(new CMapiMessage(message.Get()));
}

CHolder<CMapiFolder> CMapiMessageStore::OpenReceiveFolder() {
    IMsgStore* store = Interface();
    CInterface<IMAPIFolder> folder;
    std::uint32_t size = 0;
    CMapiBuffer<ENTRYID> entryId;
    entryId.Receive([&](ENTRYID** out) { return store->GetReceiveFolder(nullptr, FlagUnicode, &size, out, nullptr); });
    OpenEntry(store, {size, reinterpret_cast<std::uint8_t*>(entryId.Get())}, folder);
    entryId.Clear();
    return CHolder<CMapiFolder>(new CMapiFolder(folder.Get()));
}

CHolder<CMapiFolder> CMapiMessageStore::OpenOutbox() {
    IMsgStore* store = Interface();
    CInterface<IMAPIFolder> folder;
    CMapiBuffer<SPropValue> property;
    property.Receive([&](SPropValue** out) { return HrGetOneProp(store, TagOutboxEntryId, out); });
    OpenEntry(store, CPropertyReader(property.Get(), 1).EntryId(TagOutboxEntryId), folder);
    property.Clear();
    return CHolder<CMapiFolder>(new CMapiFolder(folder.Get()));
}

void CMapiAddressBook::ResolveName(const CMapiAddressList& recipients) {
    CheckResult(Interface()->ResolveName(0, FlagUnicode, nullptr, recipients.List()));
}

} // namespace Mapi
