// A message that is being composed: the wrapper that the delivery of ExtendedMapi.cpp works on.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "mapi/MapiAddressList.h"
#include "mapi/MapiWrapper.h"

namespace Mapi {

class CMapiFolder;
class CMapiMessageStore;
class CMapiSession;

/// Every operation raises what CheckResult raises for a call of the MAPI library that fails.
class CMapiMessage : public CMapiWrapper<IMessage> {
public:
    using CMapiWrapper::CMapiWrapper;

    void SetSubject(const Tsx::CUnicodeString& text);
    void SetBody(const Tsx::CUnicodeString& text);
    void ModifyRecipients(const CMapiAddressList& recipients);
    /// Puts the whole file in, under its name without the folder. Raises what CAttachmentContent raises.
    void AddAttachment(const Tsx::CUnicodeString& path);
    /// Opens the message in the mail client's form and returns when the form is closed. The user's cancel raises
    /// CCOMException with MAPI_E_USER_CANCEL. A message without any properties is an internal error.
    void ShowForm(const CMapiSession& session, const CMapiMessageStore& store, const CMapiFolder& folder);
    /// Sends the message without a form.
    void Submit();
};

} // namespace Mapi
