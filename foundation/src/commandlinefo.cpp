#include "foundation/inc/commandlinefo.h"

#include "foundation/inc/textstream.h"
#include "platform/inc/text.h"

namespace Tsx {

namespace {

constexpr char16_t Quote = u'"';

/// Reads the tokens of one text, one after the other.
class CTokenReader {
public:
    explicit CTokenReader(const CUnicodeString& line) : text(line.Text()), end(text + line.Length()) {}

    bool Next(CUnicodeString& token) {
        while (text < end && Platform::iswspace(*text)) {
            ++text;
        }
        if (text == end) {
            return false;
        }
        token.Clear();
        bool quoted = false;
        for (; text < end && (quoted || !Platform::iswspace(*text)); ++text) {
            if (*text != Quote) {
                token += *text;
            } else if (quoted && text + 1 < end && text[1] == Quote) {
                ++text;
                token += Quote;
            } else {
                quoted = !quoted;
            }
        }
        return true;
    }

private:
    const char16_t* text;
    const char16_t* end;
};

void Tokenize(CArray<CUnicodeString>& tokens, const CUnicodeString& text) {
    CTokenReader reader(text);
    CUnicodeString token;
    while (reader.Next(token)) {
        if (token.Length() < 2 || token[0] != u'@') {
            tokens.Append(token);
        } else if (token[1] == u'@') {
            tokens.Append(token.Mid(1));
        } else {
            Tokenize(tokens, ReadTextFile(token.Mid(1)));
        }
    }
}

} // namespace

void SplitCommandLine(CArray<CUnicodeString>& target, const CUnicodeString& line) {
    CArray<CUnicodeString> tokens;
    Tokenize(tokens, line);
    target.AppendAll(tokens);
}

} // namespace Tsx
