// The system's English texts for Windows error codes, each with the line end that Windows gives.
#pragma once

#include <cstdint>
#include <string_view>

namespace Platform {

/// Empty for a code without a text.
std::u16string_view ErrorText(std::uint32_t code);

} // namespace Platform
