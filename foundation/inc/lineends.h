// Line ends of text for the console.
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
