#include "platform/linux/registry/regtree.h"

#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include "platform/linux/text/lettercase.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cstring>

namespace Platform {

namespace {

constexpr std::size_t LongestName = 255;
constexpr std::size_t DeepestPath = 512;

} // namespace

std::u16string FoldedName(std::u16string_view name) {
    std::u16string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), UpcaseCharacter);
    return folded;
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

const RegistryNode* FindNode(const RegistryNode& top, const std::vector<std::u16string>& names) {
    const RegistryNode* node = &top;
    for (const std::u16string& name : names) {
        node = node ? node->keys.Find(name) : nullptr;
    }
    return node;
}

void RemoveNode(RegistryNode& top, const std::vector<std::u16string>& names) {
    RegistryNode* node = &top;
    for (std::size_t i = 0; node && i + 1 < names.size(); ++i) {
        node = node->keys.Find(names[i]);
    }
    if (node && !names.empty()) {
        node->keys.Remove(names.back());
    }
}

RegistryNode& MakeNode(RegistryNode& top, const std::vector<std::u16string>& names) {
    RegistryNode* node = &top;
    for (const std::u16string& name : names) {
        node = &node->keys.Add(name);
    }
    return *node;
}

} // namespace Platform
