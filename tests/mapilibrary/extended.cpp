// The Extended side of the recording MAPI library: its exported functions, and objects that do just enough for one
// delivery, each call written down. Folders, stores and messages have no content; what is put into them is in the
// transcript. The slots that the program never calls are there all the same: a call that goes astray fails.
#include "mailsystem/MapiUnusedSlots.h"
#include "platform/inc/faults.h"
#include "platform/inc/ole.h"
#include "tests/mapilibrary/ledger.h"
#include <cstdlib>
#include <cstring>

using namespace Mapi;
using Slots::Number;
using Slots::Result;

namespace {

constexpr MessageToken FormToken = 0x1234567890ABCDEF; // a token that is cut on its way is not this one
const std::string OutboxId(5, '\xA5');
const std::string ReceiveId(21, '\xB6');

struct Noted {
    static Result Call(const char* name) {
        return ::Call(std::string("unexpected ") + name, {}).End(static_cast<Result>(0x80004001)); // E_NOTIMPL
    }
};

// A copy in the memory that a property points to, behind the properties.
std::uint8_t* Append(void* place, const std::string& bytes) {
    return static_cast<std::uint8_t*>(std::memcpy(place, bytes.data(), bytes.size()));
}

SPropValue Error(Number tag, Number code) {
    SPropValue property{(tag & ~PropertyTypeMask) | PropertyTypeError, 0, {}};
    property.Value.err = static_cast<Result>(code);
    return property;
}

/// Counts references, and writes each change of the count down; the first reference is the caller's.
template <class TObject, class TBase>
class Counted : public TBase {
public:
    /// What the transcript calls it.
    void Name(const char* objectName) { GiveOut(this, name = objectName); }
    Result QueryInterface(const Guid&, void**) override { return Noted::Call("IUnknown::QueryInterface"); }
    Number AddRef() override { return Changed("AddRef", references + 1); }
    Number Release() override {
        const Number left = Changed("Release", references - 1);
        if (left == 0) {
            TakeBack(this);
            delete static_cast<TObject*>(this);
        }
        return left;
    }

protected:
    ~Counted() = default;

    std::string name;

private:
    Number references = 1;

    Number Changed(const char* call, Number count) {
        references = count;
        return static_cast<Number>(Call(name + "::" + call, {}).End(static_cast<Result>(count)));
    }
};

/// A call that gives a new object.
template <class TObject, class TInterface>
Result Give(TInterface** object, Call call, const char* name) {
    if (call.Performs()) {
        auto* made = new TObject;
        made->Name(name);
        *object = made;
    }
    return call.End();
}

/// The table of stores. CORVANE_MAPI_STORES lists its rows, separated by blanks, as "FLAGS" or "FLAGS/TYPE" in
/// hexadecimal digits, behind "noid:" where a row has no identifier. It has the columns that it is told to have.
class StoresTable final : public Counted<StoresTable, Slots::TableSlots<Noted>> {
public:
    Result SetColumns(SPropTagArray* tags, Number flags) override {
        Call call("IMAPITable::SetColumns", List(tags, flags));
        if (call.Performs()) {
            columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
        }
        return call.End();
    }
    /// For HrQueryAllRows; not written down.
    SRowSet* AllRows() const {
        const std::vector<std::string> rows = Words("CORVANE_MAPI_STORES", "2/21");
        auto* set = AllocateBuffer<SRowSet>(sizeof(SRowSet) + rows.size() * sizeof(SRow), "rows");
        set->cRows = 0;
        for (const std::string& row : rows) {
            // Identifiers are of odd lengths, and told apart by their bytes.
            const std::string id(2 * set->cRows + 3, static_cast<char>(0x10 + set->cRows));
            const std::size_t size = columns.size() * sizeof(SPropValue);
            SRow& out = set->aRow[set->cRows++] = {0, 0, AllocateBuffer<SPropValue>(size + id.size(), "row")};
            std::uint8_t* bytes = Append(reinterpret_cast<std::uint8_t*>(out.lpProps) + size, id);
            for (const Number tag : columns) {
                out.lpProps[out.cValues++] = ColumnOf(row, tag, {static_cast<Number>(id.size()), bytes});
            }
        }
        return set;
    }

private:
    std::vector<Number> columns;

    static SPropValue ColumnOf(const std::string& row, Number tag, const SBinary& id) {
        char* end = nullptr;
        const auto flags = static_cast<Number>(std::strtoul(row.c_str() + (row.find(':') + 1), &end, 16));
        SPropValue property{tag, 0, {}};
        if (tag == TagEntryId && !row.starts_with("noid:")) {
            property.Value.bin = id;
        } else if (tag == TagResourceType) {
            constexpr Number storeProvider = 33; // MAPI_STORE_PROVIDER
            property.Value.ul = *end == '/' ? static_cast<Number>(std::strtoul(end + 1, nullptr, 16)) : storeProvider;
        } else if (tag == TagResourceFlags) {
            property.Value.ul = flags;
        } else {
            return Error(tag, 0x80041006);
        }
        return property;
    }
};

struct Spooler final : Counted<Spooler, Slots::StatusSlots<Noted>> {
    Result FlushQueues(WindowParameter window, Number targetSize, ENTRYID* target, Number flags) override {
        return Call("IMAPIStatus::FlushQueues", List(window, targetSize, target, flags)).End();
    }
};

struct Attachment final : Counted<Attachment, Slots::PropSlots<IAttach, Noted>> {
    Result SaveChanges(Number flags) override { return Call("IAttach::SaveChanges", List(flags)).End(); }
};

/// Its properties show whether each goes to its own place in ShowForm; its class is beyond ASCII.
struct Message final : Counted<Message, Slots::MessageSlots<Noted>> {
    Result GetProps(SPropTagArray* tags, Number flags, Number* count, SPropValue** values) override {
        Call call("IMessage::GetProps", List(tags, flags));
        if (call.Performs()) {
            static char16_t messageClass[] = u"IPM.N\u00F6te";
            *values = AllocateBuffer<SPropValue>(tags->cValues * sizeof(SPropValue), "properties of the message");
            *count = tags->cValues;
            for (Number i = 0; i < *count; ++i) {
                SPropValue& property = (*values)[i] = {tags->aulPropTag[i], 0, {}};
                property.Value.ul = 0x100 + i;
                if (property.ulPropTag == TagEntryId) {
                    property = Error(property.ulPropTag, 0x8004010F); // MAPI_E_NOT_FOUND
                } else if (property.ulPropTag == TagMessageClass) {
                    property.Value.lpszW = messageClass;
                }
            }
        }
        return call.End(ResultErrorsReturned);
    }
    Result CreateAttach(const Guid* interfaceId, Number flags, Number*, IAttach** attachment) override {
        return Give<Attachment>(attachment, {"IMessage::CreateAttach", List(interfaceId, flags)}, "IAttach");
    }
    Result ModifyRecipients(Number flags, ADRLIST* recipients) override {
        return Call("IMessage::ModifyRecipients", List(flags, recipients)).End();
    }
};

struct Folder final : Counted<Folder, Slots::FolderSlots<Noted>> {
    Result CreateMessage(const Guid* interfaceId, Number flags, IMessage** message) override {
        return Give<Message>(message, {name + "::CreateMessage", List(interfaceId, flags)}, "IMessage");
    }
};

struct Store final : Counted<Store, Slots::StoreSlots<Noted>> {
    Result OpenEntry(Number size, ENTRYID* id, const Guid* interfaceId, Number flags, Number*,
                     IUnknown** object) override {
        const std::string bytes(reinterpret_cast<const char*>(id), id ? size : 0);
        Call call("IMsgStore::OpenEntry", List(EntryId{size, id}, interfaceId, flags));
        return Give<Folder>(object, call, bytes == OutboxId ? "Outbox" : "Inbox");
    }
    Result GetReceiveFolder(TextPointer messageClass, Number flags, Number* size, ENTRYID** id,
                            TextPointer* explicitClass) override {
        Call call("IMsgStore::GetReceiveFolder", List(messageClass, flags, explicitClass));
        if (call.Performs()) {
            *size = static_cast<Number>(ReceiveId.size());
            *id = AllocateBuffer<ENTRYID>(ReceiveId.size(), "identifier");
            Append(*id, ReceiveId);
        }
        return call.End();
    }
};

struct AddressBook final : Counted<AddressBook, Slots::AddressBookSlots<Noted>> {
    Result ResolveName(WindowParameter window, Number flags, TextPointer title, ADRLIST* list) override {
        std::string entries;
        for (Number i = 0; i < list->cEntries; ++i) {
            const ADRENTRY& entry = list->aEntries[i];
            entries +=
                (i > 0 ? ", {" : "{") + Shown(entry.ulReserved1) + ", " + Shown(static_cast<void*>(entry.rgPropVals));
            for (Number j = 0; j < entry.cValues; ++j) {
                entries += ", " + Shown(entry.rgPropVals[j]);
            }
            entries += '}';
        }
        return Call("IAddrBook::ResolveName", List(window, flags, title, list, '[' + entries + ']')).End();
    }
};

struct Session final : Counted<Session, Slots::SessionSlots<Noted>> {
    Result GetMsgStoresTable(Number flags, IMAPITable** table) override {
        return Give<StoresTable>(table, {"IMAPISession::GetMsgStoresTable", List(flags)}, "IMAPITable");
    }
    Result OpenMsgStore(WindowParameter window, Number size, ENTRYID* id, const Guid* interfaceId, Number flags,
                        IMsgStore** store) override {
        const std::string arguments = List(window, EntryId{size, id}, interfaceId, flags);
        return Give<Store>(store, {"IMAPISession::OpenMsgStore", arguments}, "IMsgStore");
    }
    Result OpenAddressBook(WindowParameter window, const Guid* interfaceId, Number flags, IAddrBook** book) override {
        const std::string arguments = List(window, interfaceId, flags);
        return Give<AddressBook>(book, {"IMAPISession::OpenAddressBook", arguments}, "IAddrBook");
    }
    Result OpenEntry(Number size, ENTRYID* id, const Guid* interfaceId, Number flags, Number*,
                     IUnknown** object) override {
        const std::string arguments = List(EntryId{size, id}, interfaceId, flags);
        return Give<Spooler>(object, {"IMAPISession::OpenEntry", arguments}, "IMAPIStatus");
    }
    Result ShowForm(WindowParameter window, IMsgStore* store, IMAPIFolder* folder, const Guid* interfaceId,
                    MessageToken token, IMessage* sent, Number flags, Number status, Number messageFlags, Number access,
                    char* messageClass) override {
        const std::string told = token == FormToken ? "the token" : "another token";
        return Call("IMAPISession::ShowForm", List(window, store, folder, interfaceId, told, sent, flags, status,
                                                   messageFlags, access, Quoted(messageClass)))
            .End();
    }
    Result PrepareForm(const Guid* interfaceId, IMessage* message, MessageToken* token) override {
        Call call("IMAPISession::PrepareForm", List(interfaceId, message));
        *token = call.Performs() ? FormToken : *token;
        return call.End();
    }
};

// On a system that has OLE: whether the program has started it before MAPI, and not ended it.
std::string OleState() {
    const Result result = Platform::OleInitialize(nullptr);
    Platform::OleUninitialize();
    return result == Platform::SFalse ? "OLE is started" : "OLE is not started";
}

// A set of records, each with properties of its own, and the set itself.
template <class TSet, class TRecord>
void FreeSet(const char* name, TSet* set, Number TSet::*count, const TRecord* records, SPropValue* TRecord::*values) {
    Call call(name, Shown(set));
    for (Number i = 0; set && i < set->*count; ++i) {
        FreeBuffer(records[i].*values);
    }
    FreeBuffer(set);
    call.EndWithoutResult();
}

} // namespace

extern "C" {

PLATFORM_EXPORT Result MAPIInitialize(void* parameters) {
    Platform::DisarmFaults(); // the program is what is tested
    return Call("MAPIInitialize", List(parameters, OleState())).End();
}

PLATFORM_EXPORT void MAPIUninitialize() {
    Call("MAPIUninitialize", OleState()).EndWithoutResult();
}

PLATFORM_EXPORT Result MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password, Number flags,
                                   IMAPISession** session) {
    return Give<Session>(session, {"MAPILogonEx", List(window, profile, password, flags)}, "IMAPISession");
}

PLATFORM_EXPORT Result MAPIAllocateBuffer(Number size, void** buffer) {
    Call call("MAPIAllocateBuffer", List(size));
    if (call.Performs()) {
        *buffer = AllocateBuffer<void>(size, "buffer of " + std::to_string(size));
    }
    return call.End();
}

PLATFORM_EXPORT Number MAPIFreeBuffer(void* buffer) {
    Call call("MAPIFreeBuffer", Shown(buffer));
    FreeBuffer(buffer);
    call.EndWithoutResult();
    return 0;
}

PLATFORM_EXPORT Result HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction,
                                      SSortOrderSet* order, Result most, SRowSet** rows) {
    Call call("HrQueryAllRows", List(table, static_cast<void*>(tags), restriction, order, static_cast<Number>(most)));
    if (call.Performs()) {
        *rows = static_cast<StoresTable*>(table)->AllRows();
    }
    return call.End();
}

PLATFORM_EXPORT void FreeProws(SRowSet* rows) {
    FreeSet("FreeProws", rows, &SRowSet::cRows, rows ? rows->aRow : nullptr, &SRow::lpProps);
}

PLATFORM_EXPORT void FreePadrlist(ADRLIST* list) {
    FreeSet("FreePadrlist", list, &ADRLIST::cEntries, list ? list->aEntries : nullptr, &ADRENTRY::rgPropVals);
}

PLATFORM_EXPORT Result HrGetOneProp(IMAPIProp* object, Number tag, SPropValue** property) {
    Call call("HrGetOneProp", List(object, tag));
    if (call.Performs()) {
        *property = AllocateBuffer<SPropValue>(sizeof(SPropValue) + OutboxId.size(), "property");
        **property = {TagOutboxEntryId, 0, {}};
        (*property)->Value.bin = {static_cast<Number>(OutboxId.size()), Append(*property + 1, OutboxId)};
    }
    return call.End();
}

PLATFORM_EXPORT Result HrSetOneProp(IMAPIProp* object, SPropValue* property) {
    return Call("HrSetOneProp", List(object, *property)).End();
}

} // extern "C"
