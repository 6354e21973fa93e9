#include "tests/mapilibrary/extended/objects.h"

#include "tests/mapilibrary/extended/unusedslots.h"
#include "tests/mapilibrary/transcript.h"
#include <cstring>

using namespace Mapi;

namespace {

constexpr std::int32_t InvalidEntryId = static_cast<std::int32_t>(0x80040107); // MAPI_E_INVALID_ENTRYID
constexpr std::uint32_t ObjectFolder = 3;                                      // MAPI_FOLDER
constexpr std::uint32_t ObjectStatus = 10;                                     // MAPI_STATUS
// Wider than 32 bits: a token that is cut on its way is not this one.
constexpr MessageToken FormToken = sizeof(MessageToken) == 8 ? 0x1234567890ABCDEF : 0x12345678;

// Identifiers are of odd lengths, and told apart by their bytes.
std::string RowId(std::size_t row) {
    return std::string(2 * row + 3, static_cast<char>(0x10 + row));
}

const std::string OutboxId(5, '\xA5');
const std::string ReceiveId(21, '\xB6');

bool Is(const std::string& id, std::uint32_t size, const void* bytes) {
    return size == id.size() && bytes && std::memcmp(bytes, id.data(), size) == 0;
}

// A copy in the memory that a property points to, behind the properties.
std::uint8_t* Append(void* place, const std::string& bytes) {
    return static_cast<std::uint8_t*>(std::memcpy(place, bytes.data(), bytes.size()));
}

SPropValue ColumnOf(const StoreRow& row, std::uint32_t tag, std::uint8_t* id, std::size_t idSize) {
    constexpr auto tempting = static_cast<std::int32_t>(0x80041006); // the flags of the best store among it
    SPropValue property{tag, 0, {}};
    if (tag == TagEntryId && row.hasId) {
        property.Value.bin = {static_cast<std::uint32_t>(idSize), id};
    } else if (tag == TagResourceType) {
        property.Value.ul = row.type;
    } else if (tag == TagResourceFlags && !row.flagsAreError) {
        property.Value.ul = row.flags;
    } else {
        property.ulPropTag = (tag & ~PropertyTypeMask) | PropertyTypeError;
        property.Value.err = tempting;
    }
    return property;
}

/// Counts references, and writes each change of the count down; the first reference is the caller's.
template <class TObject, class TBase>
class Counted : public TBase {
public:
    std::int32_t QueryInterface(const Guid&, void** object) override {
        *object = nullptr;
        return Unused::Noted::Call("IUnknown::QueryInterface");
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
    explicit Counted(std::string objectName) : name(std::move(objectName)) { GiveOut(this, name); }
    ~Counted() = default;

    const std::string name;

private:
    std::uint32_t references = 1;

    std::uint32_t Changed(const char* call, std::uint32_t count) {
        NameOf(this);
        BeginCall(name + "::" + call, {});
        references = count;
        return static_cast<std::uint32_t>(EndCall(static_cast<std::int32_t>(count)));
    }
};

/// The table of stores. It has the columns that it is told to have.
class StoresTable final : public Counted<StoresTable, Unused::MAPITable> {
public:
    StoresTable() : Counted("IMAPITable") {}
    std::int32_t SetColumns(SPropTagArray* tags, std::uint32_t flags) override {
        return Answer("IMAPITable::SetColumns", Joined(Shown(tags), Shown(flags)), [&](const std::string&) {
            columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
            return 0;
        });
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

class Spooler final : public Counted<Spooler, Unused::MAPIStatus> {
public:
    Spooler() : Counted("IMAPIStatus") {}
    std::int32_t FlushQueues(WindowParameter window, std::uint32_t targetSize, ENTRYID* target,
                             std::uint32_t flags) override {
        return Answer("IMAPIStatus::FlushQueues", Joined(Shown(window), Shown(targetSize), Shown(target), Shown(flags)),
                      [](const std::string&) { return 0; });
    }
};

class Attachment final : public Counted<Attachment, Unused::MAPIProp<IAttach>> {
public:
    Attachment() : Counted("IAttach") {}
    std::int32_t SaveChanges(std::uint32_t flags) override {
        return Answer("IAttach::SaveChanges", Shown(flags), [](const std::string&) { return 0; });
    }
};

/// GetProps knows the words "short" (one property in place of five), "errors" (each is an error) and "odd" (values that
/// show whether each goes to its own place in ShowForm, and a class beyond ASCII).
class Message final : public Counted<Message, Unused::Message> {
public:
    Message() : Counted("IMessage") {}
    std::int32_t GetProps(SPropTagArray* tags, std::uint32_t flags, std::uint32_t* count,
                          SPropValue** values) override {
        return Answer("IMessage::GetProps", Joined(Shown(tags), Shown(flags)), [&](const std::string& word) {
            static char16_t plainClass[] = u"IPM.Note";
            static char16_t oddClass[] = u"IPM.N\u00F6te";
            const bool odd = word == "odd";
            *values = AllocateBuffer<SPropValue>(tags->cValues * sizeof(SPropValue), "properties of the message");
            *count = word == "short" ? 1 : tags->cValues;
            for (std::uint32_t i = 0; i < *count; ++i) {
                SPropValue& property = (*values)[i] = {tags->aulPropTag[i], 0, {}};
                property.Value.ul = odd ? 0x100 + i : 0;
                if (word == "errors" || property.ulPropTag == TagEntryId) {
                    property.ulPropTag = (property.ulPropTag & ~PropertyTypeMask) | PropertyTypeError;
                    property.Value.err = static_cast<std::int32_t>(0x8004010F); // MAPI_E_NOT_FOUND
                } else if (property.ulPropTag == TagMessageClass) {
                    property.Value.lpszW = odd ? oddClass : plainClass;
                }
            }
            return ResultErrorsReturned;
        });
    }
    std::int32_t CreateAttach(const Guid* interfaceId, std::uint32_t flags, std::uint32_t* number,
                              IAttach** attachment) override {
        return Answer("IMessage::CreateAttach", Joined(Shown(interfaceId), Shown(flags)), [&](const std::string&) {
            *number = attachments++;
            *attachment = new Attachment;
            return 0;
        });
    }
    std::int32_t ModifyRecipients(std::uint32_t flags, ADRLIST* recipients) override {
        return Answer("IMessage::ModifyRecipients", Joined(Shown(flags), NameOf(recipients)),
                      [](const std::string&) { return 0; });
    }

private:
    std::uint32_t attachments = 0;
};

class Folder final : public Counted<Folder, Unused::MAPIFolder> {
public:
    explicit Folder(const char* folderName) : Counted(folderName) {}
    std::int32_t CreateMessage(const Guid* interfaceId, std::uint32_t flags, IMessage** message) override {
        return Answer(name + "::CreateMessage", Joined(Shown(interfaceId), Shown(flags)), [&](const std::string&) {
            *message = new Message;
            return 0;
        });
    }
};

/// GetReceiveFolder knows the word "root": a null identifier, which stands for the root folder.
class Store final : public Counted<Store, Unused::MsgStore> {
public:
    Store() : Counted("IMsgStore") {}
    std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId, std::uint32_t flags,
                           std::uint32_t* type, IUnknown** object) override {
        return Answer("IMsgStore::OpenEntry", Joined(Shown(entryIdSize, entryId), Shown(interfaceId), Shown(flags)),
                      [&](const std::string&) {
                          *type = ObjectFolder;
                          if (Is(OutboxId, entryIdSize, entryId)) {
                              *object = new Folder("Outbox");
                              return 0;
                          }
                          if (Is(ReceiveId, entryIdSize, entryId) || (entryIdSize == 0 && !entryId)) {
                              *object = new Folder("Inbox");
                              return 0;
                          }
                          return InvalidEntryId;
                      });
    }
    std::int32_t GetReceiveFolder(TextPointer messageClass, std::uint32_t flags, std::uint32_t* entryIdSize,
                                  ENTRYID** entryId, TextPointer* explicitClass) override {
        return Answer("IMsgStore::GetReceiveFolder", Joined(Shown(messageClass), Shown(flags), Shown(explicitClass)),
                      [&](const std::string& word) {
                          if (word != "root") {
                              *entryIdSize = static_cast<std::uint32_t>(ReceiveId.size());
                              *entryId = AllocateBuffer<ENTRYID>(ReceiveId.size(), "identifier");
                              Append(*entryId, ReceiveId);
                          }
                          return 0;
                      });
    }
    /// For HrGetOneProp; not written down.
    static SPropValue* OutboxProperty(const std::string& word) {
        auto* property = AllocateBuffer<SPropValue>(sizeof(SPropValue) + OutboxId.size(), "property");
        *property = {TagOutboxEntryId, 0, {}};
        if (word == "error") {
            property->ulPropTag = (TagOutboxEntryId & ~PropertyTypeMask) | PropertyTypeError;
        }
        property->Value.bin = {static_cast<std::uint32_t>(OutboxId.size()), Append(property + 1, OutboxId)};
        return property;
    }
};

/// ResolveName knows the word "replace": every second entry gets properties of the book's own.
class AddressBook final : public Counted<AddressBook, Unused::AddrBook> {
public:
    AddressBook() : Counted("IAddrBook") {}
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
        return Answer("IAddrBook::ResolveName",
                      Joined(Shown(window), Shown(flags), Shown(title), NameOf(list), '[' + entries + ']'),
                      [&](const std::string& word) {
                          for (std::uint32_t i = 0; word == "replace" && i < list->cEntries; i += 2) {
                              ADRENTRY& entry = list->aEntries[i];
                              FreeBuffer(entry.rgPropVals);
                              entry.rgPropVals = AllocateBuffer<SPropValue>(sizeof(SPropValue), "entry of the book");
                              entry.rgPropVals[0] = {TagRecipientType, 0, {}};
                              entry.cValues = 1;
                          }
                          return 0;
                      });
    }
};

class Session final : public Counted<Session, Unused::MAPISession> {
public:
    Session() : Counted("IMAPISession") {}
    std::int32_t GetMsgStoresTable(std::uint32_t flags, IMAPITable** table) override {
        return Answer("IMAPISession::GetMsgStoresTable", Shown(flags), [&](const std::string&) {
            *table = new StoresTable;
            return 0;
        });
    }
    std::int32_t OpenMsgStore(WindowParameter window, std::uint32_t entryIdSize, ENTRYID* entryId,
                              const Guid* interfaceId, std::uint32_t flags, IMsgStore** store) override {
        return Answer("IMAPISession::OpenMsgStore",
                      Joined(Shown(window), Shown(entryIdSize, entryId), Shown(interfaceId), Shown(flags)),
                      [&](const std::string&) {
                          *store = new Store;
                          return 0;
                      });
    }
    std::int32_t OpenAddressBook(WindowParameter window, const Guid* interfaceId, std::uint32_t flags,
                                 IAddrBook** book) override {
        return Answer("IMAPISession::OpenAddressBook", Joined(Shown(window), Shown(interfaceId), Shown(flags)),
                      [&](const std::string&) {
                          *book = new AddressBook;
                          return 0;
                      });
    }
    std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId, std::uint32_t flags,
                           std::uint32_t* type, IUnknown** object) override {
        return Answer("IMAPISession::OpenEntry", Joined(Shown(entryIdSize, entryId), Shown(interfaceId), Shown(flags)),
                      [&](const std::string&) {
                          *type = ObjectStatus;
                          *object = new Spooler;
                          return 0;
                      });
    }
    std::int32_t ShowForm(WindowParameter window, IMsgStore* store, IMAPIFolder* folder, const Guid* interfaceId,
                          MessageToken token, IMessage* sentMessage, std::uint32_t flags, std::uint32_t messageStatus,
                          std::uint32_t messageFlags, std::uint32_t access, char* messageClass) override {
        return Answer("IMAPISession::ShowForm",
                      Joined(Shown(window), NameOf(store), NameOf(folder), Shown(interfaceId),
                             token == FormToken ? "the token" : "another token", Shown(sentMessage), Shown(flags),
                             Shown(messageStatus), Shown(messageFlags), Shown(access), Quoted(messageClass)),
                      [](const std::string&) { return 0; });
    }
    std::int32_t PrepareForm(const Guid* interfaceId, IMessage* message, MessageToken* token) override {
        return Answer("IMAPISession::PrepareForm", Joined(Shown(interfaceId), NameOf(message)),
                      [&](const std::string&) {
                          *token = FormToken;
                          return 0;
                      });
    }
};

} // namespace

IMAPISession* NewSession() {
    return new Session;
}

SRowSet* AllRowsOf(IMAPITable* table) {
    return static_cast<StoresTable*>(table)->AllRows();
}

SPropValue* OutboxProperty(const std::string& word) {
    return Store::OutboxProperty(word);
}
