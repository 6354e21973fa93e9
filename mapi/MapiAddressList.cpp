#include "mapi/MapiAddressList.h"

#include "mapi/MapiBuffers.h"
#include <cstddef>
#include <cstring>

using namespace Tsx;

namespace Mapi {

namespace {

constexpr std::int32_t FirstCapacity = 8;
constexpr std::uint32_t PropertiesOfEntry = 2; // its name and its type

/// The bytes of a list with room for that many entries.
constexpr std::uint32_t AddressListSize(std::int32_t capacity) {
    return static_cast<std::uint32_t>(offsetof(ADRLIST, aEntries) +
                                      static_cast<std::size_t>(capacity) * sizeof(ADRENTRY));
}

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

void CMapiAddressList::Add(const CUnicodeString& name, const CUnicodeString& address, std::uint32_t /*type*/) {
    CUnicodeString& displayName = displayNames.Append(RecipientDisplayName(name, address));
    if (addressList->cEntries == static_cast<std::uint32_t>(capacity)) {
        Grow();
    }
    // The entry is counted last: FreePadrlist takes every entry that is counted for a whole one.
    auto* properties = AllocateMapiBuffer<SPropValue>(PropertiesOfEntry * sizeof(SPropValue));
    properties[0] = {
        .ulPropTag = TagDisplayName, .dwAlignPad = 0, .Value = {.lpszW = displayName.GetBuffer(displayName.Length())}};
    properties[1] = {.ulPropTag = TagRecipientType, .dwAlignPad = 0, .Value = {.ul = RecipientTypeTo}};
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
