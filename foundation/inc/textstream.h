// Text in files: UTF-16 or UTF-8 with a byte-order mark, or bytes of a code page without one.
#pragma once

#include "foundation/inc/archive.h"
#include "foundation/inc/array.h"
#include "foundation/inc/basefile.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

enum TTextEncoding : std::int32_t { TE_Ansi = 0, TE_Unicode = 1 };

/// Writes text to a file, or without one to an archive, or without either to the debugger. The text goes out as it
/// stands: line ends are the caller's. The first write to a Unicode target at position 0 puts the mark in front.
///
///   target       WriteAnsi                      WriteUnicode
///   TE_Ansi      the bytes                      converted to the code page
///   TE_Unicode   converted from the code page   the characters
///
/// A conversion ends at a 0 character. Any other encoding is an internal error in the first write. For one thread.
class CTextStream {
public:
    /// Neither target is owned. The code page may be a selector.
    CTextStream(CBaseFile* file, CArchive* archive, std::int32_t encoding, std::uint32_t codePage = AnsiCodePage)
        : File(file), Archive(archive), Encoding(encoding), CodePage(codePage) {}

    /// Without a target the text ends at its terminator, and a null text is empty.
    void WriteAnsi(const char* text, std::uint32_t count);
    void WriteUnicode(const char16_t* text, std::uint32_t count);
    void Flush();

private:
    CBaseFile* File;
    CArchive* Archive;
    std::int32_t Encoding;
    std::uint32_t CodePage;
    bool HeaderDone = false;

    bool HasTarget() const { return File || Archive; }
    bool WriteHeader(); // false where a check failed
    void WriteBytes(const void* bytes, std::int64_t count);
};

/// The whole text of a file:
///
///   FF FE, FE FF   UTF-16, little-endian or big-endian; an odd length raises ERR_BAD_TEXT_FILE
///   EF BB BF       UTF-8
///   anything else  the ANSI code page; also UTF-8 without a mark
///
/// A 0 becomes a blank. Raises CFileException; one that ends before its length has the cause 14.
CUnicodeString ReadTextFile(const CUnicodeString& path);

/// The same from an open file that stands at its start. Text without a mark is of the code page given.
CUnicodeString ReadText(CBaseFile& file, std::uint32_t codePage);

/// Makes a new file in UTF-16 with a mark and CR LF between the lines, or replaces one. Raises CFileException.
void WriteTextFile(const CUnicodeString& path, const CArray<CUnicodeString>& lines);

} // namespace Tsx
