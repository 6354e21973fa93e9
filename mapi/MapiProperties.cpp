#include "mapi/MapiProperties.h"

#include "mapi/MapiEntries.h"
#include "mapi/MapiResult.h"

using namespace Tsx;

namespace Mapi {

namespace {

void SetProperty(IMAPIProp* object, SPropValue& property) {
    CheckResult(HrSetOneProp(object, &property));
}

bool HasAll(std::uint32_t flags, std::uint32_t wanted) {
    return (flags & wanted) == wanted;
}

} // namespace

const SPropValue* CPropertyReader::Find(std::uint32_t tag) const {
    for (std::uint32_t i = 0; i < count; ++i) {
        if (properties[i].ulPropTag == tag) {
            return &properties[i];
        }
    }
    return nullptr;
}

std::uint32_t CPropertyReader::Number(std::uint32_t tag) const {
    const SPropValue* property = Find(tag);
    return property ? property->Value.ul : 0;
}

const char16_t* CPropertyReader::Text(std::uint32_t tag) const {
    const SPropValue* property = Find(tag);
    return property && property->Value.lpszW ? property->Value.lpszW : u"";
}

SBinary CPropertyReader::EntryId(std::uint32_t tag) const {
    const SPropValue* property = Find(tag);
    if (!property) {
        CheckResult(ResultUnexpected);
        return {}; // on a thread that must not throw
    }
    return property->Value.bin;
}

std::int32_t ChooseStoreRow(const SRowSet& rows) {
    std::int32_t chosen = -1;
    for (std::uint32_t i = 0; i < rows.cRows; ++i) {
        const std::uint32_t flags = CPropertyReader(rows.aRow[i]).Number(TagResourceFlags);
        if (HasAll(flags, StatusPrimaryIdentity | StatusPrimaryStore) ||
            (chosen < 0 && HasAll(flags, StatusDefaultStore))) {
            chosen = static_cast<std::int32_t>(i);
        }
    }
    return chosen;
}

void SetNumber(IMAPIProp* object, std::uint32_t tag, std::int32_t value) {
    SPropValue property{.ulPropTag = tag, .dwAlignPad = 0, .Value = {.l = value}};
    SetProperty(object, property);
}

void SetBoolean(IMAPIProp* object, std::uint32_t tag, bool value) {
    SPropValue property{.ulPropTag = tag, .dwAlignPad = 0, .Value = {.b = value}};
    SetProperty(object, property);
}

void SetText(IMAPIProp* object, std::uint32_t tag, const CUnicodeString& value) {
    // The record serves reading too, hence the cast: HrSetOneProp does not write to the text.
    SPropValue property{.ulPropTag = tag, .dwAlignPad = 0, .Value = {.lpszW = const_cast<char16_t*>(value.Text())}};
    SetProperty(object, property);
}

void SetBytes(IMAPIProp* object, std::uint32_t tag, SBinary value) {
    SPropValue property{.ulPropTag = tag, .dwAlignPad = 0, .Value = {.bin = value}};
    SetProperty(object, property);
}

} // namespace Mapi
