// The splitter, on lines in UTF-8. Tokens that it gives must come back from their quotes.
#include "foundation/inc/commandlinefo.h"
#include "fuzz/target.h"
#include "platform/inc/text.h"

using namespace Tsx;

namespace {

// Each `@` doubled: no token begins with a single one, which would open a file.
CUnicodeString WithoutFiles(const std::string& bytes) {
    CUnicodeString line;
    const auto size = static_cast<std::int32_t>(bytes.size());
    const CUnicodeString text = CUnicodeString::FromNarrow(bytes.data(), size, Platform::CodePageUtf8);
    for (const char16_t c : text.View()) {
        line += c;
        if (c == u'@') {
            line += c;
        }
    }
    return line;
}

CUnicodeString Quoted(const CUnicodeString& token) {
    CUnicodeString quoted = token.Length() > 1 && token[0] == u'@' ? u"\"@" : u"\"";
    for (const char16_t c : token.View()) {
        quoted += c;
        if (c == u'"') {
            quoted += c;
        }
    }
    return quoted + u"\" ";
}

} // namespace

void RunInput(const std::string& bytes) {
    CCommandLineParser parser;
    parser.Tokenize(WithoutFiles(bytes));
    parser.ClassifyTokens();
    Require(parser.Options.GetItemCount() == parser.Tokens.Size());
    CUnicodeString line;
    for (const CUnicodeString& token : parser.Tokens) {
        line += Quoted(token);
    }
    CArray<CUnicodeString> again;
    SplitCommandLine(again, line);
    Require(again.Size() == parser.Tokens.Size());
    for (std::int32_t i = 0; i < again.Size(); ++i) {
        Require(again[i] == parser.GetToken(i));
    }
}
