// The objects of the Extended side: just enough of a mail client for one delivery, each call written down. Folders,
// stores and messages have no content; what is put into them is in the transcript.
#pragma once

#include "tests/mailclient/extended/unusedslots.h"

/// Counts references, and writes each change of the count down; the first reference is the caller's.
template <class TBase>
class Counted : public TBase {
public:
    std::int32_t QueryInterface(const Mapi::Guid&, void** object) override {
        *object = nullptr;
        return Unused::Noted::Call("IUnknown::QueryInterface");
    }
    std::uint32_t AddRef() override { return Changed("AddRef", references + 1); }
    std::uint32_t Release() override {
        const std::uint32_t left = Changed("Release", references - 1);
        if (left == 0) {
            TakeBack(this);
            Delete();
        }
        return left;
    }

protected:
    explicit Counted(std::string objectName) : name(std::move(objectName)) { GiveOut(this, name); }
    ~Counted() = default;
    virtual void Delete() = 0;

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
class StoresTable final : public Counted<Unused::MAPITable> {
public:
    StoresTable() : Counted("IMAPITable") {}
    std::int32_t SetColumns(Mapi::SPropTagArray* tags, std::uint32_t flags) override;
    /// For HrQueryAllRows; not written down.
    Mapi::SRowSet* AllRows() const;

private:
    std::vector<std::uint32_t> columns;
    void Delete() override { delete this; }
};

class Spooler final : public Counted<Unused::MAPIStatus> {
public:
    Spooler() : Counted("IMAPIStatus") {}
    std::int32_t FlushQueues(Mapi::WindowParameter window, std::uint32_t targetSize, Mapi::ENTRYID* target,
                             std::uint32_t flags) override;

private:
    void Delete() override { delete this; }
};

class Attachment final : public Counted<Unused::MAPIProp<Mapi::IAttach>> {
public:
    Attachment() : Counted("IAttach") {}
    std::int32_t SaveChanges(std::uint32_t flags) override;

private:
    void Delete() override { delete this; }
};

/// GetProps knows the words "short" (one property in place of five), "errors" (each is an error) and "odd" (values that
/// show whether each goes to its own place in ShowForm, and a class beyond ASCII).
class Message final : public Counted<Unused::Message> {
public:
    Message() : Counted("IMessage") {}
    std::int32_t GetProps(Mapi::SPropTagArray* tags, std::uint32_t flags, std::uint32_t* count,
                          Mapi::SPropValue** values) override;
    std::int32_t CreateAttach(const Mapi::Guid* interfaceId, std::uint32_t flags, std::uint32_t* number,
                              Mapi::IAttach** attachment) override;
    std::int32_t ModifyRecipients(std::uint32_t flags, Mapi::ADRLIST* recipients) override;

private:
    std::uint32_t attachments = 0;
    void Delete() override { delete this; }
};

class Folder final : public Counted<Unused::MAPIFolder> {
public:
    explicit Folder(const char* folderName) : Counted(folderName) {}
    std::int32_t CreateMessage(const Mapi::Guid* interfaceId, std::uint32_t flags, Mapi::IMessage** message) override;

private:
    void Delete() override { delete this; }
};

/// GetReceiveFolder knows the word "root": a null identifier, which stands for the root folder.
class Store final : public Counted<Unused::MsgStore> {
public:
    Store() : Counted("IMsgStore") {}
    std::int32_t OpenEntry(std::uint32_t entryIdSize, Mapi::ENTRYID* entryId, const Mapi::Guid* interfaceId,
                           std::uint32_t flags, std::uint32_t* type, Mapi::IUnknown** object) override;
    std::int32_t GetReceiveFolder(Mapi::TextPointer messageClass, std::uint32_t flags, std::uint32_t* entryIdSize,
                                  Mapi::ENTRYID** entryId, Mapi::TextPointer* explicitClass) override;
    /// For HrGetOneProp; not written down.
    static Mapi::SPropValue* OutboxProperty(const std::string& word);

private:
    void Delete() override { delete this; }
};

/// ResolveName knows the word "replace": every second entry gets properties of the book's own.
class AddressBook final : public Counted<Unused::AddrBook> {
public:
    AddressBook() : Counted("IAddrBook") {}
    std::int32_t ResolveName(Mapi::WindowParameter window, std::uint32_t flags, Mapi::TextPointer title,
                             Mapi::ADRLIST* list) override;

private:
    void Delete() override { delete this; }
};

class Session final : public Counted<Unused::MAPISession> {
public:
    Session() : Counted("IMAPISession") {}
    std::int32_t GetMsgStoresTable(std::uint32_t flags, Mapi::IMAPITable** table) override;
    std::int32_t OpenMsgStore(Mapi::WindowParameter window, std::uint32_t entryIdSize, Mapi::ENTRYID* entryId,
                              const Mapi::Guid* interfaceId, std::uint32_t flags, Mapi::IMsgStore** store) override;
    std::int32_t OpenAddressBook(Mapi::WindowParameter window, const Mapi::Guid* interfaceId, std::uint32_t flags,
                                 Mapi::IAddrBook** book) override;
    std::int32_t OpenEntry(std::uint32_t entryIdSize, Mapi::ENTRYID* entryId, const Mapi::Guid* interfaceId,
                           std::uint32_t flags, std::uint32_t* type, Mapi::IUnknown** object) override;
    std::int32_t ShowForm(Mapi::WindowParameter window, Mapi::IMsgStore* store, Mapi::IMAPIFolder* folder,
                          const Mapi::Guid* interfaceId, Mapi::MessageToken token, Mapi::IMessage* sentMessage,
                          std::uint32_t flags, std::uint32_t messageStatus, std::uint32_t messageFlags,
                          std::uint32_t access, char* messageClass) override;
    std::int32_t PrepareForm(const Mapi::Guid* interfaceId, Mapi::IMessage* message,
                             Mapi::MessageToken* token) override;

private:
    void Delete() override { delete this; }
};
