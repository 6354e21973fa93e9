#include "foundation/inc/commandlinefo.h"

#include "foundation/inc/errors.h"
#include "foundation/inc/filesystem.h"
#include "foundation/inc/scopeexit.h"
#include "foundation/inc/textstream.h"
#include "platform/inc/text.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\commandlinefo";
constexpr char16_t Quote = u'"';

// What the run-time answers. For ASCII that is the same in every locale, so that the call can be left out.
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

/// The option that a token sets; the name is empty for a token that sets none.
struct COption {
    CUnicodeString name;
    CUnicodeString value;
};

COption OptionOf(const CUnicodeString& token) {
    if (token.Length() < 2 || (token[0] != u'/' && token[0] != u'-')) {
        return {{}, token};
    }
    const std::int32_t separator = token.Find(u':', 1);
    if (separator < 0) {
        return {token.Mid(1), {}};
    }
    return {token.Mid(1, separator - 1), token.Mid(separator + 1)};
}

} // namespace

void SplitCommandLine(CArray<CUnicodeString>& target, const CUnicodeString& line) {
    CCommandLineParser parser;
    parser.Tokenize(line);
    parser.ClassifyTokens(); // AS DESIGNED: nobody reads what it builds
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
    if (openResponseFiles > MostNestedResponseFiles || responseFiles == MostResponseFiles) {
        CUnicodeString fullName = path;
        FileSystem::GetFullName(fullName);
        GenerateFileCauseException(FC_TooManyOpenFiles, fullName);
    }
    ++responseFiles;
    ++openResponseFiles;
    const CScopeExit close([this] { --openResponseFiles; });
    Tokenize(ReadTextFile(path));
}

void CCommandLineParser::ClassifyTokens() {
    Options.DeleteAll();
    for (const CUnicodeString& token : Tokens) {
        COption option = OptionOf(token);
        Options.Add(option.name, std::move(option.value));
    }
}

CUnicodeString CCommandLineParser::GetToken(std::int32_t index) const {
    TSX_REQUIRE(index >= 0 && index < Tokens.Size(), ModuleName, {});
    return Tokens[index];
}

} // namespace Tsx
