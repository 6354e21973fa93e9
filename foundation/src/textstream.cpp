#include "foundation/inc/textstream.h"

#include "foundation/inc/debugtrace.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/file.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/openmode.h"
#include "foundation/inc/scopeexit.h"
#include "platform/inc/text.h"
#include <limits>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\textstream";

constexpr char16_t Utf16Mark = 0xFEFF;
constexpr char16_t SwappedUtf16Mark = 0xFFFE;
constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";

// The length of a conversion, which 31 bits count.
std::int32_t ConversionLength(std::uint32_t count) {
    TSX_REQUIRE(count <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max()), ModuleName, 0);
    return static_cast<std::int32_t>(count);
}

void ReadExactly(CBaseFile& file, void* buffer, std::int32_t count) {
    if (file.Read(buffer, count) != count) {
        GenerateFileCauseException(FC_EndOfFile, file.GetFileName());
    }
}

// Without a branch, so that whole vectors are done at a time.
template <class TUnit>
void BlankNuls(TUnit* text, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
        text[i] = static_cast<TUnit>(text[i] == 0 ? ' ' : text[i]);
    }
}

void SwapBytes(char16_t* text, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
        text[i] = static_cast<char16_t>(text[i] << 8 | text[i] >> 8);
    }
}

// The characters behind the mark of a file of `length` bytes.
CUnicodeString ReadUtf16(CBaseFile& file, std::int32_t length, bool swapped) {
    if (length % 2 != 0) {
        GenerateCheckException(ERR_BAD_TEXT_FILE, file.GetFileName().Text(), u"");
        return {};
    }
    constexpr auto unitSize = static_cast<std::int32_t>(sizeof(char16_t));
    const std::int32_t count = length / unitSize - 1;
    CUnicodeString text;
    if (count > 0) {
        char16_t* buffer = text.GetBuffer(count);
        ReadExactly(file, buffer, count * unitSize);
        if (swapped) {
            SwapBytes(buffer, count);
        }
        BlankNuls(buffer, count);
        text.SetLength(count);
    }
    return text;
}

// The next `count` bytes, which are the rest of the file.
CUnicodeString ReadNarrow(CBaseFile& file, std::int32_t count, std::uint32_t codePage) {
    if (count <= 0) {
        return {};
    }
    auto* const bytes = static_cast<char*>(AllocateFromCurrentManager(count));
    const CScopeExit release([bytes] { FreeToOwnManager(bytes); });
    ReadExactly(file, bytes, count);
    BlankNuls(bytes, count);
    return CUnicodeString::FromNarrow(bytes, count, codePage);
}

} // namespace

CUnicodeString ReadText(CBaseFile& file, std::uint32_t codePage) {
    const std::int32_t length = file.GetLength32();
    if (length >= 2) {
        char16_t mark = 0;
        ReadExactly(file, &mark, sizeof mark);
        if (mark == Utf16Mark || mark == SwappedUtf16Mark) {
            return ReadUtf16(file, length, mark == SwappedUtf16Mark);
        }
        file.Seek(0, SeekFromStart);
    }
    if (length >= 3) {
        char mark[Utf8Mark.size()];
        ReadExactly(file, mark, sizeof mark);
        if (std::string_view(mark, sizeof mark) == Utf8Mark) {
            return ReadNarrow(file, length - static_cast<std::int32_t>(sizeof mark), Platform::CodePageUtf8);
        }
        file.Seek(0, SeekFromStart);
    }
    return ReadNarrow(file, length, codePage);
}

CUnicodeString ReadTextFile(const CUnicodeString& path) {
    CFile file;
    file.Open(path, OM_Read | OM_ShareDenyWrite);
    return ReadText(file, AnsiCodePage);
}

void WriteTextFile(const CUnicodeString& path, const CArray<CUnicodeString>& lines) {
    CFile file;
    file.Open(path, OM_Write | OM_ShareDenyWrite | OM_Create);
    CArchive archive(&file, AD_Store);
    const auto write = [&archive](std::u16string_view text) {
        archive.Write(text.data(), static_cast<std::int32_t>(text.size() * sizeof(char16_t)));
    };
    write({&Utf16Mark, 1});
    for (std::int32_t i = 0; i < lines.Size(); ++i) {
        write(i == 0 ? u"" : u"\r\n");
        write(lines[i].View());
    }
    archive.Close();
    file.Close();
}

bool CTextStream::WriteHeader() {
    if (HeaderDone) {
        return true;
    }
    TSX_REQUIRE(Encoding == TE_Ansi || Encoding == TE_Unicode, ModuleName, false);
    if (Encoding == TE_Unicode && HasTarget() && (File ? File->GetPosition() : Archive->GetPosition()) == 0) {
        WriteBytes(&Utf16Mark, sizeof Utf16Mark);
    }
    HeaderDone = true;
    return true;
}

void CTextStream::WriteBytes(const void* bytes, std::int64_t count) {
    constexpr std::int64_t largestPiece = 1 << 30;
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const auto piece = static_cast<std::int32_t>(std::min(count, largestPiece));
        if (File) {
            File->Write(at, piece);
        } else {
            Archive->Write(at, piece);
        }
        at += piece;
        count -= piece;
    }
}

void CTextStream::WriteUnicode(const char16_t* text, std::uint32_t count) {
    if (!WriteHeader()) {
        return;
    }
    if (!HasTarget()) {
        DebugTrace(u"%s", CUnicodeString(text, ConversionLength(count)));
    } else if (Encoding == TE_Unicode) {
        WriteBytes(text, std::int64_t{count} * static_cast<std::int64_t>(sizeof(char16_t)));
    } else {
        const CString narrow = CString::FromWide(text, ConversionLength(count), CodePage);
        WriteAnsi(narrow.Text(), static_cast<std::uint32_t>(narrow.Length()));
    }
}

void CTextStream::WriteAnsi(const char* text, std::uint32_t count) {
    if (!WriteHeader()) {
        return;
    }
    if (!HasTarget()) {
        DebugTrace(u"%s", CUnicodeString(text, CodePage));
    } else if (Encoding == TE_Unicode) {
        const CUnicodeString wide = CUnicodeString::FromNarrow(text, ConversionLength(count), CodePage);
        WriteUnicode(wide.Text(), static_cast<std::uint32_t>(wide.Length()));
    } else {
        WriteBytes(text, count);
    }
}

void CTextStream::Flush() {
    if (File) {
        File->Flush();
    } else if (Archive) {
        Archive->Flush();
    }
}

} // namespace Tsx
