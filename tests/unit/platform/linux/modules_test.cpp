// What only this system's loader can be faced with.
#include "platform/inc/modules.h"

#include "foundation/inc/filesystem.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/resources.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

using namespace Tsx;

namespace {

std::string NativeOf(const CUnicodeString& path) {
    std::string native = Readable(path.Mid(2).View());
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

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
    ASSERT_EQ(mkfifo(NativeOf(pipe).c_str(), 0600), 0);
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
    std::filesystem::remove(NativeOf(path));
    char16_t name[300] = {};
    EXPECT_EQ(Platform::GetModuleFileName(module, name, 300), 0U);
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorFileNotFound);
    EXPECT_TRUE(Platform::FreeLibrary(module));
    EXPECT_FALSE(Platform::FreeLibrary(nullptr));
}
