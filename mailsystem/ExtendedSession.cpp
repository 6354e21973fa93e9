#include "mailsystem/ExtendedSession.h"

#include "mailsystem/Delivery.h"
#include "mailsystem/ExtendedStore.h"

using namespace Mapi;

namespace MailSystem {

std::int32_t AddressBook::ResolveName(WindowParameter, std::uint32_t, TextPointer, ADRLIST* list) {
    return list ? Platform::SOk : ResultInvalidParameter;
}

std::int32_t Session::GetMsgStoresTable(std::uint32_t, IMAPITable** table) {
    return HandOut<StoresTable>(table);
}

std::int32_t Session::OpenMsgStore(WindowParameter, std::uint32_t entryIdSize, ENTRYID* entryId, const Guid*,
                                   std::uint32_t, IMsgStore** store) {
    *store = nullptr;
    return IsEntry(EEntry::Store, entryIdSize, entryId) ? HandOut<Store>(store) : ResultInvalidEntryId;
}

std::int32_t Session::OpenAddressBook(WindowParameter, const Guid*, std::uint32_t, IAddrBook** book) {
    return HandOut<AddressBook>(book);
}

std::int32_t Session::PrepareForm(const Guid*, IMessage* message, MessageToken* token) {
    auto* const own = dynamic_cast<MessageObject*>(message);
    if (!own) {
        return ResultInvalidObject;
    }
    return Guarded([&] {
        prepared.emplace(lastToken + 1, Reference<MessageObject>(own));
        *token = ++lastToken;
        return Platform::SOk;
    });
}

std::int32_t Session::ShowForm(WindowParameter, IMsgStore*, IMAPIFolder*, const Guid*, MessageToken token, IMessage*,
                               std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, char*) {
    const auto shown = prepared.extract(token);
    if (shown.empty()) {
        return ResultInvalidParameter;
    }
    return Guarded([&shown] {
        Deliver(shown.mapped()->Content(), EShow::InClient);
        return Platform::SOk;
    });
}

} // namespace MailSystem
