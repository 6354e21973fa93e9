#include "platform/linux/nativetext.h"

#include <algorithm>
#include <clocale>
#include <cwctype>

namespace Platform {

namespace {

constexpr char32_t Replacement = 0xFFFD;

bool IsHighSurrogate(char32_t c) {
    return c >= 0xD800 && c < 0xDC00;
}
bool IsLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c < 0xE000;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto byte = [&out](char32_t value) {
        out.push_back(static_cast<char>(value));
    };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | c >> 6);
        byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        byte(0xE0 | c >> 12);
        byte(0x80 | (c >> 6 & 0x3F));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xF0 | c >> 18);
        byte(0x80 | (c >> 12 & 0x3F));
        byte(0x80 | (c >> 6 & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
}

void AppendUtf16(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        out.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
}

struct Piece {
    std::size_t size; // bytes taken: a whole character, or the longest beginning of one that is malformed
    bool valid;
    char32_t character;
};

// The lead byte decides the length and the range of the second byte; all later bytes are 80 to BF.
Piece ReadUtf8(std::string_view text) {
    const auto at = [&text](std::size_t i) {
        return static_cast<unsigned char>(text[i]);
    };
    const unsigned lead = at(0);
    if (lead < 0x80) {
        return {1, true, lead};
    }
    std::size_t length = 0;
    unsigned low = 0x80;
    unsigned high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : low;   // no overlong forms
        high = lead == 0xED ? 0x9F : high; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : low;
        high = lead == 0xF4 ? 0x8F : high; // nothing above U+10FFFF
    } else {
        return {1, false, 0};
    }
    char32_t c = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= text.size() || at(i) < low || at(i) > high) {
            return {i, false, 0};
        }
        c = c << 6 | (at(i) & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {length, true, c};
}

// Calls `lone` for each surrogate without its partner and appends every other character.
template <class TLone>
std::string ToUtf8(std::u16string_view text, TLone lone) {
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            AppendUtf8(out, 0x10000 + ((c - 0xD800) << 10) + (text[++i] - char32_t{0xDC00}));
        } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
            lone(out, c);
        } else {
            AppendUtf8(out, c);
        }
    }
    return out;
}

// Calls `malformed` with the bytes of each malformed piece and appends every whole character.
template <class TMalformed>
std::u16string ToUtf16(std::string_view text, TMalformed malformed) {
    std::u16string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const Piece piece = ReadUtf8(text);
        if (piece.valid) {
            AppendUtf16(out, piece.character);
        } else {
            malformed(out, text.substr(0, piece.size));
        }
        text.remove_prefix(piece.size);
    }
    return out;
}

} // namespace

std::string NativeName(std::u16string_view name) {
    return ToUtf8(name, [](std::string& out, char32_t c) {
        if (c >= 0xDC80 && c <= 0xDCFF) {
            out.push_back(static_cast<char>(c - 0xDC00));
        } else {
            AppendUtf8(out, c);
        }
    });
}

std::u16string WideName(std::string_view name) {
    return ToUtf16(name, [](std::u16string& out, std::string_view bytes) {
        for (const char byte : bytes) {
            out.push_back(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(byte)));
        }
    });
}

std::string Utf8Text(std::u16string_view text) {
    return ToUtf8(text, [](std::string& out, char32_t) { AppendUtf8(out, Replacement); });
}

std::u16string Utf16Text(std::string_view text) {
    return ToUtf16(text, [](std::u16string& out, std::string_view) { AppendUtf16(out, Replacement); });
}

char16_t FoldNameCharacter(char16_t c) {
    static const locale_t nameLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (c < 0x80 || !nameLocale) {
        return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
    }
    return static_cast<char16_t>(towlower_l(c, nameLocale));
}

bool NamesEqual(std::u16string_view a, std::u16string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return FoldNameCharacter(x) == FoldNameCharacter(y); });
}

} // namespace Platform
