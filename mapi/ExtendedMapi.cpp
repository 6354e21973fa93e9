#include "mapi/ExtendedMapi.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/sehexception.h"
#include "mapi/MapiBuffers.h"
#include "mapi/SimpleMapi.h"
#include <memory>

using namespace Tsx;
using namespace Mapi;

namespace {

constexpr std::int32_t Delivered = 0;
constexpr std::int32_t Cancelled = 1;
constexpr std::int32_t Failed = 2;

enum class EEnding { ShowForm, Submit };

/// One delivery, seen from outside the guard: what it owns survives a fault.
class CDelivery {
public:
    CDelivery(CMapiContext& deliveryContext, const CUnicodeString& messageSubject, const CUnicodeString& messageBody,
              const CArray<CNamedAddress>& messageRecipients, const CArray<CUnicodeString>& paths)
        : context(deliveryContext), subject(messageSubject), body(messageBody), recipients(messageRecipients),
          attachmentPaths(paths) {}

    void Run(EEnding ending) {
        const CFaultCleanup cleanup;
        GuardForeignCode([&] { RunGuarded(ending); });
    }

private:
    CMapiContext& context;
    const CUnicodeString& subject;
    const CUnicodeString& body;
    const CArray<CNamedAddress>& recipients;
    const CArray<CUnicodeString>& attachmentPaths;
    CHolder<CMapiMessage> message;
    CHolder<CMapiAddressList> addressList;

    void RunGuarded(EEnding ending) {
        context.Open();
        message = context.Outbox->CreateMessage();
        AddRecipients();
        message->SetSubject(subject);
        message->SetBody(body);
        for (const CUnicodeString& path : attachmentPaths) {
            message->AddAttachment(path);
        }
        if (ending == EEnding::ShowForm) {
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
            addressList->Add(recipient.Name, recipient.Address, RecipientClassTo);
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

bool IsExtendedMapiAvailable() {
    // The answer without a library is known before OLE, which takes longer to start than the rest of a run.
    if (!IsMapiInitializeThere()) {
        return false;
    }
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
        CDelivery(context, subject, body, recipients, attachmentPaths).Run(EEnding::ShowForm);
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
