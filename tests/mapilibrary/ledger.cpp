#include "tests/mapilibrary/ledger.h"

#include "platform/inc/text.h"
#include <cstdio>
#include <cstdlib>
#include <map>

namespace {

bool lineIsOpen = false; // a crash has left it so

std::map<const void*, std::string>& Things() {
    static std::map<const void*, std::string> things;
    return things;
}

// A transcript with a gap would be believed: the process ends where the file cannot be written.
void WriteText(std::string_view text, bool ends) {
    if (const char* path = std::getenv("CORVANE_TRANSCRIPT")) {
        std::FILE* file = std::fopen(path, "ab");
        if (!file || std::fwrite(text.data(), 1, text.size(), file) != text.size() ||
            (ends && std::fputc('\n', file) == EOF) || std::fclose(file) != 0) {
            std::abort();
        }
    }
    lineIsOpen = !ends;
}

std::map<const void*, std::string>::iterator Find(const void* thing) {
    const auto found = Things().find(thing);
    if (found == Things().end()) {
        std::fprintf(stderr, "the MAPI library was handed what is not its own, or was given back: %p\n", thing);
        std::abort();
    }
    return found;
}

std::string Hex(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {digits[byte >> 4], digits[byte & 0xF]};
    }
    return text;
}

std::string ShownBytes(const Mapi::SBinary& bytes) {
    if (!std::getenv("CORVANE_TRANSCRIPT")) {
        return {}; // nobody reads it, and a run with large files is measured so
    }
    if (bytes.cb <= 64) {
        return Shown(EntryId{bytes.cb, bytes.lpb});
    }
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (std::uint32_t i = 0; i < bytes.cb; ++i) {
        low = (low + bytes.lpb[i]) % 65521;
        high = (high + low) % 65521;
    }
    return Shown(bytes.cb) + " bytes " + Shown(std::uint64_t{high} << 16 | low);
}

std::string QuotedUtf16(std::u16string_view text) {
    std::string bytes(4 * text.size(), '\0');
    bytes.resize(static_cast<std::size_t>(
        Platform::WideCharToMultiByte(Platform::CodePageUtf8, 0, text.data(), static_cast<std::int32_t>(text.size()),
                                      bytes.data(), static_cast<std::int32_t>(bytes.size()))));
    std::string quoted = "\"";
    for (const char c : bytes) {
        const bool plain = static_cast<unsigned char>(c) >= 0x20 && c != 0x7F && c != '"' && c != '\\';
        quoted += plain ? std::string(1, c) : "\\x" + Hex({&c, 1});
    }
    return quoted + '"';
}

// What was not given back is told when the library goes.
struct EndOfLibrary {
    EndOfLibrary() { Things(); } // is there before, and goes after
    ~EndOfLibrary() {
        std::string line = lineIsOpen ? "\nend:" : "end:";
        for (const auto& [thing, name] : Things()) {
            line += ' ' + name + " not given back;";
        }
        WriteText(line, true);
    }
    EndOfLibrary(const EndOfLibrary&) = delete;
    EndOfLibrary& operator=(const EndOfLibrary&) = delete;
};

const EndOfLibrary End;

} // namespace

std::string Decimal(std::uint64_t value) {
    const std::string digit(1, static_cast<char>('0' + value % 10));
    return value < 10 ? digit : Decimal(value / 10) + digit;
}

std::string Quoted(const char* text) {
    const std::string_view bytes = text ? text : "";
    std::u16string wide(bytes.size(), u'\0'); // no page takes more units than bytes
    wide.resize(static_cast<std::size_t>(
        Platform::MultiByteToWideChar(Platform::GetACP(), 0, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                      wide.data(), static_cast<std::int32_t>(wide.size()))));
    return text ? QuotedUtf16(wide) : "null";
}

std::string Quoted(const char16_t* text) {
    return text ? QuotedUtf16(text) : "null";
}

std::string Shown(std::uint64_t number) {
    if (number < 10) {
        return Decimal(number);
    }
    std::string digits;
    for (; number != 0; number >>= 4) {
        digits.insert(digits.begin(), "0123456789ABCDEF"[number & 0xF]);
    }
    return "0x" + digits;
}

std::string Shown(const EntryId& id) {
    return Decimal(id.size) + ':' + (id.bytes ? Hex({static_cast<const char*>(id.bytes), id.size}) : "null");
}

std::string Shown(const void* pointer) {
    return pointer ? "given" : "null";
}

std::string Shown(const Mapi::IUnknown* object) {
    return NameOf(object);
}

std::string Shown(const Mapi::ADRLIST* list) {
    return NameOf(list);
}

std::string Shown(const Mapi::SPropTagArray* tags) {
    std::string text = "[";
    for (std::uint32_t i = 0; i < tags->cValues; ++i) {
        text += (i > 0 ? ", " : "") + Shown(tags->aulPropTag[i]);
    }
    return text + ']';
}

std::string Shown(const Mapi::SPropValue& property) {
    const std::string tag = Shown(property.ulPropTag) + ' ';
    switch (property.ulPropTag & Mapi::PropertyTypeMask) {
    case 0x03: // PT_LONG
        return tag + Shown(property.Value.ul);
    case 0x0B: // PT_BOOLEAN
        return tag + Shown(std::uint64_t{property.Value.b});
    case 0x1F: // PT_UNICODE
        return tag + Quoted(property.Value.lpszW);
    case 0x102: // PT_BINARY
        return tag + ShownBytes(property.Value.bin);
    default:
        return tag + "of a type that is not expected";
    }
}

std::string Shown(const std::string& text) {
    return text;
}

Call::Call(std::string_view name, const std::string& arguments, std::string_view rule) {
    WriteText((lineIsOpen ? "\n" : "") + std::string(name) + '(' + arguments + ')', false);
    action = ActionOf(rule.empty() ? name : rule);
}

std::int32_t Call::End(std::int32_t result) {
    const std::int32_t told = action.performs ? result : action.result;
    WriteText(" = " + Shown(static_cast<std::uint32_t>(told)), true);
    return told;
}

void Call::EndWithoutResult() {
    WriteText("", true);
}

void GiveOut(const void* thing, const std::string& name) {
    Things().emplace(thing, name);
}

std::string NameOf(const void* thing) {
    return thing ? Find(thing)->second : "null";
}

void TakeBack(const void* thing) {
    Things().erase(Find(thing));
}

std::uint32_t ThingsOut() {
    return static_cast<std::uint32_t>(Things().size());
}

void FreeBuffer(void* buffer) {
    if (buffer) {
        TakeBack(buffer);
        ::operator delete(buffer);
    }
}
