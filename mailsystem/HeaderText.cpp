#include "mailsystem/HeaderText.h"

#include "mailsystem/Owners.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>

namespace MailSystem {

namespace {

constexpr const char* Specials = "()<>[]:;@\\,.\""; // of RFC 5322

bool BreaksLine(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// An encoded word is 75 characters at most, and each decodes to whole characters by itself.
std::string EncodedWords(std::string_view text) {
    constexpr std::size_t mostBytes = 45;
    std::string words;
    while (!text.empty()) {
        std::size_t count = std::min(mostBytes, text.size());
        while (count < text.size() && ContinuesCharacter(text[count])) {
            --count;
        }
        const GlibText base64(g_base64_encode(reinterpret_cast<const guchar*>(text.data()), count));
        words += (words.empty() ? "=?UTF-8?B?" : " =?UTF-8?B?") + std::string(base64.get()) + "?=";
        text.remove_prefix(count);
    }
    return words;
}

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Unquoted(std::string_view text) {
    if (text.size() < 2 || !text.starts_with('"') || !text.ends_with('"')) {
        return std::string(text);
    }
    std::string plain;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '\\' && i + 2 < text.size()) {
            ++i;
        }
        plain += text[i];
    }
    return plain;
}

bool IsDotAtom(std::string_view text) {
    return !text.empty() && text.find_first_of("()<>@,;:\\\"[] ") == std::string_view::npos && text.front() != '.' &&
           text.back() != '.' && text.find("..") == std::string_view::npos;
}

// A name, or a literal such as [192.0.2.1] and [IPv6:2001:db8::1].
bool IsDomain(std::string_view text) {
    const bool literal = text.size() > 2 && text.front() == '[' && text.back() == ']';
    return literal ? std::all_of(text.begin() + 1, text.end() - 1,
                                 [](char c) { return g_ascii_isalnum(c) || c == '.' || c == ':' || c == '-'; })
                   : IsDotAtom(text);
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted + '"';
}

} // namespace

std::string ValidText(std::string_view text) {
    return Platform::Utf8Text(Platform::Utf16Text(text));
}

std::string OneLine(std::string_view text) {
    std::u16string wide = Platform::Utf16Text(text);
    std::replace_if(wide.begin(), wide.end(), &BreaksLine, u' ');
    return Platform::Utf8Text(wide);
}

std::string FieldText(std::string_view text) {
    const std::string line = OneLine(text);
    return line.find("=?") != std::string::npos ? EncodedWords(line) : line;
}

std::string PhraseSyntax(std::string_view text) {
    const std::string phrase = OneLine(text);
    return phrase.find_first_of(Specials) == std::string::npos ? phrase : Quoted(phrase);
}

std::string AddressSyntax(std::string_view text) {
    const std::string address = Trimmed(OneLine(text));
    const std::size_t at = address.find_last_of('@');
    if (address.empty() || at == std::string::npos) {
        const std::string plain = Unquoted(address);
        return plain.empty() || IsDotAtom(plain) ? plain : Quoted(plain);
    }
    const std::string local = Unquoted(std::string_view(address).substr(0, at));
    const std::string domain = address.substr(at + 1);
    if (local.empty() || !IsDomain(domain)) {
        return Quoted(address);
    }
    return (IsDotAtom(local) ? local : Quoted(local)) + "@" + domain;
}

} // namespace MailSystem
