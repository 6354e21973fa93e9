#include "foundation/inc/commandlinefo.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/textstream.h"
#include "platform/inc/text.h"
#include <algorithm>
#include <string_view>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\commandlinefo";
constexpr char16_t Quote = u'"';

// The run-time decides. It says the same of ASCII in every locale, so that it need not be asked for that.
bool IsWhiteSpace(char16_t c) {
    return c < 0x80 ? c == u' ' || (c >= u'\t' && c <= u'\r') : Platform::iswspace(c);
}

/// Reads the tokens of one text, one after the other.
class CTokenReader {
public:
    explicit CTokenReader(const CUnicodeString& line) : at(line.Text()), end(at + line.Length()) {}

    bool Next(CUnicodeString& token) {
        at = std::find_if_not(at, end, &IsWhiteSpace);
        if (at == end) {
            return false;
        }
        token.Clear();
        bool quoted = false;
        while (at != end && (quoted || !IsWhiteSpace(*at))) {
            if (*at != Quote) {
                const char16_t* run = at;
                at = quoted ? std::find(at, end, Quote) : EndOfPlainRun(at);
                token.Append(run, static_cast<std::int32_t>(at - run));
            } else if (quoted && end - at > 1 && at[1] == Quote) {
                token += Quote;
                at += 2;
            } else {
                quoted = !quoted;
                ++at;
            }
        }
        return true;
    }

private:
    const char16_t* at;
    const char16_t* end;

    const char16_t* EndOfPlainRun(const char16_t* first) const {
        return std::find_if(first, end, [](char16_t c) { return c == Quote || IsWhiteSpace(c); });
    }
};

/// What a token says of an option. The name is a part of the token, or empty; the value is the rest from an index on.
struct COptionParts {
    std::u16string_view name;
    std::int32_t value;
};

COptionParts PartsOf(const CUnicodeString& token) {
    const std::u16string_view text = token.View();
    if (text.size() < 2 || (text[0] != u'/' && text[0] != u'-')) {
        return {{}, 0};
    }
    const std::size_t colon = std::min(text.find(u':', 1), text.size());
    return {text.substr(1, colon - 1), static_cast<std::int32_t>(std::min(colon + 1, text.size()))};
}

} // namespace

void SplitCommandLine(CArray<CUnicodeString>& target, const CUnicodeString& line) {
    CCommandLineParser parser;
    parser.Tokenize(line);
    parser.ClassifyTokens();
    const std::int32_t count = parser.Tokens.Size();
    target.Reserve(target.Size() + count);
    for (std::int32_t i = 0; i < count; ++i) {
        target.Append(parser.GetToken(i));
    }
}

void CCommandLineParser::Tokenize(const CUnicodeString& text) {
    CTokenReader reader(text);
    CUnicodeString token;
    while (reader.Next(token)) {
        AddToken(std::move(token));
    }
}

void CCommandLineParser::AddToken(CUnicodeString&& token) {
    if (token.Length() < 2 || token[0] != u'@') {
        Tokens.Append(std::move(token));
    } else if (token[1] == u'@') {
        Tokens.Append(token.Mid(1));
    } else {
        AddResponseFile(token.Mid(1));
    }
}

void CCommandLineParser::AddResponseFile(const CUnicodeString& path) {
    struct CNesting {
        explicit CNesting(std::int32_t& toCount) : depth(toCount) { ++depth; }
        ~CNesting() { --depth; }
        CNesting(const CNesting&) = delete;
        CNesting& operator=(const CNesting&) = delete;
        std::int32_t& depth;
    };
    if (openResponseFiles > MostNestedResponseFiles || responseFiles == MostResponseFiles) {
        CUnicodeString fullName = path;
        FileSystem::GetFullName(fullName);
        GenerateFileCauseException(CauseTooManyOpenFiles, fullName);
    }
    ++responseFiles;
    const CNesting nesting(openResponseFiles);
    Tokenize(ReadTextFile(path));
}

void CCommandLineParser::ClassifyTokens() {
    Options.DeleteAll();
    // Names that take turns would make each addition walk a chain of all their values. Of many tokens those of one name
    // are added one after the other, which also lets them share the name's text.
    constexpr std::int32_t fewTokens = 1000;
    const bool many = Tokens.Size() > fewTokens;
    CArray<std::uint64_t> order;
    order.Reserve(Tokens.Size());
    std::u16string_view hashed;
    std::uint64_t hash = 0;
    for (std::int32_t i = 0; i < Tokens.Size(); ++i) {
        const std::u16string_view name = PartsOf(Tokens[i]).name;
        if (many && name != hashed) {
            hashed = name;
            hash = HashTextNoCase(name);
        }
        order.Append(hash << 32 | static_cast<std::uint32_t>(i));
    }
    if (!std::is_sorted(order.begin(), order.end())) {
        std::sort(order.begin(), order.end());
    }
    CUnicodeString name;
    for (const std::uint64_t entry : order) {
        const CUnicodeString& token = Tokens[static_cast<std::int32_t>(entry & 0xFFFFFFFF)];
        const COptionParts parts = PartsOf(token);
        if (name.View() != parts.name) {
            name = CUnicodeString(parts.name.data(), static_cast<std::int32_t>(parts.name.size()));
        }
        Options.Add(name, token.Mid(parts.value));
    }
}

CUnicodeString CCommandLineParser::GetToken(std::int32_t index) const {
    TSX_REQUIRE(index >= 0 && index < Tokens.Size(), ModuleName, {});
    return Tokens[index];
}

} // namespace Tsx
