// Properties, for the wrappers of mapi/: reading those in records of the MAPI library, and setting one at a time. MAPI
// libraries leave properties out, give an error in their place, or give no array at all: a caller then gets the value
// that its reading function names.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "mapi/MapiInterfaces.h"

namespace Mapi {

/// The properties of an object or a row. The array stays the MAPI library's, and may be null.
class CPropertyReader {
public:
    CPropertyReader(const SPropValue* propertyArray, std::uint32_t propertyCount)
        : properties(propertyArray), count(propertyArray ? propertyCount : 0) {}
    explicit CPropertyReader(const SRow& row) : CPropertyReader(row.lpProps, row.cValues) {}

    /// The property of exactly that tag, type included; null if there is none.
    const SPropValue* Find(std::uint32_t tag) const;
    /// 0 if there is none.
    std::uint32_t Number(std::uint32_t tag) const;
    /// Empty if there is none. The text stays the MAPI library's.
    const char16_t* Text(std::uint32_t tag) const;
    /// An identifier of any length. CCOMException with E_UNEXPECTED if there is none.
    SBinary EntryId(std::uint32_t tag) const;

private:
    const SPropValue* properties;
    std::uint32_t count;
};

/// The row of the store to deliver from, or -1. The last row that is the primary store of the primary identity wins
/// over everything, and the first default store among the others.
///
///   default, primary               the primary one
///   primary, primary               the second
///   default, default               the first
///   primary identity alone         none: it takes both flags
std::int32_t ChooseStoreRow(const SRowSet& rows);

/// Each sets one property through HrSetOneProp and checks the result. The object is not null.
void SetNumber(IMAPIProp* object, std::uint32_t tag, std::int32_t value);
void SetBoolean(IMAPIProp* object, std::uint32_t tag, bool value);
void SetText(IMAPIProp* object, std::uint32_t tag, const Tsx::CUnicodeString& value);
void SetBytes(IMAPIProp* object, std::uint32_t tag, SBinary value);

} // namespace Mapi
