// The statements of the registry's text form, one after the other, each with its place, so that one of them can be
// changed and all the rest stays as it stands.
//
//   Windows Registry Editor Version 5.00     or REGEDIT4, whose texts in hex are narrow
//   [HKEY_CURRENT_USER\Software\Vendor]      a key, made with those on the way to it
//   "name"="C:\\a \"b\"\r\n"                 REG_SZ; \r and \n are line breaks, \ before any other character keeps that
//   "name"="first line                       a text may have its line breaks as they are; nothing follows its end then
//   second line"
//   @="text"                                 the default value
//   "name"=dword:0000002a                    REG_DWORD
//   "name"=hex:01,02,\                       REG_BINARY; a line that ends with \ goes on in the next one that isn't
//     03                                     blank or a comment
//   "name"=hex(7):61,00,00,00,00,00          any type, its number in hexadecimal
//   "name"=-                                 the value goes
//   [-HKEY_CURRENT_USER\Software\Old]        the key goes, and all below it
//   ; comment
#pragma once

#include "platform/linux/registry/regtree.h"
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

constexpr std::u16string_view RegistryHeader = u"Windows Registry Editor Version 5.00";

struct RegistryStatement {
    enum class Kind {
        Nothing,  // a blank line, a comment, the header, or a line that makes no sense
        OpenText, // makes no sense either: the quotes around its text don't end, or not at the end of a line
        Key,
        RemovedKey,
        Value,
        RemovedValue
    };

    Kind kind = Kind::Nothing;
    std::vector<std::u16string> names; // of the key that is named, the root first; empty if there can be no such key
    std::u16string name;               // of the value
    RegistryValue value;
    bool isNarrow = false; // the old header, or a value whose bytes would mean something else under the new one

    // Offsets in the text.
    std::size_t begin = 0;
    std::size_t data = 0; // what stands behind the = of a value, and the header
    std::size_t dataEnd = 0;
    std::size_t end = 0; // of the last line, before its line break
};

class RegistryReader {
public:
    /// The text must outlive the reader. Reading it all takes time in proportion to its size.
    explicit RegistryReader(std::u16string_view wholeText);

    /// False at the end of the text.
    bool Next(RegistryStatement& statement);

    /// The key that the values just read belong to; empty where there is none.
    const std::vector<std::u16string>& Key() const { return key; }

private:
    using Kind = RegistryStatement::Kind;

    std::u16string_view whole;
    std::u16string_view text; // what has not been read yet
    std::size_t lineEnd = 0;  // of the line read last
    std::vector<std::u16string> key;
    bool isNarrow = false;

    std::size_t OffsetOf(std::u16string_view rest) const;
    std::u16string_view TakeLine();
    void ReadHeader(std::u16string_view line, RegistryStatement& statement);
    Kind ReadKey(std::u16string_view line, RegistryStatement& statement);
    Kind ReadValue(std::u16string_view line, RegistryStatement& statement);
    Kind ReadText(RegistryStatement& statement);
    Kind ReadNumber(std::u16string_view line, RegistryStatement& statement);
    Kind ReadHex(std::uint32_t type, std::u16string_view line, RegistryStatement& statement);
    bool TakeHexLines(std::u16string_view& line, std::string& bytes);
};

} // namespace Platform
