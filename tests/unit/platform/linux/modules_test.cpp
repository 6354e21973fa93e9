// What only this system's loader can be faced with.
#include "platform/inc/modules.h"

#include "foundation/inc/errors.h"
#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <fstream>

using namespace Tsx;

namespace {

/// The library with another name in the place of one as long; all that refers to it follows.
std::string Renamed(std::string_view from, std::string_view to) {
    std::ifstream file(TestFilePlace(SOME_LIBRARY), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return bytes.replace(bytes.find(from), to.size(), to);
}

} // namespace

TEST(Modules, ARefusedLibraryIsToldOfByItsReason) {
    struct Row {
        std::string content;
        std::uint32_t error;
        std::u16string_view words; // of the text for the error
    };
    const Row rows[] = {{Renamed("libc.so.6", "libX.so.6"), Platform::ErrorModuleNotFound, u"\nlibX.so.6: "},
                        {Renamed("getenv", "getXYZ"), Platform::ErrorProcedureNotFound, u"undefined symbol: getXYZ"},
                        {"no library", Platform::ErrorBadExeFormat, u"row.dll: "}};
    for (const Row& row : rows) {
        const CTestFolder folder;
        EXPECT_FALSE(Platform::LoadLibraryEx(folder.Write(u"row.dll", row.content).Text(), 0));
        EXPECT_EQ(Platform::GetLastError(), row.error) << Readable(row.words);
        const CUnicodeString text = GetLastErrorText(row.error);
        EXPECT_NE(text.View().find(row.words), std::u16string_view::npos) << Readable(text.View());
    }
    EXPECT_FALSE(Platform::GetModuleHandle(u"no such library.dll"));
    EXPECT_EQ(GetLastErrorText(Platform::ErrorModuleNotFound), u"The specified module could not be found.\r\n")
        << "an earlier failure's reason is not this one's";
}
