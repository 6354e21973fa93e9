// Line ends of text that leaves the program.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// Gives each LF that does not follow a CR one in front of it:
///
///   a\nb      a\r\nb
///   \n\n      \r\n\r\n
///   a\r\nb    a\r\nb
///   a\rb      a\rb
CUnicodeString WithCarriageReturns(const CUnicodeString& text);

} // namespace Tsx
