#include "platform/linux/registry/regfile.h"

#include "platform/linux/registry/regstatements.h"
#include "platform/linux/registry/regwriter.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <optional>
#include <span>

namespace Platform {

namespace {

using Kind = RegistryStatement::Kind;

constexpr std::string_view WideMark = "\xFF\xFE";
constexpr char16_t Mark = u'\uFEFF';

std::string EncodeText(std::u16string text, bool isWide) {
    if (!isWide) {
        std::string bytes = NativeName(text);
        if (WideName(bytes) == text) {
            return bytes;
        }
    }
    if (!text.starts_with(Mark)) {
        text.insert(text.begin(), Mark);
    }
    return BytesOf(text);
}

bool IsSamePath(std::span<const std::u16string> a, std::span<const std::u16string> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), NamesEqual);
}

class Editor {
public:
    explicit Editor(std::string_view bytes)
        : text(DecodeRegistryText(bytes)), isWide(bytes.empty() || bytes.starts_with(WideMark)) {
        if (bytes.empty()) {
            text = RegistryHeader;
            text += u"\r\n";
        }
        if (text.find(u'\r') == std::u16string::npos && text.find(u'\n') != std::u16string::npos) {
            lineBreak = u"\n";
        }
    }

    std::string Bytes() const { return EncodeText(text, isWide); }

    void AppendKey(const std::vector<std::u16string>& names) {
        if (!text.empty() && !text.ends_with(u'\r') && !text.ends_with(u'\n')) {
            text += lineBreak;
        }
        text += lineBreak;
        text += u'[';
        for (const std::u16string& name : names) {
            text += &name == names.data() ? u"" : u"\\";
            text += name;
        }
        text += u']';
        text += lineBreak;
    }

    /// Brings a file under the old header to the new one.
    void Renew() {
        std::vector<RegistryStatement> old;
        RegistryReader reader(text);
        for (RegistryStatement statement; reader.Next(statement);) {
            if (statement.isNarrow) {
                old.push_back(std::move(statement));
            }
        }
        std::reverse(old.begin(), old.end()); // a change moves what stands behind it
        for (const RegistryStatement& statement : old) {
            ReplaceData(statement, statement.value);
        }
    }

    void SetValue(const std::vector<std::u16string>& names, std::u16string_view name, const RegistryValue& value) {
        const std::optional<RegistryStatement> place = FindPlace(names, name);
        if (place && IsValue(*place, name)) {
            ReplaceData(*place, value);
            return;
        }
        std::u16string line;
        AppendValueName(line, name);
        AppendValueData(line, value, lineBreak);
        if (place) {
            text.insert(place->end, lineBreak + line);
        } else {
            AppendKey(names);
            text += line + lineBreak;
        }
    }

private:
    std::u16string text;
    bool isWide;
    std::u16string lineBreak = u"\r\n";

    static bool IsValue(const RegistryStatement& statement) {
        return statement.kind == Kind::Value || statement.kind == Kind::RemovedValue;
    }
    static bool IsValue(const RegistryStatement& statement, std::u16string_view name) {
        return IsValue(statement) && NamesEqual(statement.name, name);
    }

    // The last statement about a value, or the one behind which it belongs; none where the key has to be named anew.
    std::optional<RegistryStatement> FindPlace(const std::vector<std::u16string>& names, std::u16string_view name) {
        std::optional<RegistryStatement> place;
        bool hasOpenText = false;
        RegistryReader reader(text);
        for (RegistryStatement statement; reader.Next(statement);) {
            hasOpenText = hasOpenText || statement.kind == Kind::OpenText;
            if (statement.kind == Kind::RemovedKey && statement.names.size() <= names.size() &&
                IsSamePath(statement.names, std::span(names).first(statement.names.size()))) {
                place.reset();
            }
            const bool counts = statement.kind == Kind::Key || IsValue(statement);
            if (counts && IsSamePath(reader.Key(), names) &&
                (!place || !IsValue(*place, name) || IsValue(statement, name))) {
                place = std::move(statement);
            }
        }
        // An unclosed text may end at a quote of the default value's old text, and would run on if that were exchanged.
        return hasOpenText && name.empty() ? std::nullopt : place;
    }

    // Comments between the lines of the old data go behind the new ones.
    void ReplaceData(const RegistryStatement& statement, const RegistryValue& value) {
        const std::u16string_view whole = text;
        std::u16string fresh(whole.substr(statement.begin, statement.data - statement.begin));
        if (IsValue(statement)) {
            AppendValueData(fresh, value, lineBreak);
        } else {
            fresh += RegistryHeader;
        }
        std::u16string_view old = whole.substr(statement.data, statement.dataEnd - statement.data);
        fresh += whole.substr(statement.dataEnd, statement.end - statement.dataEnd);
        while (!old.starts_with(u'"') && old.find(u';') != std::u16string_view::npos) {
            old.remove_prefix(old.find(u';'));
            const std::u16string_view comment = old.substr(0, old.find_first_of(u"\r\n"));
            fresh.append(lineBreak).append(comment);
            old.remove_prefix(comment.size());
        }
        text.replace(statement.begin, statement.end - statement.begin, fresh);
    }
};

} // namespace

std::u16string DecodeRegistryText(std::string_view bytes) {
    if (!bytes.starts_with(WideMark)) {
        return WideName(bytes);
    }
    std::string whole(bytes);
    whole.resize(whole.size() + whole.size() % sizeof(char16_t)); // an odd last byte is kept
    return TextOf(whole);
}

void ReadRegistryText(std::string_view bytes, RegistryNode& top) {
    const std::u16string text = DecodeRegistryText(bytes);
    RegistryNode* node = nullptr; // that values go to
    RegistryReader reader(text);
    for (RegistryStatement statement; reader.Next(statement);) {
        switch (statement.kind) {
        case Kind::Key:
            node = statement.names.empty() ? nullptr : &MakeNode(top, statement.names);
            break;
        case Kind::RemovedKey:
            node = nullptr;
            RemoveNode(top, statement.names);
            break;
        case Kind::Value:
            if (node) {
                node->values[std::move(statement.name)] = std::move(statement.value);
            }
            break;
        case Kind::RemovedValue:
            if (node) {
                node->values.erase(statement.name);
            }
            break;
        case Kind::Nothing:
        case Kind::OpenText:
            break;
        }
    }
}

std::string AddRegistryKey(std::string_view bytes, const std::vector<std::u16string>& names) {
    Editor editor(bytes);
    editor.AppendKey(names);
    return editor.Bytes();
}

std::string SetRegistryValue(std::string_view bytes, const std::vector<std::u16string>& names, std::u16string_view name,
                             const RegistryValue& value) {
    Editor editor(bytes);
    editor.Renew();
    editor.SetValue(names, name, value);
    return editor.Bytes();
}

} // namespace Platform
