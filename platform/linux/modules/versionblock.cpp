#include "platform/linux/modules/versionblock.h"

#include "platform/linux/text/nativetext.h"
#include <cstring>
#include <optional>

namespace Platform {

namespace {

using Bytes = std::span<const std::byte>;

struct Node {
    std::u16string_view key;
    bool isText = false;
    std::uint32_t valueLength = 0; // as stored: characters for text, bytes otherwise
    Bytes value;
    Bytes children;
    std::size_t size = 0; // bytes up to the next node of the same parent
};

std::size_t Aligned(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

std::uint16_t Read16(Bytes bytes, std::size_t offset) {
    std::uint16_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

Bytes From(Bytes bytes, std::size_t offset) {
    return offset < bytes.size() ? bytes.subspan(offset) : Bytes();
}

// Reads the node at the start of `bytes`; nothing when its lengths don't fit.
std::optional<Node> ReadNode(Bytes bytes) {
    constexpr std::size_t keyStart = 6;
    if (bytes.size() < keyStart + 2) {
        return std::nullopt;
    }
    const std::size_t length = Read16(bytes, 0);
    if (length < keyStart + 2 || length > bytes.size()) {
        return std::nullopt;
    }
    Node node;
    node.size = Aligned(length);
    node.valueLength = Read16(bytes, 2);
    node.isText = Read16(bytes, 4) == 1;
    bytes = bytes.first(length);
    std::size_t end = keyStart;
    while (end + 2 <= length && Read16(bytes, end) != 0) {
        end += 2;
    }
    if (end + 2 > length) {
        return std::nullopt;
    }
    node.key = {reinterpret_cast<const char16_t*>(bytes.data() + keyStart), (end - keyStart) / 2};
    const Bytes rest = From(bytes, Aligned(end + 2));
    const std::size_t valueSize = node.valueLength * (node.isText ? sizeof(char16_t) : 1);
    if (valueSize > rest.size()) {
        return std::nullopt;
    }
    node.value = rest.first(valueSize);
    node.children = From(bytes, Aligned(Aligned(end + 2) + valueSize));
    return node;
}

std::optional<Node> FindChild(Bytes children, std::u16string_view key) {
    while (const std::optional<Node> node = ReadNode(children)) {
        if (NamesEqual(node->key, key)) {
            return node;
        }
        children = From(children, node->size);
    }
    return std::nullopt;
}

} // namespace

bool QueryVersionBlock(std::span<const std::byte> block, std::u16string_view path, const void*& value,
                       std::uint32_t& length) {
    std::optional<Node> node = ReadNode(block);
    while (node && !path.empty()) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        if (end > 0) {
            node = FindChild(node->children, path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    if (!node) {
        return false;
    }
    value = node->value.data();
    length = node->valueLength;
    return true;
}

} // namespace Platform
