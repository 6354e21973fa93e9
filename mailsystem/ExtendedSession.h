// The session of the Extended side and its address book. Showing a message's form is where the draft comes about.
#pragma once

#include "mailsystem/ExtendedMessage.h"
#include <map>

namespace MailSystem {

/// Resolves every name to itself: address books belong to the mail client, which gets the name as it is.
class AddressBook final : public Counted<Mapi::Slots::AddressBookSlots<NoSupport>> {
public:
    std::int32_t ResolveName(Mapi::WindowParameter window, std::uint32_t flags, Mapi::TextPointer title,
                             Mapi::ADRLIST* list) override;
};

class Session final : public Counted<Mapi::Slots::SessionSlots<NoSupport>> {
public:
    std::int32_t GetMsgStoresTable(std::uint32_t flags, Mapi::IMAPITable** table) override;
    std::int32_t OpenMsgStore(Mapi::WindowParameter window, std::uint32_t entryIdSize, Mapi::ENTRYID* entryId,
                              const Mapi::Guid* interfaceId, std::uint32_t flags, Mapi::IMsgStore** store) override;
    std::int32_t OpenAddressBook(Mapi::WindowParameter window, const Mapi::Guid* interfaceId, std::uint32_t flags,
                                 Mapi::IAddrBook** book) override;
    /// There is nothing but the store to open.
    std::int32_t OpenEntry(std::uint32_t, Mapi::ENTRYID*, const Mapi::Guid*, std::uint32_t, std::uint32_t*,
                           Mapi::IUnknown**) override {
        return ResultNoSupport;
    }
    /// Holds the message, which must be one of this library, until its form is shown or the session ends.
    std::int32_t PrepareForm(const Mapi::Guid* interfaceId, Mapi::IMessage* message,
                             Mapi::MessageToken* token) override;
    /// Writes the draft and opens it in the user's mail client, without waiting for that. The token is used up.
    std::int32_t ShowForm(Mapi::WindowParameter window, Mapi::IMsgStore* store, Mapi::IMAPIFolder* folder,
                          const Mapi::Guid* interfaceId, Mapi::MessageToken token, Mapi::IMessage* sentMessage,
                          std::uint32_t flags, std::uint32_t messageStatus, std::uint32_t messageFlags,
                          std::uint32_t access, char* messageClass) override;

private:
    std::map<Mapi::MessageToken, Reference<MessageObject>> prepared;
    Mapi::MessageToken lastToken = 0;
};

} // namespace MailSystem
