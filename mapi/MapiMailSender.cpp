#include "mapi/MapiMailSender.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/scopeexit.h"
#include "mapi/SimpleMapiMessage.h"

using namespace Tsx;

CMessageName ERR_TOOLS_INVALID_MAPI_DLL(u"ERR_TOOLS_INVALID_MAPI_DLL");

CMapiMailSender::~CMapiMailSender() {
    GuardDestructor([this] { CMapiMailSender::Free(); });
}

void CMapiMailSender::Free() {
    CDll::Free();
    uiParameter = 0;
}

std::uint32_t CMapiMailSender::Send(std::uintptr_t /*parentHandle*/, const CUnicodeString& subject,
                                    const CArray<CNamedAddress>& attachments, const CUnicodeString& body,
                                    const CUnicodeString& address, const CUnicodeString& name,
                                    const CUnicodeString& originator, std::uint32_t /*flags*/) {
    CSimpleMapiMessage message(subject, attachments, body, address, name, originator);
    return Deliver(message.Record());
}

std::uint32_t CMapiMailSender::Deliver(MapiMessage& message) {
    uiParameter = 0;
    const CScopeExit unload([this] { GuardDestructor([this] { Free(); }); });
    if (!IsLoaded()) {
        Load(u"MAPI32.dll");
        deliveryEntry = reinterpret_cast<Mapi::SendMailEntry*>(GetProcedure("MAPISendMail"));
    }
    RequireEntry(deliveryEntry, ERR_TOOLS_INVALID_MAPI_DLL);
    return deliveryEntry(0, uiParameter, &message, Mapi::FlagLogonUi | Mapi::FlagDialog, 0);
}
