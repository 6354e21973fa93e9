// A message that is being composed in the mail client.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "mapi/MapiAddressList.h"
#include "mapi/MapiWrapper.h"

namespace Mapi {

class CMapiFolder;
class CMapiMessageStore;
class CMapiSession;

/// Every operation raises what CheckResult raises for a call of the mail system that fails.
class CMapiMessage : public CMapiWrapper<IMessage> {
public:
    using CMapiWrapper::CMapiWrapper;

    void SetSubject(const Tsx::CUnicodeString& text);
    void SetBody(const Tsx::CUnicodeString& text);
    void ModifyRecipients(const CMapiAddressList& recipients);
    /// Puts the whole file in, under its name without the folder. Raises what CAttachmentContent raises.
    void AddAttachment(const Tsx::CUnicodeString& path);
    /// Opens the message in the client's form and comes back when the user has done with it; the cancel is a failure
    /// of its own. A client that gives no properties at all is an internal error.
    void ShowForm(const CMapiSession& session, const CMapiMessageStore& store, const CMapiFolder& folder);
    /// Sends the message as it is.
    void Submit();
};

} // namespace Mapi
