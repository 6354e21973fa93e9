#include "tests/mapilibrary/extended/ledger.h"

#include "tests/mapilibrary/transcript.h"
#include <cstdio>
#include <cstdlib>
#include <map>

namespace {

bool lineIsOpen = false; // a crash has left it so

std::map<const void*, std::string>& Things() {
    static std::map<const void*, std::string> things;
    return things;
}

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

[[noreturn]] void Protest(const char* complaint, const void* thing) {
    std::fprintf(stderr, "the MAPI library was handed what is %s: %p\n", complaint, thing);
    std::abort();
}

std::string AdlerOf(const Mapi::SBinary& bytes) {
    constexpr std::uint32_t modulus = 65521;
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (std::uint32_t i = 0; i < bytes.cb; ++i) {
        low = (low + bytes.lpb[i]) % modulus;
        high = (high + low) % modulus;
    }
    return Shown(std::uint64_t{high} << 16 | low);
}

std::string ShownBytes(const Mapi::SBinary& bytes) {
    constexpr std::uint32_t most = 64;
    if (!std::getenv("CORVANE_TRANSCRIPT")) {
        return {}; // nobody reads it, and a run with large files is measured so
    }
    return bytes.cb <= most ? Shown(bytes.cb, bytes.lpb) : Shown(bytes.cb) + " bytes " + AdlerOf(bytes);
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

std::string Shown(std::uint32_t size, const void* entryId) {
    return Decimal(size) + ':' + Hex(entryId, size);
}

std::string Shown(const void* pointer) {
    return pointer ? "given" : "null";
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

Action BeginCall(std::string_view name, const std::string& arguments) {
    WriteText((lineIsOpen ? "\n" : "") + std::string(name) + '(' + arguments + ')', false);
    return ActionOf(name);
}

void EndCall() {
    WriteText("", true);
}

std::int32_t EndCall(std::int32_t result) {
    WriteText(" = " + Shown(static_cast<std::uint32_t>(result)), true);
    return result;
}

void GiveOut(const void* thing, const std::string& name) {
    Things().emplace(thing, name);
}

std::string NameOf(const void* thing) {
    if (!thing) {
        return "null";
    }
    const auto found = Things().find(thing);
    if (found == Things().end()) {
        Protest("not its own, or was given back before", thing);
    }
    return found->second;
}

void TakeBack(const void* thing) {
    if (Things().erase(thing) == 0) {
        Protest("not its own, or was given back before", thing);
    }
}

std::uint32_t ThingsOut() {
    return static_cast<std::uint32_t>(Things().size());
}

void* AllocateBuffer(std::size_t size, const std::string& name) {
    void* buffer = std::malloc(size);
    if (!buffer) {
        std::abort();
    }
    GiveOut(buffer, name);
    return buffer;
}

void FreeBuffer(void* buffer) {
    if (buffer) {
        TakeBack(buffer);
        std::free(buffer);
    }
}
