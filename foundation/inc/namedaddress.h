// A named address: a recipient's display name and mail address, or the name under which an attachment is shown and its
// path.
#pragma once

#include "foundation/inc/unicodestring.h"

struct CNamedAddress {
    Tsx::CUnicodeString Name;
    Tsx::CUnicodeString Address;
};
