// What only this system's loader can be faced with, and the version records that it serves.
#include "platform/inc/modules.h"

#include "foundation/inc/errors.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/resources.h"
#include "platform/linux/modules/versionblock.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <fstream>
#include <random>

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

TEST(VersionBlock, LengthsThatLieNeverLeadOutside) {
    constexpr Platform::VersionString strings[] = {{u"A", u"first"}, {u"InternalName", u""}, {u"Odd", u"ab"}};
    const auto built = Platform::VersionBlockBuilder<512>().Build({}, 0x040904B0, u"040904b0", strings);
    constexpr unsigned seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::byte> block(built.begin(), built.end());
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            block[random() % block.size()] = static_cast<std::byte>(random() % 256);
        }
        block.resize(random() % (block.size() + 1));
        block.shrink_to_fit();
        for (const char16_t* path : {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040904B0\\Odd"}) {
            const void* value = nullptr;
            std::uint32_t length = 0;
            if (Platform::QueryVersionBlock(block, path, value, length) && length > 0) {
                const auto* first = static_cast<const std::byte*>(value);
                ASSERT_TRUE(first >= block.data() && first + length <= block.data() + block.size())
                    << "seed " << seed << " round " << round;
            }
        }
    }
}
