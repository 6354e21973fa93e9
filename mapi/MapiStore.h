// The store that a message is delivered from, its folders, and the address book: wrappers for CMapiContext.
#pragma once

#include "foundation/inc/object.h"
#include "mapi/MapiMessage.h"
#include "mapi/MapiWrapper.h"

namespace Mapi {

/// Every operation raises what CheckResult raises for a call of the MAPI library that fails.
class CMapiFolder : public CMapiWrapper<IMAPIFolder> {
public:
    using CMapiWrapper::CMapiWrapper;

    /// An empty message that goes away once it is sent.
    Tsx::CHolder<CMapiMessage> CreateMessage();
};

class CMapiMessageStore : public CMapiWrapper<IMsgStore> {
public:
    using CMapiWrapper::CMapiWrapper;

    Tsx::CHolder<CMapiFolder> OpenReceiveFolder();
    /// E_UNEXPECTED if the store reports success and names no outbox.
    Tsx::CHolder<CMapiFolder> OpenOutbox();
};

class CMapiAddressBook : public CMapiWrapper<IAddrBook> {
public:
    using CMapiWrapper::CMapiWrapper;

    /// Resolves in place and without a dialog: an unknown or ambiguous name is a failure.
    void ResolveName(const CMapiAddressList& recipients);
};

} // namespace Mapi
