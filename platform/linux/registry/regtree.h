// The registry in memory: a tree of keys with values. Names are found without regard to case, keep the spelling they
// came with and stand in the order in which they were added.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Platform {

/// A name in the form in which names that differ only in case are equal.
std::u16string FoldedName(std::u16string_view name);

template <class TItem>
class NameTable {
public:
    /// Null if there is none.
    TItem* Find(std::u16string_view name) {
        const auto place = places.find(FoldedName(name));
        return place == places.end() ? nullptr : &entries[place->second]->item;
    }
    const TItem* Find(std::u16string_view name) const { return const_cast<NameTable*>(this)->Find(name); }

    /// The item of that name, a new one if there is none yet. It stays where it is until it is removed.
    TItem& Add(std::u16string_view name) {
        const auto [place, isNew] = places.try_emplace(FoldedName(name), entries.size());
        if (isNew) {
            entries.push_back(std::make_unique<Entry>(Entry{std::u16string(name), {}}));
        }
        return entries[place->second]->item;
    }

    void Remove(std::u16string_view name) {
        const auto place = places.find(FoldedName(name));
        if (place != places.end()) {
            entries[place->second] = nullptr;
            places.erase(place);
        }
    }

    template <class TAction>
    void ForEach(TAction action) const {
        for (const auto& entry : entries) {
            if (entry) {
                action(entry->name, entry->item);
            }
        }
    }

private:
    struct Entry {
        std::u16string name;
        TItem item;
    };

    std::vector<std::unique_ptr<Entry>> entries; // null where one was removed, so that removing takes no time
    std::unordered_map<std::u16string, std::size_t> places;
};

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
    NameTable<RegistryNode> keys;
};

/// Appends the names in a path such as `Software\Vendor`; repeated and closing separators don't count. Gives a Windows
/// code: a leading separator, a name that is too long or has a line break in it, and a path too deep are errors. The
/// depth is what keeps recursion over a tree in bounds.
std::uint32_t SplitKeyPath(std::u16string_view path, std::vector<std::u16string>& names);

/// The node at the end of a path; null if there is none.
const RegistryNode* FindNode(const RegistryNode& top, const std::vector<std::u16string>& names);
/// Takes the node at the end of a path away, with all below it.
void RemoveNode(RegistryNode& top, const std::vector<std::u16string>& names);
/// The node at the end of a path, made where it is not there.
RegistryNode& MakeNode(RegistryNode& top, const std::vector<std::u16string>& names);

} // namespace Platform
