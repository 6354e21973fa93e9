// A code page of one or two bytes a character as tables. They are made once from what the C library's converter reads,
// which takes its locks and its time, and are then only read: any thread may use a table without a lock.
#pragma once

#include "platform/linux/codepages.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Platform {

struct DecodedCharacter {
    std::size_t size; // bytes taken
    bool valid;
    char16_t character;
};

class CodePageTable {
public:
    /// The table of a page, made at first use and kept to the end of the process, for conversions happen while static
    /// objects are destroyed too; null if the C library lacks the page.
    static const CodePageTable* Of(const CodePage& page);

    /// Reads the character at the start of a text that isn't empty. What is undefined has a character too, by which it
    /// goes unless invalid text is refused.
    DecodedCharacter Read(std::string_view text) const;

    /// The bytes of a character (two if above FF), as its exact value or also as its substitute.
    std::optional<unsigned> Exact(char16_t c) const {
        return kinds[c] == Kind::Exact ? std::optional<unsigned>(codes[c]) : std::nullopt;
    }
    std::optional<unsigned> Nearest(char16_t c) const {
        return kinds[c] != Kind::None ? std::optional<unsigned>(codes[c]) : std::nullopt;
    }

private:
    enum class Kind : std::uint8_t { None, Exact, Substitute };
    static constexpr std::size_t ByteValues = 256;
    static constexpr char16_t Undefined = u'\uFFFF';
    using Row = std::array<char16_t, ByteValues>;

    explicit CodePageTable(const CodePage& codePage);
    bool Load();
    void LoadSingleBytes(class PageReader& reader);
    void LoadDoubleBytes(class PageReader& reader);
    void LoadUserAreas();
    void MakeCodes();
    void MakeSubstitutes();
    void AddExact(char16_t c, unsigned code);
    void AddSubstitutes(std::u16string_view pairs);
    void AddSubstitute(char16_t c, char16_t substitute);
    Row* DoubleRow(unsigned lead) { return rowOf[lead] == 0 ? nullptr : &rows[rowOf[lead] - 1u]; }
    const Row* DoubleRow(unsigned lead) const { return rowOf[lead] == 0 ? nullptr : &rows[rowOf[lead] - 1u]; }

    const CodePage& page;
    Row single{};
    std::array<bool, ByteValues> invalid{};
    std::array<std::uint8_t, ByteValues> rowOf{}; // 1 + index into rows for a lead byte, else 0
    std::vector<Row> rows;
    std::vector<std::uint16_t> codes;
    std::vector<Kind> kinds;
};

} // namespace Platform
