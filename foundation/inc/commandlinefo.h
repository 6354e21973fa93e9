// The splitter of the command line. It has quoting rules of its own and expands response files.
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
    /// A file inside more others than this, or one more in all, is a CFileException of the cause 4 with the file's full
    /// name, so that a file that names itself ends in an error and not in exhausted memory.
    static constexpr std::int32_t MostNestedResponseFiles = 64;
    static constexpr std::int32_t MostResponseFiles = 4096;

    /// The tokens in order, those of response files in the place of the files.
    CArray<CUnicodeString> Tokens;
    /// Each option's name with its value, both in the order of the tokens where names are equal; tokens that set none
    /// are under the empty name.
    CMap<CUnicodeString, CUnicodeString, CNoCaseStringKeyTraits> Options{31};

    /// Appends the tokens of a text. After a failure those in front of it are there.
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
