#include "mapi/ExtendedMapi.h"

#include "foundation/inc/assertion.h"

using namespace Tsx;

bool IsExtendedMapiAvailable() {
    return false;
}

std::int32_t SendThroughExtendedMapi(CMapiContext&, const CUnicodeString&, const CUnicodeString&,
                                     const CArray<CNamedAddress>&, const CArray<CUnicodeString>&) {
    FailAssertion(u"..\\Src\\ExtendedMapi", __LINE__); // the probe never selects this route
    return 2;
}
