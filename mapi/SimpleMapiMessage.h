// The data of one Simple MAPI message: the published records and every narrow string and array that they point into.
// CMapiMailSender::Send makes one for each call.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/namedaddress.h"
#include "mapi/SimpleMapi.h"

/// Filled by its constructor, without a MAPI library, so that a test can look at the records alone. Texts are in the
/// system's ANSI code page; one that cannot be converted comes out empty. The records are valid as long as the object.
class CSimpleMapiMessage {
public:
    /// Raises CInternalError for an attachment without a name or a path, CMemoryException.
    ///
    ///   subject, body, originator empty    null pointers, not pointers to empty text
    ///   name empty                         no recipient at all, whatever the address
    ///   attachments                        path as it stands; the name without any folder in it
    CSimpleMapiMessage(const Tsx::CUnicodeString& subject, const Tsx::CArray<CNamedAddress>& attachments,
                       const Tsx::CUnicodeString& body, const Tsx::CUnicodeString& address,
                       const Tsx::CUnicodeString& name, const Tsx::CUnicodeString& originator);
    CSimpleMapiMessage(const CSimpleMapiMessage&) = delete;
    CSimpleMapiMessage& operator=(const CSimpleMapiMessage&) = delete;

    /// Not const, because MAPISendMail takes a pointer to a record that it may change.
    MapiMessage& Record() { return message; }

private:
    MapiMessage message{};
    // A block keeps its place when the array of strings grows, so that the records can point into it from the start.
    Tsx::CArray<Tsx::CString> narrowStrings;
    Tsx::CArray<MapiRecipDesc> originators;
    Tsx::CArray<MapiRecipDesc> recipients;
    Tsx::CArray<MapiFileDesc> files;

    char* AddNarrow(const Tsx::CUnicodeString& text);
    char* AddNarrowUnlessEmpty(const Tsx::CUnicodeString& text);
    void AddOriginator(const Tsx::CUnicodeString& originator);
    void AddRecipient(const Tsx::CUnicodeString& address, const Tsx::CUnicodeString& name,
                      std::uint32_t recipientClass);
    void AddFiles(const Tsx::CArray<CNamedAddress>& attachments);
};
