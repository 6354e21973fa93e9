// The start and end of MAPI, and a user's session: wrappers for CMapiContext and the probe of ExtendedMapi.cpp.
#pragma once

#include "foundation/inc/object.h"
#include "mapi/MapiInterfaces.h"
#include "mapi/MapiStore.h"
#include "mapi/MapiWrapper.h"

namespace Mapi {

/// Every operation raises what CheckResult raises for a call of the MAPI library that fails.
class CMapiSession : public CMapiWrapper<IMAPISession> {
public:
    using CMapiWrapper::CMapiWrapper;

    /// See ChooseStoreRow. E_UNEXPECTED if there is no store, or none that will do.
    Tsx::CHolder<CMapiMessageStore> OpenDefaultMessageStore();
    Tsx::CHolder<CMapiAddressBook> OpenAddressBook();
    /// Asks spoolers to send what waits to be sent.
    void FlushOutgoingQueues();
};

/// OLE and MAPI are started while this lives. It must outlive everything that the MAPI library gave.
class CMapi : public virtual Tsx::IObject {
public:
    CMapi();
    ~CMapi() override;

    /// With the user's default profile, in a session of its own.
    Tsx::CHolder<CMapiSession> Logon();
};

} // namespace Mapi
