// The splitter of the command line, for console programs (app/ConsoleApplication.cpp). It has quoting rules of its own
// and expands response files.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/map.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// Appends the tokens of a line to `target`. White space separates; quotes keep it; inside them a doubled quote is one
/// quote; a backslash is a plain character. `@file` stands for the tokens of that text file, `@@x` for the token `@x`.
/// Raises CFileException, with `target` as it was.
///
///   a  b             a, b
///   "a  b" -s:"x y"  a  b, -s:x y
///   "a""b"  a""b     a"b, ab
void SplitCommandLine(CArray<CUnicodeString>& target, const CUnicodeString& line);

/// Splits texts and sorts the tokens by the options that they set.
class CCommandLineParser {
public:
    /// How deep response files may stand in one another, and how many a command line may have in all. The file that
    /// goes beyond a limit raises CFileException with FC_TooManyOpenFiles and its full name, so that a file that
    /// names itself ends in an error instead of exhausted memory.
    static constexpr std::int32_t MostNestedResponseFiles = 64;
    static constexpr std::int32_t MostResponseFiles = 4096;

    /// The tokens in order, those of response files in the place of the files.
    CArray<CUnicodeString> Tokens;
    /// Each option's name with its value, as ClassifyTokens last built it. Equal names are in the order of their
    /// tokens; tokens that are no options are under the empty name. Nothing in this program reads it.
    CMap<CUnicodeString, CUnicodeString, CNoCaseStringKeyTraits> Options{31};

    /// Appends the tokens of a text. After a failure the list has those that stand in front of it.
    void Tokenize(const CUnicodeString& text);
    /// Rebuilds Options:
    ///
    ///   token      name    value
    ///   -s:x /S:   s, S    x, empty
    ///   -s         s       empty
    ///   -:x        empty   x
    ///   - x        empty   the token
    void ClassifyTokens();
    /// An index outside the list is an assertion.
    CUnicodeString GetToken(std::int32_t index) const;

private:
    std::int32_t openResponseFiles = 0; // each inside the one before
    std::int32_t responseFiles = 0;     // in all

    void AddToken(CUnicodeString&& token);
    void AddResponseFile(const CUnicodeString& path);
};

} // namespace Tsx
