// The developer's and administrator's settings: string values of one registry key, never written. Read by the start,
// the debug flags, the stop modes and the message log.
#pragma once

#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// The value `name` of the key "Software\Ostrel\Tessarix", under HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE; the default
/// when key or value is missing or the value is no text. The key is opened for each read, so that a change takes effect
/// at once.
CUnicodeString GetUserSetting(const char16_t* name, const char16_t* defaultValue);
CUnicodeString GetMachineSetting(const char16_t* name, const char16_t* defaultValue);

} // namespace Tsx
