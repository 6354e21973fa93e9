#include "tests/support/text.h"

#include <array>
#include <cstdio>

std::string Readable(std::u16string_view text) {
    std::string out;
    for (const char16_t c : text) {
        if (c >= u' ' && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04X", static_cast<unsigned>(c));
            out += code.data();
        }
    }
    return out;
}

namespace Tsx {

void PrintTo(const CUnicodeString& text, std::ostream* stream) {
    *stream << '"' << Readable(text.View()) << '"';
}

} // namespace Tsx
