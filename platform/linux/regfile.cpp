#include "platform/linux/regfile.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include "platform/linux/nativetext.h"
#include <algorithm>
#include <cstring>
#include <optional>

namespace Platform {

namespace {

constexpr std::u16string_view Blanks = u" \t";
constexpr std::u16string_view NarrowHeader = u"REGEDIT4";

constexpr std::u16string_view Roots[] = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER", u"HKEY_LOCAL_MACHINE",
                                         u"HKEY_USERS", u"HKEY_CURRENT_CONFIG"};

std::u16string DecodeText(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        bytes.remove_prefix(2);
        std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
        return text;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    return Utf16Text(bytes);
}

std::string BytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

void SkipBlanks(std::u16string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(Blanks), rest.size()));
}

// Nothing of a line is left but perhaps a comment.
bool AtEnd(std::u16string_view rest) {
    SkipBlanks(rest);
    return rest.empty() || rest[0] == u';';
}

bool Take(std::u16string_view& rest, std::u16string_view expected) {
    if (!rest.starts_with(expected)) {
        return false;
    }
    rest.remove_prefix(expected.size());
    return true;
}

int HexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    const int letter = c | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// A number of one to `most` digits.
std::optional<std::uint32_t> TakeHex(std::u16string_view& rest, std::size_t most) {
    std::uint32_t number = 0;
    std::size_t count = 0;
    while (count < most && count < rest.size() && HexDigit(rest[count]) >= 0) {
        number = number << 4 | static_cast<std::uint32_t>(HexDigit(rest[count]));
        ++count;
    }
    rest.remove_prefix(count);
    return count > 0 ? std::optional(number) : std::nullopt;
}

// A text in quotes, from the first quote on.
std::optional<std::u16string> TakeQuoted(std::u16string_view& rest) {
    std::u16string text;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == u'"') {
            rest.remove_prefix(i + 1);
            return text;
        }
        if (rest[i] == u'\\' && ++i == rest.size()) {
            break;
        }
        text += rest[i];
    }
    return std::nullopt;
}

enum class HexLine { Ends, GoesOn, Malformed };

HexLine TakeHexBytes(std::u16string_view rest, std::string& bytes) {
    while (!AtEnd(rest)) {
        SkipBlanks(rest);
        if (Take(rest, u"\\")) {
            return AtEnd(rest) ? HexLine::GoesOn : HexLine::Malformed;
        }
        const std::optional<std::uint32_t> byte = TakeHex(rest, 2);
        if (!byte) {
            return HexLine::Malformed;
        }
        bytes += static_cast<char>(*byte);
        SkipBlanks(rest);
        if (!Take(rest, u",") && !AtEnd(rest)) {
            return HexLine::Malformed;
        }
    }
    return HexLine::Ends;
}

class Reader {
public:
    Reader(std::u16string_view wholeText, RegistryNode& topNode) : text(wholeText), top(topNode) {}

    void Read() {
        while (!text.empty()) {
            std::u16string_view line = TakeLine();
            SkipBlanks(line);
            if (line.starts_with(u'[')) {
                current = ReadKey(line);
            } else if (line.starts_with(u'"') || line.starts_with(u'@')) {
                ReadValue(line);
            } else if (line.starts_with(NarrowHeader) && AtEnd(line.substr(NarrowHeader.size()))) {
                isNarrow = true;
            }
        }
    }

private:
    std::u16string_view text; // what has not been read yet
    RegistryNode& top;
    RegistryNode* current = nullptr; // the key that values go to; null where there is none
    bool isNarrow = false;

    std::u16string_view TakeLine() {
        const std::u16string_view line = text.substr(0, text.find_first_of(u"\r\n"));
        text.remove_prefix(line.size());
        if (!Take(text, u"\r\n")) {
            text.remove_prefix(std::min<std::size_t>(1, text.size()));
        }
        return line;
    }

    // The key of a line in brackets; null for none. A name may hold a bracket: the last one of the line counts.
    RegistryNode* ReadKey(std::u16string_view line) {
        const std::size_t end = line.rfind(u']');
        if (end == std::u16string_view::npos) {
            return nullptr;
        }
        std::u16string_view path = line.substr(1, end - 1);
        const bool isRemoval = Take(path, u"-");
        const std::u16string_view rootName = path.substr(0, path.find(u'\\'));
        const auto* const root = std::find_if(std::begin(Roots), std::end(Roots),
                                              [&](std::u16string_view name) { return NamesEqual(name, rootName); });
        path.remove_prefix(std::min(rootName.size() + 1, path.size()));
        if (root == std::end(Roots)) {
            return nullptr;
        }
        std::vector<std::u16string> names{std::u16string(*root)};
        if (SplitKeyPath(path, names) != ErrorSuccess) {
            return nullptr;
        }
        if (!isRemoval) {
            return &MakeNode(top, names);
        }
        if (names.size() > 1) { // a root stays
            RemoveNode(top, names);
        }
        return nullptr;
    }

    void ReadValue(std::u16string_view line) {
        const std::optional<std::u16string> name = Take(line, u"@") ? std::u16string() : TakeQuoted(line);
        SkipBlanks(line);
        if (!name || !Take(line, u"=")) {
            return;
        }
        SkipBlanks(line);
        if (Take(line, u"-")) {
            if (current && AtEnd(line)) {
                current->values.Remove(*name);
            }
            return;
        }
        std::optional<RegistryValue> value = ReadData(line);
        if (current && value) {
            current->values.Add(*name) = std::move(*value);
        }
    }

    std::optional<RegistryValue> ReadData(std::u16string_view line) {
        if (line.starts_with(u'"')) {
            const std::optional<std::u16string> quoted = TakeQuoted(line);
            if (!quoted || !AtEnd(line)) {
                return std::nullopt;
            }
            return RegistryValue{RegSz, BytesOf({quoted->c_str(), quoted->size() + 1})};
        }
        if (Take(line, u"dword:")) {
            SkipBlanks(line);
            const std::optional<std::uint32_t> number = TakeHex(line, 8);
            if (!number || !AtEnd(line)) {
                return std::nullopt;
            }
            return RegistryValue{RegDword, {reinterpret_cast<const char*>(&*number), sizeof(*number)}};
        }
        if (Take(line, u"hex:")) {
            return ReadHex(RegBinary, line);
        }
        const std::optional<std::uint32_t> type = Take(line, u"hex(") ? TakeHex(line, 8) : std::nullopt;
        return type && Take(line, u"):") ? ReadHex(*type, line) : std::nullopt;
    }

    // A line that can't go on the value is left for what it is by itself; the value then makes no sense.
    std::optional<RegistryValue> ReadHex(std::uint32_t type, std::u16string_view line) {
        RegistryValue value{type, {}};
        HexLine state = TakeHexBytes(line, value.bytes);
        while (state == HexLine::GoesOn) {
            std::u16string_view ahead = text;
            SkipBlanks(ahead);
            const bool isHex = !ahead.empty() && (HexDigit(ahead[0]) >= 0 || ahead[0] == u'\\');
            state = isHex ? TakeHexBytes(TakeLine(), value.bytes) : HexLine::Malformed;
        }
        if (state == HexLine::Malformed) {
            return std::nullopt;
        }
        if (isNarrow && (type == RegSz || type == RegExpandSz || type == RegMultiSz)) {
            value.bytes = BytesOf(Utf16Text(value.bytes));
        }
        return value;
    }
};

} // namespace

void ReadRegistryText(std::string_view bytes, RegistryNode& top) {
    const std::u16string text = DecodeText(bytes);
    Reader(text, top).Read();
}

} // namespace Platform
