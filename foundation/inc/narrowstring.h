// The narrow string. Narrow text exists only at MAPI, in the console's byte mode and in files.
#pragma once

#include "foundation/inc/stringbase.h"

namespace Tsx {

class CString : public CStringBase<CString, char> {
public:
    using CStringBase::CStringBase;
    CString() = default;

    /// The value in decimal.
    static CString FromInt(std::int32_t value);
    /// Converts wide text to a code page: 0 is the system's ANSI page, 1 its OEM page. What cannot be converted at all
    /// comes out empty.
    static CString FromWide(const char16_t* text, std::int32_t count, std::uint32_t codePage);
};

} // namespace Tsx
