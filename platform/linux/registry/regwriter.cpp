#include "platform/linux/registry/regwriter.h"

#include "platform/inc/registry.h"
#include <bit>
#include <cstring>

namespace Platform {

namespace {

// A line of bytes is broken where the export of Windows breaks it.
constexpr std::size_t LongestHexLine = 77;

void AppendHex(std::u16string& out, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        out += u"0123456789abcdef"[number >> shift & 0xF];
    }
}

void AppendQuoted(std::u16string& out, std::u16string_view text) {
    out += u'"';
    for (const char16_t c : text) {
        if (c == u'\r' || c == u'\n') {
            out += c == u'\r' ? u"\\r" : u"\\n";
            continue;
        }
        if (c == u'"' || c == u'\\') {
            out += u'\\';
        }
        out += c;
    }
    out += u'"';
}

// The text of a value that quotes can express: one terminator, at the end, and no line break, for which there is more
// than one form.
bool IsPlainText(const RegistryValue& value, std::u16string& text) {
    if (value.type != RegSz || value.bytes.size() % sizeof(char16_t) != 0) {
        return false;
    }
    text = TextOf(value.bytes);
    if (text.empty() || text.find_first_of(std::u16string_view(u"\0\r\n", 3)) != text.size() - 1 || text.back()) {
        return false;
    }
    text.pop_back();
    return true;
}

void AppendHexBytes(std::u16string& out, const RegistryValue& value, std::u16string_view lineBreak) {
    std::size_t lineStart = out.find_last_of(u"\r\n") + 1;
    out += u"hex";
    if (value.type != RegBinary) {
        const int digits = static_cast<int>((std::bit_width(value.type | 1) + 3) / 4);
        out += u'(';
        AppendHex(out, value.type, digits);
        out += u')';
    }
    out += u':';
    for (std::size_t i = 0; i < value.bytes.size(); ++i) {
        AppendHex(out, static_cast<unsigned char>(value.bytes[i]), 2);
        if (i + 1 == value.bytes.size()) {
            break;
        }
        out += u',';
        if (out.size() - lineStart >= LongestHexLine) {
            out += u'\\';
            out += lineBreak;
            lineStart = out.size();
            out += u"  ";
        }
    }
}

} // namespace

void AppendValueName(std::u16string& out, std::u16string_view name) {
    if (name.empty()) {
        out += u'@';
    } else {
        AppendQuoted(out, name);
    }
    out += u'=';
}

void AppendValueData(std::u16string& out, const RegistryValue& value, std::u16string_view lineBreak) {
    std::u16string text;
    if (IsPlainText(value, text)) {
        AppendQuoted(out, text);
    } else if (value.type == RegDword && value.bytes.size() == sizeof(std::uint32_t)) {
        std::uint32_t number = 0;
        std::memcpy(&number, value.bytes.data(), sizeof(number));
        out += u"dword:";
        AppendHex(out, number, 8);
    } else {
        AppendHexBytes(out, value, lineBreak);
    }
}

} // namespace Platform
