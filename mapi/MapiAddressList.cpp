#include "mapi/MapiAddressList.h"

#include "mapi/MapiBuffers.h"
#include "mapi/SimpleMapi.h"
#include <cstddef>
#include <cstring>

using namespace Tsx;

namespace Mapi {

namespace {

constexpr std::int32_t FirstCapacity = 8;
constexpr std::uint32_t PropertiesOfEntry = 2; // its name and its type

static_assert(AddressListSize(0) == offsetof(ADRLIST, aEntries));
static_assert(AddressListSize(1) == sizeof(ADRLIST));

} // namespace

CUnicodeString RecipientDisplayName(const CUnicodeString& name, const CUnicodeString& address) {
    return address.IsEmpty() ? name : name + u"[" + address + u"]";
}

CMapiAddressList::CMapiAddressList()
    : addressList(AllocateMapiBuffer<ADRLIST>(AddressListSize(FirstCapacity))), capacity(FirstCapacity) {
    addressList->cEntries = 0;
}

CMapiAddressList::~CMapiAddressList() {
    FreePadrlist(addressList);
}

void CMapiAddressList::Add(const CUnicodeString& name, const CUnicodeString& address, std::uint32_t type) {
    static_cast<void>(type);
    CUnicodeString& displayName = displayNames.Append(RecipientDisplayName(name, address));
    if (addressList->cEntries == static_cast<std::uint32_t>(capacity)) {
        Grow();
    }
    // An entry counts once it is whole: a list that is left half-way must be fit to be freed.
    auto* properties = AllocateMapiBuffer<SPropValue>(PropertiesOfEntry * sizeof(SPropValue));
    properties[0].ulPropTag = TagDisplayName;
    properties[0].dwAlignPad = 0;
    properties[0].Value.lpszW = displayName.GetBuffer(displayName.Length());
    properties[1].ulPropTag = TagRecipientType;
    properties[1].dwAlignPad = 0;
    properties[1].Value.l = static_cast<std::int32_t>(RecipientClassTo);
    addressList->aEntries[addressList->cEntries++] = {0, PropertiesOfEntry, properties};
}

void CMapiAddressList::Grow() {
    TSX_ASSERT_AT(capacity >= 1, u"..\\Src\\ExtendedMapi", 224);
    auto* larger = AllocateMapiBuffer<ADRLIST>(AddressListSize(capacity * 2));
    std::memcpy(larger, addressList, AddressListSize(capacity));
    MAPIFreeBuffer(addressList);
    addressList = larger;
    capacity *= 2;
}

} // namespace Mapi
