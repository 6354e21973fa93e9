// The one message store of the Extended side, its two folders and the table that names it. Nothing is kept in them: a
// message lives as long as someone holds it.
#pragma once

#include "mailsystem/PropertyBag.h"
#include <vector>

namespace MailSystem {

/// The identifiers by which the store and its folders are opened.
enum class EEntry : std::uint8_t { Store = 1, Outbox, Inbox };
std::string EntryBytes(EEntry entry);
bool IsEntry(EEntry entry, std::uint32_t size, const Mapi::ENTRYID* id);

class StoresTable final : public Counted<Mapi::Slots::TableSlots<NoSupport>> {
public:
    StoresTable();
    std::int32_t SetColumns(Mapi::SPropTagArray* tags, std::uint32_t flags) override;
    /// The rows that are left, `most` at most.
    std::int32_t QueryRows(std::int32_t most, std::uint32_t flags, Mapi::SRowSet** rows) override;

private:
    PropertyBag store;
    std::vector<std::uint32_t> columns; // behind their count, as in SPropTagArray
    bool atEnd = false;
};

class Folder final : public Counted<Mapi::Slots::FolderSlots<NoSupport>> {
public:
    std::int32_t CreateMessage(const Mapi::Guid* interfaceId, std::uint32_t flags, Mapi::IMessage** message) override;
};

class Store final : public WithProperties<Mapi::Slots::StoreSlots<NoSupport>> {
public:
    Store();
    std::int32_t OpenEntry(std::uint32_t entryIdSize, Mapi::ENTRYID* entryId, const Mapi::Guid* interfaceId,
                           std::uint32_t flags, std::uint32_t* type, Mapi::IUnknown** object) override;
    std::int32_t GetReceiveFolder(Mapi::TextPointer messageClass, std::uint32_t flags, std::uint32_t* entryIdSize,
                                  Mapi::ENTRYID** entryId, Mapi::TextPointer* explicitClass) override;
};

} // namespace MailSystem
