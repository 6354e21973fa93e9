#include "platform/linux/registry/regtree.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include "platform/linux/text/lettercase.h"
#include <algorithm>
#include <cstring>

namespace Platform {

namespace {

constexpr std::size_t LongestName = 255;
constexpr std::size_t DeepestPath = 512;

} // namespace

bool NameOrder::operator()(std::u16string_view a, std::u16string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char16_t x, char16_t y) { return UpcaseCharacter(x) < UpcaseCharacter(y); });
}

bool IsText(std::uint32_t type) {
    return type == RegSz || type == RegExpandSz || type == RegMultiSz;
}

std::string BytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::u16string TextOf(std::string_view bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

std::uint32_t SplitKeyPath(std::u16string_view path, std::vector<std::u16string>& names) {
    if (path.starts_with(u'\\')) {
        return ErrorBadPathname;
    }
    while (!path.empty()) {
        const std::u16string_view name = path.substr(0, path.find(u'\\'));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (name.empty()) {
            continue;
        }
        const bool hasLineBreak = name.find_first_of(u"\r\n") != std::u16string_view::npos;
        if (name.size() > LongestName || hasLineBreak || names.size() == DeepestPath) {
            return ErrorInvalidParameter;
        }
        names.emplace_back(name);
    }
    return ErrorSuccess;
}

const RegistryNode* FindNode(const RegistryNode& top, std::span<const std::u16string> names) {
    const RegistryNode* node = &top;
    for (const std::u16string& name : names) {
        const auto place = node->keys.find(name);
        if (place == node->keys.end()) {
            return nullptr;
        }
        node = place->second.get();
    }
    return node;
}

void RemoveNode(RegistryNode& top, std::span<const std::u16string> names) {
    if (!names.empty() && FindNode(top, names)) {
        MakeNode(top, names.first(names.size() - 1)).keys.erase(names.back());
    }
}

RegistryNode& MakeNode(RegistryNode& top, std::span<const std::u16string> names) {
    RegistryNode* node = &top;
    for (const std::u16string& name : names) {
        std::unique_ptr<RegistryNode>& below = node->keys[name];
        if (!below) {
            below = std::make_unique<RegistryNode>();
        }
        node = below.get();
    }
    return *node;
}

} // namespace Platform
