#include "platform/linux/text/utf8.h"

namespace Platform {

namespace {

// What a lead byte asks for: the length, and the range of the second byte. All other continuation bytes are 80 to BF.
struct Form {
    std::size_t length;
    unsigned low;
    unsigned high;
};

constexpr Form FormOf(unsigned lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return {2, 0x80, 0xBF};
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return {3, lead == 0xE0 ? 0xA0u : 0x80u, lead == 0xED ? 0x9Fu : 0xBFu}; // no overlong forms, no surrogates
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return {4, lead == 0xF0 ? 0x90u : 0x80u, lead == 0xF4 ? 0x8Fu : 0xBFu}; // nothing above U+10FFFF
    }
    return {0, 0, 0};
}

} // namespace

Utf8Piece ReadUtf8(std::string_view text) {
    const auto at = [&text](std::size_t i) {
        return static_cast<unsigned char>(text[i]);
    };
    const unsigned lead = at(0);
    if (lead < 0x80) {
        return {1, true, lead};
    }
    const Form form = FormOf(lead);
    if (form.length == 0) {
        return {1, false, 0};
    }
    char32_t c = lead & (0x7Fu >> form.length);
    for (std::size_t i = 1; i < form.length; ++i) {
        if (i >= text.size() || (at(i) & 0xC0) != 0x80) {
            return {i, false, 0};
        }
        if (i == 1 && (at(1) < form.low || at(1) > form.high)) {
            return {2, false, 0};
        }
        c = c << 6 | (at(i) & 0x3F);
    }
    return {form.length, true, c};
}

} // namespace Platform
