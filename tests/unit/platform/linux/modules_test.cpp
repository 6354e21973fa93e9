// What only this system's loader can be faced with, and the version records that it serves.
#include "platform/inc/modules.h"

#include "foundation/inc/filesystem.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/resources.h"
#include "platform/linux/modules/versionblock.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>

using namespace Tsx;

namespace {

std::string LibraryBytes() {
    std::ifstream file(TestFilePlace(SOME_LIBRARY), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The library with another name in the place of one as long; all that refers to it follows.
std::string Renamed(std::string_view from, std::string_view to) {
    std::string bytes = LibraryBytes();
    const std::size_t place = bytes.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return place == std::string::npos ? bytes : bytes.replace(place, to.size(), to);
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

TEST(Modules, APipeIsNotWaitedFor) {
    const CTestFolder folder;
    const CUnicodeString pipe = folder / u"pipe.dll";
    ASSERT_EQ(mkfifo((folder.Place() / "pipe.dll").c_str(), 0600), 0);
    EXPECT_EQ(Platform::GetFileVersionInfoSize(pipe.Text()), 0U);
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorResourceDataNotFound);
    EXPECT_FALSE(Platform::GetModuleHandle(pipe.Text()));
    EXPECT_FALSE(Platform::LoadLibraryEx(pipe.Text(), 0));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorModuleNotFound);
}

TEST(Modules, ALibraryWhoseFileIsGoneHasNoName) {
    const CTestFolder folder;
    const CUnicodeString path = folder.Write(u"gone.dll", LibraryBytes());
    const Platform::Module module = Platform::LoadLibraryEx(path.Text(), 0);
    ASSERT_TRUE(module);
    std::filesystem::remove(folder.Place() / "gone.dll");
    char16_t name[300] = {};
    EXPECT_EQ(Platform::GetModuleFileName(module, name, 300), 0U);
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorFileNotFound);
    EXPECT_TRUE(Platform::FreeLibrary(module));
    EXPECT_FALSE(Platform::FreeLibrary(nullptr));
}

namespace {

constexpr Platform::VersionString Strings[] = {{u"A", u"first"}, {u"InternalName", u""}, {u"Odd", u"ab"}};

std::vector<std::byte> Block() {
    Platform::FixedFileInfo fixed{};
    fixed.dwSignature = 0xFEEF04BD;
    const auto bytes = Platform::VersionBlockBuilder<512>().Build(fixed, 0x040904B0, u"040904b0", Strings);
    return {bytes.begin(), bytes.end()};
}

constexpr std::u16string_view Paths[] = {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040904B0\\Odd",
                                         u"\\StringFileInfo\\040904b0\\A", u"\\StringFileInfo\\040904b0\\None"};

} // namespace

TEST(VersionBlock, FindsWhatWasBuilt) {
    const std::vector<std::byte> block = Block();
    const void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_TRUE(Platform::QueryVersionBlock(block, Paths[2], value, length));
    EXPECT_EQ(length, 3U) << "the terminator counts";
    EXPECT_EQ(std::u16string_view(static_cast<const char16_t*>(value)), u"ab");
    ASSERT_TRUE(Platform::QueryVersionBlock(block, Paths[1], value, length));
    EXPECT_EQ(*static_cast<const std::uint16_t*>(value), 0x0409) << "the language comes first";
    EXPECT_FALSE(Platform::QueryVersionBlock(block, Paths[4], value, length));
}

TEST(VersionBlock, LengthsThatLieNeverLeadOutside) {
    constexpr unsigned seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::byte> block = Block();
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            block[random() % block.size()] = static_cast<std::byte>(random() % 256);
        }
        block.resize(random() % (block.size() + 1));
        block.shrink_to_fit();
        for (const std::u16string_view path : Paths) {
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
