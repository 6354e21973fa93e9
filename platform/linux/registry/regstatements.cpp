#include "platform/linux/registry/regstatements.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>

namespace Platform {

namespace {

constexpr std::u16string_view Blanks = u" \t";
constexpr std::u16string_view LineBreaks = u"\r\n";
constexpr std::u16string_view NarrowHeader = u"REGEDIT4";

constexpr std::u16string_view Roots[] = {u"HKEY_CLASSES_ROOT", u"HKEY_CURRENT_USER", u"HKEY_LOCAL_MACHINE",
                                         u"HKEY_USERS", u"HKEY_CURRENT_CONFIG"};

void SkipBlanks(std::u16string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(Blanks), rest.size()));
}

// Whether the rest of a line is empty or a comment.
bool AtEnd(std::u16string_view rest) {
    SkipBlanks(rest);
    return rest.empty() || rest[0] == u';';
}

// Letters count without regard to case.
bool Take(std::u16string_view& rest, std::u16string_view expected) {
    if (!NamesEqual(rest.substr(0, expected.size()), expected)) {
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

char16_t Unescaped(char16_t c) {
    if (c == u'n') {
        return u'\n';
    }
    return c == u'r' ? u'\r' : c;
}

// A text in quotes, from the first quote on.
std::optional<std::u16string> TakeQuoted(std::u16string_view& rest) {
    std::u16string text;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == u'"') {
            rest.remove_prefix(i + 1);
            return text;
        }
        if (rest[i] != u'\\') {
            text += rest[i];
        } else if (++i < rest.size()) {
            text += Unescaped(rest[i]);
        }
    }
    return std::nullopt;
}

enum class HexLine { Ends, GoesOn, Malformed };

// Takes what it can; blanks and a comment at the end of the line are left.
HexLine TakeHexBytes(std::u16string_view& rest, std::string& bytes) {
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
        std::u16string_view behind = rest;
        SkipBlanks(behind);
        if (Take(behind, u",")) {
            rest = behind;
        } else if (!AtEnd(behind)) {
            return HexLine::Malformed;
        }
    }
    return HexLine::Ends;
}

} // namespace

RegistryReader::RegistryReader(std::u16string_view wholeText) : whole(wholeText), text(wholeText) {
    Take(text, u"\uFEFF");
}

std::size_t RegistryReader::OffsetOf(std::u16string_view rest) const {
    return static_cast<std::size_t>(rest.data() - whole.data());
}

bool RegistryReader::Next(RegistryStatement& statement) {
    if (text.empty()) {
        return false;
    }
    statement = RegistryStatement();
    statement.begin = OffsetOf(text);
    std::u16string_view line = TakeLine();
    SkipBlanks(line);
    if (line.starts_with(u'[')) {
        statement.kind = ReadKey(line, statement);
    } else if (line.starts_with(u'"') || line.starts_with(u'@')) {
        statement.kind = ReadValue(line, statement);
    } else {
        ReadHeader(line, statement);
    }
    statement.end = lineEnd;
    return true;
}

std::u16string_view RegistryReader::TakeLine() {
    const std::u16string_view line = text.substr(0, text.find_first_of(LineBreaks));
    text.remove_prefix(line.size());
    lineEnd = OffsetOf(text);
    if (!Take(text, u"\r\n")) {
        text.remove_prefix(std::min<std::size_t>(1, text.size()));
    }
    return line;
}

void RegistryReader::ReadHeader(std::u16string_view line, RegistryStatement& statement) {
    const bool isOld = line.starts_with(NarrowHeader);
    const std::u16string_view header = isOld ? NarrowHeader : RegistryHeader;
    if (line.starts_with(header) && AtEnd(line.substr(header.size()))) {
        isNarrow = isOld;
        statement.isNarrow = isOld;
        statement.data = OffsetOf(line);
        statement.dataEnd = statement.data + header.size();
    }
}

// A name may hold a bracket: the last one of the line counts.
RegistryStatement::Kind RegistryReader::ReadKey(std::u16string_view line, RegistryStatement& statement) {
    key.clear();
    const std::size_t end = line.rfind(u']');
    std::u16string_view path = line.substr(1, end == std::u16string_view::npos ? 0 : end - 1);
    const bool isRemoval = Take(path, u"-");
    const std::u16string_view rootName = path.substr(0, path.find(u'\\'));
    const auto* const root = std::find_if(std::begin(Roots), std::end(Roots),
                                          [&](std::u16string_view name) { return NamesEqual(name, rootName); });
    path.remove_prefix(std::min(rootName.size() + 1, path.size()));
    if (root == std::end(Roots)) {
        return Kind::Key;
    }
    std::vector<std::u16string> names{std::u16string(*root)};
    if (SplitKeyPath(path, names) != ErrorSuccess || (isRemoval && names.size() == 1)) { // a root stays
        return Kind::Key;
    }
    statement.names = names;
    if (isRemoval) {
        return Kind::RemovedKey;
    }
    key = std::move(names);
    return Kind::Key;
}

RegistryStatement::Kind RegistryReader::ReadValue(std::u16string_view line, RegistryStatement& statement) {
    std::optional<std::u16string> name = Take(line, u"@") ? std::u16string() : TakeQuoted(line);
    SkipBlanks(line);
    if (!name || !Take(line, u"=")) {
        return Kind::Nothing;
    }
    SkipBlanks(line);
    statement.name = std::move(*name);
    statement.data = OffsetOf(line);
    if (line.starts_with(u'"')) {
        return ReadText(statement);
    }
    if (!Take(line, u"-")) {
        return ReadNumber(line, statement);
    }
    statement.dataEnd = OffsetOf(line);
    return AtEnd(line) ? Kind::RemovedValue : Kind::Nothing;
}

RegistryStatement::Kind RegistryReader::ReadText(RegistryStatement& statement) {
    std::u16string_view behind = whole.substr(statement.data);
    const std::optional<std::u16string> quoted = TakeQuoted(behind);
    if (!quoted) {
        return Kind::OpenText;
    }
    statement.dataEnd = OffsetOf(behind);
    const std::u16string_view line = behind.substr(0, behind.find_first_of(LineBreaks));
    const bool hasLineBreak = statement.dataEnd > lineEnd;
    // A line that only lacks its quote would take the next ones for its text, if it could end within one of them.
    if (hasLineBreak && !line.empty()) {
        return Kind::OpenText;
    }
    if (!AtEnd(line)) {
        return Kind::Nothing;
    }
    if (hasLineBreak) {
        text = behind;
        TakeLine();
    }
    statement.value = {RegSz, BytesOf({quoted->c_str(), quoted->size() + 1})};
    return Kind::Value;
}

RegistryStatement::Kind RegistryReader::ReadNumber(std::u16string_view line, RegistryStatement& statement) {
    if (Take(line, u"dword:")) {
        SkipBlanks(line);
        const std::optional<std::uint32_t> number = TakeHex(line, 8);
        if (!number || !AtEnd(line)) {
            return Kind::Nothing;
        }
        statement.value = {RegDword, {reinterpret_cast<const char*>(&*number), sizeof(*number)}};
        statement.dataEnd = OffsetOf(line);
        return Kind::Value;
    }
    if (Take(line, u"hex:")) {
        return ReadHex(RegBinary, line, statement);
    }
    const std::optional<std::uint32_t> type = Take(line, u"hex(") ? TakeHex(line, 8) : std::nullopt;
    return type && Take(line, u"):") ? ReadHex(*type, line, statement) : Kind::Nothing;
}

RegistryStatement::Kind RegistryReader::ReadHex(std::uint32_t type, std::u16string_view line,
                                                RegistryStatement& statement) {
    RegistryValue& value = statement.value;
    value.type = type;
    if (!TakeHexLines(line, value.bytes)) {
        return Kind::Nothing;
    }
    statement.dataEnd = OffsetOf(line);
    statement.isNarrow = isNarrow && IsText(type);
    if (statement.isNarrow) {
        value.bytes = BytesOf(Utf16Text(value.bytes));
    }
    return Kind::Value;
}

// A line that can't go on the value is left for what it is by itself.
bool RegistryReader::TakeHexLines(std::u16string_view& line, std::string& bytes) {
    HexLine state = TakeHexBytes(line, bytes);
    while (state == HexLine::GoesOn && !text.empty()) {
        std::u16string_view ahead = text.substr(0, text.find_first_of(LineBreaks));
        SkipBlanks(ahead);
        if (AtEnd(ahead)) {
            TakeLine();
            continue;
        }
        if (HexDigit(ahead[0]) < 0 && ahead[0] != u'\\') {
            return false;
        }
        line = TakeLine();
        state = TakeHexBytes(line, bytes);
    }
    return state == HexLine::Ends;
}

} // namespace Platform
