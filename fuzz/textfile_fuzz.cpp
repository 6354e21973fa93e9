// The reader of text files. The first byte chooses the code page of text without a mark.
#include "foundation/inc/textstream.h"
#include "fuzz/target.h"
#include "tests/support/memoryfile.h"

using namespace Tsx;

void RunInput(const std::string& bytes) {
    constexpr std::uint32_t codePages[] = {AnsiCodePage, OemCodePage, 1252, 932, 936, 54936, 65000, 65001};
    if (bytes.empty()) {
        return;
    }
    CMemoryFile file(bytes.substr(1));
    const CUnicodeString text = ReadText(file, codePages[static_cast<unsigned char>(bytes[0]) % std::size(codePages)]);
    Require(text.Find(u'\0') < 0);
    Require(text.Length() <= static_cast<std::int32_t>(2 * bytes.size()));
}
