#include "tests/mapilibrary/ledger.h"

#include "platform/inc/text.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <sstream>

namespace {

bool lineIsOpen = false; // a crash has left it so

std::map<const void*, std::string> things; // that are given out, with their names

// A transcript with a gap would be believed: the process ends where the file cannot be written.
void WriteText(const std::string& text, bool ends) {
    if (const char* path = std::getenv("CORVANE_TRANSCRIPT")) {
        std::FILE* file = std::fopen(path, "ab");
        if (!file || std::fputs(text.c_str(), file) < 0 || (ends && std::fputc('\n', file) < 0) || std::fclose(file)) {
            std::abort();
        }
    }
    lineIsOpen = !ends;
}

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[3] = {};
        std::snprintf(digits, sizeof(digits), "%02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

// What was not given back is told when the library goes.
struct EndOfLibrary {
    ~EndOfLibrary() {
        std::string line = lineIsOpen ? "\nend:" : "end:";
        for (const auto& [thing, name] : things) {
            line += ' ' + name + " not given back;";
        }
        WriteText(line, true);
    }
} const end;

volatile int* volatile nowhere = reinterpret_cast<volatile int*>(16);

// The sanitizers must leave this to the processor.
__attribute__((no_sanitize("address", "undefined"), noinline)) void Crash() {
    static_cast<void>(*nowhere);
}

std::string WordOf(std::string_view call) {
    static std::vector<std::string> calls;
    calls.emplace_back(call);
    const std::string number = std::to_string(std::count(calls.begin(), calls.end(), call));
    for (const std::string& rule : Words("CORVANE_MAPI_SCRIPT", "")) {
        const std::string name = rule.substr(0, rule.find('='));
        if (name == call || name == std::string(call) + '#' + number) {
            return rule.substr(name.size() + 1);
        }
    }
    return {};
}

} // namespace

std::vector<std::string> Words(const char* variable, const char* otherwise) {
    const char* value = std::getenv(variable);
    std::istringstream text(value ? value : otherwise);
    return {std::istream_iterator<std::string>(text), {}};
}

std::string Quoted(const char* text) {
    const std::string_view bytes = text ? text : "";
    std::u16string wide(bytes.size() + 1, u'\0'); // no page takes more units than bytes
    Platform::MultiByteToWideChar(Platform::GetACP(), 0, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                  wide.data(), static_cast<std::int32_t>(bytes.size()));
    return Quoted(text ? wide.c_str() : nullptr);
}

std::string Quoted(const char16_t* text) {
    if (!text) {
        return "null";
    }
    const std::u16string_view wide(text);
    std::string bytes(4 * wide.size(), '\0');
    bytes.resize(static_cast<std::size_t>(
        Platform::WideCharToMultiByte(Platform::CodePageUtf8, 0, text, static_cast<std::int32_t>(wide.size()),
                                      bytes.data(), static_cast<std::int32_t>(bytes.size()))));
    std::string quoted = "\"";
    for (const char c : bytes) {
        const bool plain = static_cast<unsigned char>(c) >= 0x20 && c != 0x7F && c != '"' && c != '\\';
        quoted += plain ? std::string(1, c) : "\\x" + Hex({&c, 1});
    }
    return quoted + '"';
}

std::string Shown(std::uint64_t number) {
    char text[24] = {};
    std::snprintf(text, sizeof(text), number < 10 ? "%llu" : "0x%llX", static_cast<unsigned long long>(number));
    return text;
}

std::string Shown(const EntryId& id) {
    const std::string_view bytes(static_cast<const char*>(id.bytes), id.bytes ? id.size : 0);
    const bool whole = bytes.size() <= 64;
    const std::string shown = whole ? Hex(bytes) : Hex(bytes.substr(0, 32)) + "..." + Hex(bytes.substr(id.size - 32));
    return std::to_string(id.size) + ':' + (id.bytes ? shown : "null");
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
        return tag + Shown(EntryId{property.Value.bin.cb, property.Value.bin.lpb});
    default:
        return tag + "of a type that is not expected";
    }
}

Call::Call(std::string_view name, const std::string& arguments, std::string_view rule) {
    static bool dying = false;
    WriteText((lineIsOpen ? "\n" : "") + std::string(name) + '(' + arguments + ')', false);
    const std::string word = WordOf(rule.empty() ? name : rule);
    const bool givesBack =
        name.ends_with("::Release") || name.find("Free") != std::string_view::npos || name == "MAPIUninitialize";
    if (word.starts_with("read") || (dying && givesBack)) {
        dying = dying || word == "read:dying";
        Crash();
    }
    char* rest = nullptr;
    refusal = static_cast<std::int32_t>(static_cast<std::uint32_t>(std::strtoull(word.c_str(), &rest, 16)));
    performs = word != "nothing" && (word.empty() || *rest != '\0');
}

std::int32_t Call::End(std::int32_t result) {
    const std::int32_t told = performs ? result : refusal;
    WriteText(" = " + Shown(static_cast<std::uint32_t>(told)), true);
    return told;
}

void Call::EndWithoutResult() {
    WriteText("", true);
}

void GiveOut(const void* thing, const std::string& name) {
    things.emplace(thing, name);
}

std::string Shown(const void* thing) {
    const auto found = things.find(thing);
    return !thing ? "null" : found == things.end() ? "given" : found->second;
}

void TakeBack(const void* thing) {
    if (things.erase(thing) == 0) {
        std::fprintf(stderr, "the MAPI library is given back what is not its own, or was given back: %p\n", thing);
        std::abort();
    }
}

void FreeBuffer(void* buffer) {
    if (buffer) {
        TakeBack(buffer);
        ::operator delete(buffer);
    }
}
