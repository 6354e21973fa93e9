#include "tests/mapilibrary/transcript.h"

#include "platform/inc/text.h"
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Null without the variable, or when the file cannot be opened.
File OpenTranscript(const char* mode) {
    const char* path = std::getenv("CORVANE_TRANSCRIPT");
    return {path ? std::fopen(path, mode) : nullptr, &std::fclose};
}

std::string Utf8FromWide(std::u16string_view wide) {
    if (wide.empty()) {
        return {};
    }
    const auto length = static_cast<std::int32_t>(wide.size());
    std::string bytes(static_cast<std::size_t>(
                          Platform::WideCharToMultiByte(Platform::CodePageUtf8, 0, wide.data(), length, nullptr, 0)),
                      '\0');
    Platform::WideCharToMultiByte(Platform::CodePageUtf8, 0, wide.data(), length, bytes.data(),
                                  static_cast<std::int32_t>(bytes.size()));
    return bytes;
}

// By way of UTF-16, as the system converts between two code pages.
std::string Utf8FromAnsi(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const auto length = static_cast<std::int32_t>(text.size());
    const std::uint32_t page = Platform::GetACP();
    std::u16string wide(
        static_cast<std::size_t>(Platform::MultiByteToWideChar(page, 0, text.data(), length, nullptr, 0)), u'\0');
    Platform::MultiByteToWideChar(page, 0, text.data(), length, wide.data(), static_cast<std::int32_t>(wide.size()));
    return Utf8FromWide(wide);
}

void AppendHex(std::string& out, unsigned char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    out += digits[byte >> 4];
    out += digits[byte & 0xF];
}

void AppendEscaped(std::string& out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
        out += "\\n";
    } else if (c == '\r') {
        out += "\\r";
    } else if (c == '\t') {
        out += "\\t";
    } else if (c == '"' || c == '\\') {
        out += '\\';
        out += c;
    } else if (byte < 0x20 || byte == 0x7F) {
        out += "\\x";
        AppendHex(out, byte);
    } else {
        out += c;
    }
}

std::string QuotedUtf8(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        AppendEscaped(quoted, c);
    }
    return quoted + '"';
}

} // namespace

std::string Quoted(const char* text) {
    return text ? QuotedUtf8(Utf8FromAnsi(text)) : "null";
}

std::string Quoted(const char16_t* text) {
    return text ? QuotedUtf8(Utf8FromWide(text)) : "null";
}

std::string Hex(const void* bytes, std::size_t size) {
    if (!bytes) {
        return "null";
    }
    std::string digits;
    for (const char byte : std::string_view(static_cast<const char*>(bytes), size)) {
        AppendHex(digits, static_cast<unsigned char>(byte));
    }
    return digits;
}

std::string Decimal(std::uint64_t value) {
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + value % 10));
        value /= 10;
    } while (value != 0);
    return digits;
}

void Transcript::Line(std::string_view text) {
    lines += text;
    lines += '\n';
}

void Transcript::Number(std::string_view name, std::uint64_t value) {
    Line(std::string(name) + ' ' + Decimal(value));
}

void Transcript::Pointer(std::string_view name, const void* pointer) {
    Line(std::string(name) + (pointer ? " given" : " null"));
}

void Transcript::Text(std::string_view name, const char* text) {
    Line(std::string(name) + ' ' + Quoted(text));
}

void Transcript::Bytes(std::string_view name, const void* bytes, std::size_t size) {
    Line(std::string(name) + ' ' + Hex(bytes, size));
}

void Transcript::Write() {
    if (std::getenv("CORVANE_TRANSCRIPT")) {
        File file = OpenTranscript("ab");
        if (!file || std::fwrite(lines.data(), 1, lines.size(), file.get()) != lines.size() ||
            std::fclose(file.release()) != 0) {
            std::abort();
        }
    }
    lines.clear();
}

int Transcript::CountLines(std::string_view wanted) {
    const File file = OpenTranscript("rb");
    int count = 0;
    std::string line;
    for (int c = file ? std::fgetc(file.get()) : EOF; c != EOF; c = std::fgetc(file.get())) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        count += line == wanted ? 1 : 0;
        line.clear();
    }
    return count;
}
