// What must hold of any file of the Linux registry when a value in it is set.
#pragma once

#include "platform/linux/registry/regfile.h"
#include "platform/linux/registry/regstatements.h"
#include "platform/linux/text/lettercase.h"
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

inline std::u16string FoldedName(std::u16string_view name) {
    std::u16string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), &Platform::UpcaseCharacter);
    return folded;
}

/// What a file says, and the lines that say nothing to the reader.
struct RegistryContent {
    using Values = std::map<std::u16string, Platform::RegistryValue>; // by the name without regard to case

    std::map<std::vector<std::u16string>, Values> keys;
    std::multiset<std::u16string> lines;

    explicit RegistryContent(std::string_view bytes) {
        Platform::RegistryNode top;
        Platform::ReadRegistryText(bytes, top);
        std::vector<std::u16string> path;
        Add(top, path);
        const std::u16string text = Platform::DecodeRegistryText(bytes);
        Platform::RegistryReader reader(text);
        for (Platform::RegistryStatement statement; reader.Next(statement);) {
            using Kind = Platform::RegistryStatement::Kind;
            if (statement.kind == Kind::Nothing || statement.kind == Kind::OpenText) {
                std::u16string line = text.substr(statement.begin, statement.end - statement.begin);
                if (statement.isNarrow) {
                    line.replace(statement.data - statement.begin, statement.dataEnd - statement.data,
                                 Platform::RegistryHeader);
                }
                for (std::size_t at = 0; at < line.size();) {
                    const std::size_t end = std::min(line.find_first_of(u"\r\n", at), line.size());
                    lines.insert(line.substr(at, end - at));
                    at = end + 1;
                }
            }
        }
    }

private:
    void Add(const Platform::RegistryNode& node, std::vector<std::u16string>& path) {
        for (const auto& [name, key] : node.keys) {
            path.push_back(FoldedName(name));
            Values& values = keys[path];
            for (const auto& [valueName, value] : key->values) {
                values[FoldedName(valueName)] = value;
            }
            Add(*key, path);
            path.pop_back();
        }
    }
};

/// Setting a value changes that value and nothing else, and no line is lost.
inline bool ChangesThatAlone(std::string_view bytes, const std::vector<std::u16string>& names, std::u16string_view name,
                             const Platform::RegistryValue& value) {
    RegistryContent expected(bytes);
    std::vector<std::u16string> path;
    for (const std::u16string& step : names) {
        path.push_back(FoldedName(step));
        expected.keys[path];
    }
    expected.keys[path][FoldedName(name)] = value;
    const RegistryContent changed(Platform::SetRegistryValue(bytes, names, name, value));
    // More lines come from the comments within a value.
    return changed.keys == expected.keys &&
           std::includes(changed.lines.begin(), changed.lines.end(), expected.lines.begin(), expected.lines.end());
}
