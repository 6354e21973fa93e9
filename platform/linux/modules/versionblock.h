// The version block: a tree of nodes, each with a 16-bit length, value length and type, a wide key, and its value and
// children on 32-bit borders. Built here at compile time, so that the file carries the very bytes that a Windows
// resource would.
#pragma once

#include "platform/inc/resources.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Platform {

struct VersionString {
    std::u16string_view name;
    std::u16string_view value;
};

/// Finds a node's value by its path; see VerQueryValue. Lengths that point outside the block end the search.
bool QueryVersionBlock(std::span<const std::byte> block, std::u16string_view path, const void*& value,
                       std::uint32_t& length);

/// Writes a version block into a buffer of `Size` bytes; the bytes behind it stay zero.
template <std::size_t Size>
class VersionBlockBuilder {
public:
    /// `translation` is the language in the upper and the code page in the lower half, `key` the same in eight
    /// hexadecimal digits.
    constexpr std::array<std::byte, Size> Build(const FixedFileInfo& fixed, std::uint32_t translation,
                                                std::u16string_view key, std::span<const VersionString> strings) {
        const std::size_t root = Open(u"VS_VERSION_INFO", sizeof(FixedFileInfo), 0);
        PutFixed(fixed);
        Align();
        const std::size_t stringInfo = Open(u"StringFileInfo", 0, 1);
        const std::size_t table = Open(key, 0, 1);
        for (const VersionString& string : strings) {
            const std::size_t node = Open(string.name, string.value.size() + 1, 1);
            PutText(string.value);
            Close(node);
            Align();
        }
        Close(table);
        Close(stringInfo);
        const std::size_t varInfo = Open(u"VarFileInfo", 0, 1);
        const std::size_t node = Open(u"Translation", sizeof(translation), 0);
        Put32(translation >> 16 | translation << 16);
        Close(node);
        Close(varInfo);
        Close(root);
        return bytes;
    }

private:
    constexpr void Put16(std::size_t value) {
        bytes[used++] = static_cast<std::byte>(value & 0xFF);
        bytes[used++] = static_cast<std::byte>(value >> 8 & 0xFF);
    }

    constexpr void Put32(std::uint32_t value) {
        Put16(value & 0xFFFF);
        Put16(value >> 16);
    }

    constexpr void PutText(std::u16string_view text) {
        for (const char16_t c : text) {
            Put16(c);
        }
        Put16(0);
    }

    constexpr void PutFixed(const FixedFileInfo& fixed) {
        for (const std::uint32_t word :
             {fixed.dwSignature, fixed.dwStrucVersion, fixed.dwFileVersionMS, fixed.dwFileVersionLS,
              fixed.dwProductVersionMS, fixed.dwProductVersionLS, fixed.dwFileFlagsMask, fixed.dwFileFlags,
              fixed.dwFileOS, fixed.dwFileType, fixed.dwFileSubtype, fixed.dwFileDateMS, fixed.dwFileDateLS}) {
            Put32(word);
        }
    }

    constexpr void Align() { used = (used + 3) & ~std::size_t{3}; }

    constexpr std::size_t Open(std::u16string_view key, std::size_t valueLength, std::size_t type) {
        const std::size_t start = used;
        Put16(0);
        Put16(valueLength);
        Put16(type);
        PutText(key);
        Align();
        return start;
    }

    constexpr void Close(std::size_t start) {
        const std::size_t end = used;
        used = start;
        Put16(end - start);
        used = end;
    }

    std::array<std::byte, Size> bytes{};
    std::size_t used = 0;
};

} // namespace Platform
