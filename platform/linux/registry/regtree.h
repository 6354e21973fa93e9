// The registry in memory: a tree of keys with values. Names are found without regard to case, keep the spelling they
// came with and stand in the order of their capitals.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

/// The order of names, in which those that differ only in case are equal.
struct NameOrder {
    using is_transparent = void;
    bool operator()(std::u16string_view a, std::u16string_view b) const;
};

template <class TItem>
using NameTable = std::map<std::u16string, TItem, NameOrder>;

struct RegistryValue {
    std::uint32_t type = 0;
    std::string bytes;

    bool operator==(const RegistryValue&) const = default;
};

/// The types whose bytes are characters.
bool IsText(std::uint32_t type);

/// The bytes of UTF-16 and back; an odd last byte is left out.
std::string BytesOf(std::u16string_view text);
std::u16string TextOf(std::string_view bytes);

/// A key. The default value has the empty name.
struct RegistryNode {
    NameTable<RegistryValue> values;
    NameTable<std::unique_ptr<RegistryNode>> keys; // none is null
};

/// Appends the names in a path such as `Software\Vendor`; repeated and closing separators don't count. Gives a Windows
/// code: a leading separator, a name that is too long or has a line break in it, and a path too deep are errors. The
/// depth is what keeps recursion over a tree in bounds.
std::uint32_t SplitKeyPath(std::u16string_view path, std::vector<std::u16string>& names);

/// The node at the end of a path; null if there is none.
const RegistryNode* FindNode(const RegistryNode& top, std::span<const std::u16string> names);
/// Takes the node at the end of a path away, with all below it.
void RemoveNode(RegistryNode& top, std::span<const std::u16string> names);
/// The node at the end of a path, made where it is not there.
RegistryNode& MakeNode(RegistryNode& top, std::span<const std::u16string> names);

} // namespace Platform
