// Code pages whose text shifts between character sets or whose characters are longer than two bytes: the C library
// converts them.
#pragma once

#include "platform/linux/codepages.h"
#include <string>
#include <string_view>

namespace Platform {

/// Converts a whole text; any thread may call. What has no meaning becomes U+FFFD, or the page's '?' on the way to
/// bytes. False with the last error set if the C library lacks the page, or if `refuseInvalid` and something has no
/// meaning.
bool DecodeStream(const CodePage& page, std::string_view text, bool refuseInvalid, std::u16string& out);
bool EncodeStream(const CodePage& page, std::u16string_view text, bool refuseInvalid, std::string& out);

} // namespace Platform
