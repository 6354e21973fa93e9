// The recipients of one message of the Extended route, in the form in which the address book resolves them.
// ExtendedMapi.cpp fills the list; CMapiAddressBook and CMapiMessage pass it on.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/object.h"
#include "foundation/inc/unicodestring.h"
#include "mapi/MapiInterfaces.h"

namespace Mapi {

/// What a recipient is shown and resolved as.
///
///   Ann, ann@example.org     Ann[ann@example.org]
///   (none), ann              [ann]
///   Ann, (none)              Ann
Tsx::CUnicodeString RecipientDisplayName(const Tsx::CUnicodeString& name, const Tsx::CUnicodeString& address);

/// All of it but the texts is memory of the MAPI library, so that the address book can put entries of its own in the
/// place of ours. Raises what CheckResult raises when memory is refused.
class CMapiAddressList : public virtual Tsx::IObject {
public:
    CMapiAddressList();
    ~CMapiAddressList() override;

    /// Appends a recipient. AS DESIGNED: `type` is not read; every recipient is one of the To line (RecipientTypeTo).
    void Add(const Tsx::CUnicodeString& name, const Tsx::CUnicodeString& address, std::uint32_t type);

    /// This object keeps the ownership.
    ADRLIST* List() const { return addressList; }

private:
    ADRLIST* addressList;
    std::int32_t capacity;                         // entries
    Tsx::CArray<Tsx::CUnicodeString> displayNames; // what the entries' texts point into

    void Grow();
};

} // namespace Mapi
