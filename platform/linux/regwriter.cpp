#include "platform/inc/registry.h"
#include "platform/linux/regfile.h"
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
        if (c == u'"' || c == u'\\') {
            out += u'\\';
        }
        out += c;
    }
    out += u'"';
}

// The text of a value that quotes can express: one terminator, at the end, and no line break.
bool IsPlainText(const RegistryValue& value, std::u16string& text) {
    const std::size_t size = value.bytes.size();
    if (value.type != RegSz || size == 0 || size % sizeof(char16_t) != 0) {
        return false;
    }
    text.resize(size / sizeof(char16_t));
    std::memcpy(text.data(), value.bytes.data(), size);
    if (text.find_first_of(std::u16string_view(u"\0\r\n", 3)) != text.size() - 1 || text.back() != u'\0') {
        return false;
    }
    text.pop_back();
    return true;
}

void AppendHexBytes(std::u16string& out, std::size_t lineStart, const RegistryValue& value) {
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
            out += u"\\\r\n";
            lineStart = out.size();
            out += u"  ";
        }
    }
}

void AppendValue(std::u16string& out, const std::u16string& name, const RegistryValue& value) {
    const std::size_t lineStart = out.size();
    if (name.empty()) {
        out += u'@';
    } else {
        AppendQuoted(out, name);
    }
    out += u'=';
    std::u16string text;
    if (IsPlainText(value, text)) {
        AppendQuoted(out, text);
    } else if (value.type == RegDword && value.bytes.size() == sizeof(std::uint32_t)) {
        std::uint32_t number = 0;
        std::memcpy(&number, value.bytes.data(), sizeof(number));
        out += u"dword:";
        AppendHex(out, number, 8);
    } else {
        AppendHexBytes(out, lineStart, value);
    }
    out += u"\r\n";
}

// `path` is the key's on the way in and out.
void AppendKeys(std::u16string& out, std::u16string& path, const RegistryNode& node) {
    node.keys.ForEach([&](const std::u16string& name, const RegistryNode& key) {
        const std::size_t length = path.size();
        path += path.empty() ? u"" : u"\\";
        path += name;
        out += u'[' + path + u"]\r\n";
        key.values.ForEach([&out](const std::u16string& valueName, const RegistryValue& value) {
            AppendValue(out, valueName, value);
        });
        out += u"\r\n";
        AppendKeys(out, path, key);
        path.resize(length);
    });
}

} // namespace

std::string WriteRegistryText(const RegistryNode& top) {
    std::u16string out = u"\uFEFFWindows Registry Editor Version 5.00\r\n\r\n";
    std::u16string path;
    AppendKeys(out, path, top);
    return {reinterpret_cast<const char*>(out.data()), out.size() * sizeof(char16_t)};
}

} // namespace Platform
