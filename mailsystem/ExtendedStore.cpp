#include "mailsystem/ExtendedStore.h"

#include "mailsystem/ExtendedMessage.h"
#include "mailsystem/Owners.h"
#include <cstring>

using namespace Mapi;

namespace MailSystem {

namespace {

constexpr std::uint32_t ObjectFolder = 3;          // MAPI_FOLDER
constexpr std::uint32_t ResourceTypeProvider = 33; // MAPI_STORE_PROVIDER

} // namespace

// The form of an entry identifier: four bytes of flags, none of them set, and here one byte for the entry.
std::string EntryBytes(EEntry entry) {
    return std::string(4, '\0') + static_cast<char>(entry);
}

bool IsEntry(EEntry entry, std::uint32_t size, const ENTRYID* id) {
    const std::string bytes = EntryBytes(entry);
    return id && size == bytes.size() && std::memcmp(id, bytes.data(), size) == 0;
}

StoresTable::StoresTable() {
    store.SetNumber(TagResourceFlags, StatusDefaultStore | StatusPrimaryIdentity | StatusPrimaryStore);
    store.SetNumber(TagResourceType, ResourceTypeProvider);
    store.SetBytes(TagEntryId, EntryBytes(EEntry::Store));
    columns = {3, TagResourceFlags, TagResourceType, TagEntryId};
}

std::int32_t StoresTable::SetColumns(SPropTagArray* tags, std::uint32_t) {
    return Guarded([&] {
        columns.assign(&tags->cValues, tags->aulPropTag + tags->cValues);
        return Platform::SOk;
    });
}

std::int32_t StoresTable::QueryRows(std::int32_t most, std::uint32_t, SRowSet** rows) {
    *rows = nullptr;
    if (most < 0) {
        return ResultNoSupport;
    }
    return Guarded([&] {
        std::unique_ptr<SRowSet, Releaser<&std::free>> set(AllocateBuffer<SRowSet>(sizeof(SRowSet)));
        *set = {0, {}};
        if (!atEnd && most > 0) {
            SPropValue* values = nullptr;
            static_cast<void>(store.Get(*reinterpret_cast<const SPropTagArray*>(columns.data()), &values));
            *set = {1, {{0, columns[0], values}}};
            atEnd = true;
        }
        *rows = set.release();
        return Platform::SOk;
    });
}

std::int32_t Folder::CreateMessage(const Guid*, std::uint32_t, IMessage** message) {
    return HandOut<MessageObject>(message);
}

Store::Store() {
    properties.SetBytes(TagOutboxEntryId, EntryBytes(EEntry::Outbox));
    properties.SetBytes(TagEntryId, EntryBytes(EEntry::Store));
}

std::int32_t Store::OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid*, std::uint32_t,
                              std::uint32_t* type, IUnknown** object) {
    *object = nullptr;
    if (!IsEntry(EEntry::Outbox, entryIdSize, entryId) && !IsEntry(EEntry::Inbox, entryIdSize, entryId)) {
        return ResultInvalidEntryId;
    }
    *type = ObjectFolder;
    return HandOut<Folder>(object);
}

std::int32_t Store::GetReceiveFolder(TextPointer, std::uint32_t, std::uint32_t* entryIdSize, ENTRYID** entryId,
                                     TextPointer* explicitClass) {
    *entryId = nullptr;
    if (explicitClass) {
        *explicitClass = nullptr;
    }
    return Guarded([&] {
        const std::string bytes = EntryBytes(EEntry::Inbox);
        *entryId = static_cast<ENTRYID*>(std::memcpy(AllocateBuffer<char>(bytes.size()), bytes.data(), bytes.size()));
        *entryIdSize = static_cast<std::uint32_t>(bytes.size());
        return Platform::SOk;
    });
}

} // namespace MailSystem
