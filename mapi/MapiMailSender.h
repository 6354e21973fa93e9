// The Simple route of delivery: one message to one recipient through MAPISendMail. CCorvaneApplication calls it for
// each recipient.
#pragma once

#include "foundation/inc/DllTools.h"
#include "foundation/inc/array.h"
#include "foundation/inc/namedaddress.h"
#include "mapi/SimpleMapi.h"

extern Tsx::CMessageName ERR_TOOLS_INVALID_MAPI_DLL;

/// For one thread. Nothing lasts from one send to the next: each loads the library, calls it and unloads it.
class CMapiMailSender : public Tsx::CDll {
public:
    CMapiMailSender() = default;
    ~CMapiMailSender() override;

    /// Unloads the library if it is loaded.
    void Free() override;

    /// Shows the message in the mail client's dialog and returns the result of MAPISendMail, also the user's cancel and
    /// every failure. Blocks while the dialog is open. Raises CLastErrorException when the library cannot be loaded,
    /// ERR_CANT_LOAD_DLL when it lacks the entry, and what filling the message raises; the library is unloaded in any
    /// case. AS DESIGNED: `parentHandle` and `flags` are not read; the dialog is always asked for.
    std::uint32_t Send(std::uintptr_t parentHandle, const Tsx::CUnicodeString& subject,
                       const Tsx::CArray<CNamedAddress>& attachments, const Tsx::CUnicodeString& body,
                       const Tsx::CUnicodeString& address, const Tsx::CUnicodeString& name,
                       const Tsx::CUnicodeString& originator, std::uint32_t flags);

private:
    Mapi::SendMailEntry* deliveryEntry = nullptr; // valid while the library is loaded
    std::uint64_t uiParameter = 0;                // always 0

    std::uint32_t Deliver(MapiMessage& message);
};
