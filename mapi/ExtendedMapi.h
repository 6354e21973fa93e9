// The Extended route of delivery: the probe that selects it, and the sending of one message to all recipients.
// CCorvaneApplication::Run calls both.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/namedaddress.h"
#include "mapi/MapiSession.h"

/// The objects of one delivery, filled and emptied in a fixed order. For the main thread.
class CMapiContext {
public:
    CMapiContext() = default;
    /// The same as Empty, each step in a guard of its own: what is left to be released then is so after a failure.
    ~CMapiContext();
    CMapiContext(const CMapiContext&) = delete;
    CMapiContext& operator=(const CMapiContext&) = delete;

    /// Starts MAPI, logs on and opens what a delivery needs, in the order of the fields. Does nothing if Library is
    /// filled. After a failure, which is raised, the fields up to there stay filled.
    void Open();
    /// Releases everything in the reverse order, so that the end of MAPI comes last.
    void Empty();

    Tsx::CHolder<Mapi::CMapi> Library;
    Tsx::CHolder<Mapi::CMapiSession> Session;
    Tsx::CHolder<Mapi::CMapiMessageStore> Store; // the default one
    Tsx::CHolder<Mapi::CMapiFolder> Outbox;
    Tsx::CHolder<Mapi::CMapiFolder> ReceiveFolder; // AS DESIGNED: opened, but not used
    Tsx::CHolder<Mapi::CMapiAddressBook> AddressBook;
};

/// Whether a logon without any user interface succeeds. Starts and ends OLE and MAPI. A missing MAPI library and a
/// refused logon both give false; nothing is shown or raised.
bool IsExtendedMapiAvailable();

/// Composes one message to all recipients in the outbox and opens it in the mail client's form. Blocks while the form
/// is open.
///
///   0    the user has seen the form
///   1    the user cancelled: nothing is shown
///   2    the MAPI library failed otherwise, and its failure was shown
///
/// Any other failure is raised: a file that cannot be read, exhausted memory, CSehException for a fault in the MAPI
/// library's code. The context is empty after 0; in all other cases the caller empties it.
std::int32_t SendThroughExtendedMapi(CMapiContext& context, const Tsx::CUnicodeString& subject,
                                     const Tsx::CUnicodeString& body, const Tsx::CArray<CNamedAddress>& recipients,
                                     const Tsx::CArray<Tsx::CUnicodeString>& attachmentPaths);
