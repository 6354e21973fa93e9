#include "mapi/ExtendedMapi.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/sehexception.h"
#include "mapi/MapiBuffers.h"
#include <memory>

using namespace Tsx;
using namespace Mapi;

namespace {

constexpr std::int32_t Delivered = 0;
constexpr std::int32_t Cancelled = 1;
constexpr std::int32_t Failed = 2;

/// How a delivery ends. AS DESIGNED: nothing here asks for DE_Submit; the user always sees the message first.
enum TDeliveryEnding { DE_ShowForm, DE_Submit };

/// One delivery. It stands outside the guarded call, so that a fault in there leaves what it owns to its destructor.
struct CDelivery {
    CMapiContext& context;
    const CUnicodeString& subject;
    const CUnicodeString& body;
    const CArray<CNamedAddress>& recipients;
    const CArray<CUnicodeString>& attachmentPaths;
    CHolder<CMapiMessage> message{};
    CHolder<CMapiAddressList> addressList{};

    ~CDelivery() {
        ClearAfterFailure(addressList);
        ClearAfterFailure(message);
    }

    void Run(TDeliveryEnding ending) {
        const CFaultCleanup cleanup;
        GuardForeignCode([&] { RunGuarded(ending); });
    }

private:
    void RunGuarded(TDeliveryEnding ending) {
        context.Open();
        message = context.Outbox->CreateMessage();
        AddRecipients();
        message->SetSubject(subject);
        message->SetBody(body);
        for (const CUnicodeString& path : attachmentPaths) {
            message->AddAttachment(path);
        }
        if (ending == DE_ShowForm) {
            message->ShowForm(*context.Session, *context.Store, *context.Outbox);
        } else {
            message->Submit();
        }
        context.Session->FlushOutgoingQueues();
        message.Clear();
        context.Empty();
        addressList.Clear();
    }

    void AddRecipients() {
        addressList = CHolder<CMapiAddressList>(new CMapiAddressList);
        for (const CNamedAddress& recipient : recipients) {
            addressList->Add(recipient.Name, recipient.Address, RecipientTypeTo);
        }
        context.AddressBook->ResolveName(*addressList);
        message->ModifyRecipients(*addressList);
    }
};

} // namespace

void CMapiContext::Open() {
    if (!Library.IsEmpty()) {
        return;
    }
    Library = CHolder<CMapi>(new CMapi);
    Session = Library->Logon();
    Store = Session->OpenDefaultMessageStore();
    Outbox = Store->OpenOutbox();
    ReceiveFolder = Store->OpenReceiveFolder();
    AddressBook = Session->OpenAddressBook();
}

void CMapiContext::Empty() {
    AddressBook.Clear();
    ReceiveFolder.Clear();
    Outbox.Clear();
    Store.Clear();
    Session.Clear();
    Library.Clear();
}

CMapiContext::~CMapiContext() {
    ClearAfterFailure(AddressBook);
    ClearAfterFailure(ReceiveFolder);
    ClearAfterFailure(Outbox);
    ClearAfterFailure(Store);
    ClearAfterFailure(Session);
    ClearAfterFailure(Library);
}

bool IsExtendedMapiAvailable() {
    try {
        const CMapi library;
        CInterface<IMAPISession> session;
        session.Receive(
            [](IMAPISession** out) { return MAPILogonEx(0, nullptr, nullptr, LogonExtended | LogonNoMail, out); });
        return session.Get() != nullptr;
    } catch (CException* exception) {
        delete exception;
        return false;
    }
}

std::int32_t SendThroughExtendedMapi(CMapiContext& context, const CUnicodeString& subject, const CUnicodeString& body,
                                     const CArray<CNamedAddress>& recipients,
                                     const CArray<CUnicodeString>& attachmentPaths) {
    try {
        CDelivery{context, subject, body, recipients, attachmentPaths}.Run(DE_ShowForm);
        return Delivered;
    } catch (CCOMException* exception) {
        const std::unique_ptr<CCOMException> owner(exception);
        if (exception->hresult == ResultUserCancel) {
            return Cancelled;
        }
        DisplayException(exception);
        return Failed;
    }
}
