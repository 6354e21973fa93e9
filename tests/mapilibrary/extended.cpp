// The Extended side of the recording MAPI library: its exported functions, and objects that do just enough for one
// delivery, each call written down. Folders, stores and messages have no content; what is put into them is in the
// transcript. The slots that the program never calls are there all the same: a call that goes astray fails.
#include "mailsystem/MapiUnusedSlots.h"
#include "platform/inc/faults.h"
#include "platform/inc/ole.h"
#include "tests/mapilibrary/ledger.h"
#include <cstring>

using namespace Mapi;

namespace {

constexpr auto InvalidEntryId = static_cast<std::int32_t>(0x80040107); // MAPI_E_INVALID_ENTRYID
constexpr std::uint32_t ObjectFolder = 3;                              // MAPI_FOLDER
constexpr std::uint32_t ObjectStatus = 10;                             // MAPI_STATUS
// Wider than 32 bits: a token that is cut on its way is not this one.
constexpr MessageToken FormToken = sizeof(MessageToken) == 8 ? 0x1234567890ABCDEF : 0x12345678;

struct Noted {
    static std::int32_t Call(const char* name) {
        return ::Call(std::string("unexpected ") + name, {}).End(static_cast<std::int32_t>(0x80004001)); // E_NOTIMPL
    }
};

// Identifiers are of odd lengths, and told apart by their bytes.
std::string RowId(std::size_t row) {
    return std::string(2 * row + 3, static_cast<char>(0x10 + row));
}

const std::string OutboxId(5, '\xA5');
const std::string ReceiveId(21, '\xB6');

// A copy in the memory that a property points to, behind the properties.
std::uint8_t* Append(void* place, const std::string& bytes) {
    return static_cast<std::uint8_t*>(std::memcpy(place, bytes.data(), bytes.size()));
}

SPropValue Error(std::uint32_t tag, std::uint32_t code) {
    SPropValue property{(tag & ~PropertyTypeMask) | PropertyTypeError, 0, {}};
    property.Value.err = static_cast<std::int32_t>(code);
    return property;
}

SPropValue ColumnOf(const StoreRow& row, std::uint32_t tag, std::uint8_t* id, std::size_t idSize) {
    SPropValue property{tag, 0, {}};
    if (tag == TagEntryId && row.hasId) {
        property.Value.bin = {static_cast<std::uint32_t>(idSize), id};
    } else if (tag == TagResourceType) {
        property.Value.ul = row.type;
    } else if (tag == TagResourceFlags && !row.flagsAreError) {
        property.Value.ul = row.flags;
    } else {
        return Error(tag, 0x80041006); // the flags of the best store among it
    }
    return property;
}

/// Counts references, and writes each change of the count down; the first reference is the caller's.
template <class TObject, class TBase>
class Counted : public TBase {
public:
    explicit Counted(std::string objectName) : name(std::move(objectName)) { GiveOut(this, name); }
    std::int32_t QueryInterface(const Guid&, void** object) override {
        *object = nullptr;
        return Noted::Call("IUnknown::QueryInterface");
    }
    std::uint32_t AddRef() override { return Changed("AddRef", references + 1); }
    std::uint32_t Release() override {
        const std::uint32_t left = Changed("Release", references - 1);
        if (left == 0) {
            TakeBack(this);
            delete static_cast<TObject*>(this);
        }
        return left;
    }

protected:
    ~Counted() = default;

    const std::string name;

private:
    std::uint32_t references = 1;

    std::uint32_t Changed(const char* call, std::uint32_t count) {
        NameOf(this);
        Call line(name + "::" + call, {});
        references = count;
        return static_cast<std::uint32_t>(line.End(static_cast<std::int32_t>(count)));
    }
};

/// A call that gives a new object.
template <class TObject, class TInterface>
std::int32_t Give(TInterface** object, Call call, const char* name) {
    if (call.Performs()) {
        *object = new TObject(name);
    }
    return call.End();
}

/// The table of stores. It has the columns that it is told to have.
class StoresTable final : public Counted<StoresTable, Slots::TableSlots<Noted>> {
public:
    using Counted::Counted;
    std::int32_t SetColumns(SPropTagArray* tags, std::uint32_t flags) override {
        Call call("IMAPITable::SetColumns", List(tags, flags));
        if (call.Performs()) {
            columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
        }
        return call.End();
    }
    /// For HrQueryAllRows; not written down.
    SRowSet* AllRows() const {
        const std::vector<StoreRow> rows = StoreRows();
        auto* set = AllocateBuffer<SRowSet>(sizeof(SRowSet) + rows.size() * sizeof(SRow), "rows");
        set->cRows = 0;
        for (const StoreRow& row : rows) {
            const std::string id = RowId(set->cRows);
            SRow& out = set->aRow[set->cRows++];
            out = {0, 0, nullptr};
            if (row.hasProperties) {
                const std::size_t size = columns.size() * sizeof(SPropValue);
                out.lpProps = AllocateBuffer<SPropValue>(size + id.size(), "properties of a row");
                std::uint8_t* bytes = Append(reinterpret_cast<std::uint8_t*>(out.lpProps) + size, id);
                for (const std::uint32_t tag : columns) {
                    out.lpProps[out.cValues++] = ColumnOf(row, tag, bytes, id.size());
                }
            }
        }
        return set;
    }

private:
    std::vector<std::uint32_t> columns;
};

struct Spooler final : Counted<Spooler, Slots::StatusSlots<Noted>> {
    using Counted::Counted;
    std::int32_t FlushQueues(WindowParameter window, std::uint32_t targetSize, ENTRYID* target,
                             std::uint32_t flags) override {
        return Call("IMAPIStatus::FlushQueues", List(window, targetSize, static_cast<void*>(target), flags)).End();
    }
};

struct Attachment final : Counted<Attachment, Slots::PropSlots<IAttach, Noted>> {
    using Counted::Counted;
    std::int32_t SaveChanges(std::uint32_t flags) override { return Call("IAttach::SaveChanges", List(flags)).End(); }
};

/// GetProps knows the words "short" (one property in place of five), "errors" (each is an error) and "odd" (values that
/// show whether each goes to its own place in ShowForm, and a class beyond ASCII).
class Message final : public Counted<Message, Slots::MessageSlots<Noted>> {
public:
    using Counted::Counted;
    std::int32_t GetProps(SPropTagArray* tags, std::uint32_t flags, std::uint32_t* count,
                          SPropValue** values) override {
        Call call("IMessage::GetProps", List(tags, flags));
        if (call.Performs()) {
            static char16_t plainClass[] = u"IPM.Note";
            static char16_t oddClass[] = u"IPM.N\u00F6te";
            *values = AllocateBuffer<SPropValue>(tags->cValues * sizeof(SPropValue), "properties of the message");
            *count = call.Is("short") ? 1 : tags->cValues;
            for (std::uint32_t i = 0; i < *count; ++i) {
                SPropValue& property = (*values)[i] = {tags->aulPropTag[i], 0, {}};
                property.Value.ul = call.Is("odd") ? 0x100 + i : 0;
                if (call.Is("errors") || property.ulPropTag == TagEntryId) {
                    property = Error(property.ulPropTag, 0x8004010F); // MAPI_E_NOT_FOUND
                } else if (property.ulPropTag == TagMessageClass) {
                    property.Value.lpszW = call.Is("odd") ? oddClass : plainClass;
                }
            }
        }
        return call.End(ResultErrorsReturned);
    }
    std::int32_t CreateAttach(const Guid* interfaceId, std::uint32_t flags, std::uint32_t* number,
                              IAttach** attachment) override {
        *number = attachments++;
        return Give<Attachment>(attachment, {"IMessage::CreateAttach", List(interfaceId, flags)}, "IAttach");
    }
    std::int32_t ModifyRecipients(std::uint32_t flags, ADRLIST* recipients) override {
        return Call("IMessage::ModifyRecipients", List(flags, recipients)).End();
    }

private:
    std::uint32_t attachments = 0;
};

struct Folder final : Counted<Folder, Slots::FolderSlots<Noted>> {
    using Counted::Counted;
    std::int32_t CreateMessage(const Guid* interfaceId, std::uint32_t flags, IMessage** message) override {
        return Give<Message>(message, {name + "::CreateMessage", List(interfaceId, flags)}, "IMessage");
    }
};

/// GetReceiveFolder knows the word "root": a null identifier, which stands for the root folder.
struct Store final : Counted<Store, Slots::StoreSlots<Noted>> {
    using Counted::Counted;
    std::int32_t OpenEntry(std::uint32_t idSize, ENTRYID* id, const Guid* interfaceId, std::uint32_t flags,
                           std::uint32_t* type, IUnknown** object) override {
        *type = ObjectFolder;
        const std::string bytes(reinterpret_cast<const char*>(id), id ? idSize : 0);
        Call call("IMsgStore::OpenEntry", List(EntryId{idSize, id}, interfaceId, flags));
        if (call.Performs() && bytes != OutboxId && bytes != ReceiveId && !bytes.empty()) {
            return call.End(InvalidEntryId);
        }
        return Give<Folder>(object, call, bytes == OutboxId ? "Outbox" : "Inbox");
    }
    std::int32_t GetReceiveFolder(TextPointer messageClass, std::uint32_t flags, std::uint32_t* idSize, ENTRYID** id,
                                  TextPointer* explicitClass) override {
        Call call("IMsgStore::GetReceiveFolder", List(messageClass, flags, static_cast<void*>(explicitClass)));
        if (call.Performs() && !call.Is("root")) {
            *idSize = static_cast<std::uint32_t>(ReceiveId.size());
            *id = AllocateBuffer<ENTRYID>(ReceiveId.size(), "identifier");
            Append(*id, ReceiveId);
        }
        return call.End();
    }
};

/// ResolveName knows the word "replace": every second entry gets properties of the book's own.
struct AddressBook final : Counted<AddressBook, Slots::AddressBookSlots<Noted>> {
    using Counted::Counted;
    std::int32_t ResolveName(WindowParameter window, std::uint32_t flags, TextPointer title, ADRLIST* list) override {
        std::string entries;
        for (std::uint32_t i = 0; i < list->cEntries; ++i) {
            const ADRENTRY& entry = list->aEntries[i];
            entries += (i > 0 ? ", {" : "{") + Shown(entry.ulReserved1) + ", " + NameOf(entry.rgPropVals);
            for (std::uint32_t j = 0; j < entry.cValues; ++j) {
                entries += ", " + Shown(entry.rgPropVals[j]);
            }
            entries += '}';
        }
        Call call("IAddrBook::ResolveName", List(window, flags, title, list, '[' + entries + ']'));
        for (std::uint32_t i = 0; call.Is("replace") && i < list->cEntries; i += 2) {
            ADRENTRY& entry = list->aEntries[i];
            FreeBuffer(entry.rgPropVals);
            entry.rgPropVals = AllocateBuffer<SPropValue>(sizeof(SPropValue), "entry of the book");
            entry.rgPropVals[0] = {TagRecipientType, 0, {}};
            entry.cValues = 1;
        }
        return call.End();
    }
};

struct Session final : Counted<Session, Slots::SessionSlots<Noted>> {
    using Counted::Counted;
    std::int32_t GetMsgStoresTable(std::uint32_t flags, IMAPITable** table) override {
        return Give<StoresTable>(table, {"IMAPISession::GetMsgStoresTable", List(flags)}, "IMAPITable");
    }
    std::int32_t OpenMsgStore(WindowParameter window, std::uint32_t idSize, ENTRYID* id, const Guid* interfaceId,
                              std::uint32_t flags, IMsgStore** store) override {
        const std::string arguments = List(window, EntryId{idSize, id}, interfaceId, flags);
        return Give<Store>(store, {"IMAPISession::OpenMsgStore", arguments}, "IMsgStore");
    }
    std::int32_t OpenAddressBook(WindowParameter window, const Guid* interfaceId, std::uint32_t flags,
                                 IAddrBook** book) override {
        const std::string arguments = List(window, interfaceId, flags);
        return Give<AddressBook>(book, {"IMAPISession::OpenAddressBook", arguments}, "IAddrBook");
    }
    std::int32_t OpenEntry(std::uint32_t idSize, ENTRYID* id, const Guid* interfaceId, std::uint32_t flags,
                           std::uint32_t* type, IUnknown** object) override {
        *type = ObjectStatus;
        const std::string arguments = List(EntryId{idSize, id}, interfaceId, flags);
        return Give<Spooler>(object, {"IMAPISession::OpenEntry", arguments}, "IMAPIStatus");
    }
    std::int32_t ShowForm(WindowParameter window, IMsgStore* store, IMAPIFolder* folder, const Guid* interfaceId,
                          MessageToken token, IMessage* sentMessage, std::uint32_t flags, std::uint32_t messageStatus,
                          std::uint32_t messageFlags, std::uint32_t access, char* messageClass) override {
        const std::string told = token == FormToken ? "the token" : "another token";
        return Call("IMAPISession::ShowForm", List(window, store, folder, interfaceId, told, sentMessage, flags,
                                                   messageStatus, messageFlags, access, Quoted(messageClass)))
            .End();
    }
    std::int32_t PrepareForm(const Guid* interfaceId, IMessage* message, MessageToken* token) override {
        Call call("IMAPISession::PrepareForm", List(interfaceId, message));
        *token = call.Performs() ? FormToken : *token;
        return call.End();
    }
};

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
    return Call("MAPIInitialize", List(parameters, OleState())).End();
}

PLATFORM_EXPORT void MAPIUninitialize() {
    Call("MAPIUninitialize", OleState()).EndWithoutResult();
}

PLATFORM_EXPORT std::int32_t MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password,
                                         std::uint32_t flags, IMAPISession** session) {
    return Give<Session>(session, {"MAPILogonEx", List(window, profile, password, flags)}, "IMAPISession");
}

PLATFORM_EXPORT std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer) {
    Call call("MAPIAllocateBuffer", List(size));
    if (call.Performs()) {
        *buffer = AllocateBuffer<void>(size, "buffer of " + Decimal(size));
    }
    return call.End();
}

PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void* buffer) {
    Call call("MAPIFreeBuffer", NameOf(buffer));
    FreeBuffer(buffer);
    call.EndWithoutResult();
    return 0;
}

PLATFORM_EXPORT std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction,
                                            SSortOrderSet* order, std::int32_t most, SRowSet** rows) {
    Call call("HrQueryAllRows", List(table, static_cast<void*>(tags), static_cast<void*>(restriction),
                                     static_cast<void*>(order), static_cast<std::uint32_t>(most)));
    if (call.Performs()) {
        *rows = static_cast<StoresTable*>(table)->AllRows();
    }
    return call.End();
}

PLATFORM_EXPORT void FreeProws(SRowSet* rows) {
    Call call("FreeProws", NameOf(rows));
    for (std::uint32_t i = 0; rows && i < rows->cRows; ++i) {
        FreeBuffer(rows->aRow[i].lpProps);
    }
    FreeBuffer(rows);
    call.EndWithoutResult();
}

PLATFORM_EXPORT void FreePadrlist(ADRLIST* list) {
    Call call("FreePadrlist", NameOf(list));
    for (std::uint32_t i = 0; list && i < list->cEntries; ++i) {
        FreeBuffer(list->aEntries[i].rgPropVals);
    }
    FreeBuffer(list);
    call.EndWithoutResult();
}

PLATFORM_EXPORT std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property) {
    Call call("HrGetOneProp", List(object, tag));
    if (call.Performs()) {
        *property = AllocateBuffer<SPropValue>(sizeof(SPropValue) + OutboxId.size(), "property");
        **property = call.Is("error") ? Error(TagOutboxEntryId, 0) : SPropValue{TagOutboxEntryId, 0, {}};
        (*property)->Value.bin = {static_cast<std::uint32_t>(OutboxId.size()), Append(*property + 1, OutboxId)};
    }
    return call.End();
}

PLATFORM_EXPORT std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    return Call("HrSetOneProp", List(object, *property)).End();
}

// For tests that live in the same process: how much is given out at the moment.
PLATFORM_EXPORT std::uint32_t CorvaneThingsOut() {
    return ThingsOut();
}

} // extern "C"
