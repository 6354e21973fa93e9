#include "platform/linux/files/paths.h"

#include "platform/inc/filenames.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/files/wildcards.h"
#include "tests/support/text.h"
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

using namespace Platform;

namespace {

class Paths : public testing::Test {
protected:
    Paths() {
        std::string pattern = (std::filesystem::temp_directory_path() / "paths_test_XXXXXX").string();
        folder = mkdtemp(pattern.data());
        std::filesystem::create_directory(folder / "Sub");
        std::ofstream(folder / "Sub" / "File.TXT") << "x";
        for (const char* name : {"R.E.M.", "back\\slash"}) {
            std::filesystem::create_directory(folder / name);
            std::ofstream(folder / name / "End. ") << "x";
        }
        setenv("TESSARIX_DRIVE_C", folder.c_str(), 1);
    }
    ~Paths() override {
        unsetenv("TESSARIX_DRIVE_C");
        std::filesystem::remove_all(folder);
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(Paths, MapToNativeOnes) {
    const std::string root = folder.string();
    const std::string here = std::filesystem::current_path().string();
    struct Row {
        std::u16string path;
        std::string native;
    };
    const Row rows[] = {{u"C:\\Sub\\File.TXT", root + "/Sub/File.TXT"},
                        {u"c:/sub\\\\file.txt", root + "/Sub/File.TXT"},
                        {u"C:SUB", root + "/Sub"},
                        {u"C:\\Sub\\new.txt", root + "/Sub/new.txt"},
                        {u"\\\\?\\C:\\Sub", root + "/Sub"},
                        {u"Z:\\", "/"},
                        {u"/", "/"},
                        {u"Z:", here},
                        {u"no/such\\thing", here + "/no/such/thing"},
                        {u"C:\\none\\..\\sub\\.", root + "/Sub"},
                        {u"C:\\Sub.\\File.TXT. .", root + "/Sub/File.TXT"},
                        {u"C:\\R.E.M.\\none. .", root + "/R.E.M./none"},
                        {u"C:\\r.e.m.\\..\\R.E.M.", root + "/R.E.M."},
                        {u"C:\\R.E.M.\\end. ", root + "/R.E.M./End. "},
                        {u"C:\\R.E.M.\\End. . ", root + "/R.E.M./End"}};
    const auto expectEach = [](std::span<const Row> each) {
        for (const Row& row : each) {
            std::string native;
            EXPECT_TRUE(MapPath(row.path, native)) << Readable(row.path);
            EXPECT_EQ(native, row.native) << Readable(row.path);
            char16_t full[1000] = {};
            EXPECT_GT(GetFullPathName(row.path.c_str(), 1000, full, nullptr), 0U) << Readable(row.path);
            EXPECT_TRUE(MapPath(full, native)) << Readable(row.path);
            EXPECT_EQ(native, row.native) << Readable(row.path) << " in full";
        }
    };
    expectEach(rows);
    for (const char* name : {"R.E.M.", "back\\slash"}) {
        std::filesystem::current_path(folder / name);
        const std::string current = root + "/" + name;
        const Row relative[] = {{u"End. ", current + "/End. "}, {u".", current}, {u"..\\sub", root + "/Sub"}};
        expectEach(relative);
    }
    std::filesystem::current_path(here);
    EXPECT_EQ(WindowsPath("/home/u/a.txt"), u"Z:\\home\\u\\a.txt");
}

TEST_F(Paths, RefusesWhatNothingMaps) {
    struct Row {
        std::u16string_view path;
        std::uint32_t error;
    };
    constexpr Row rows[] = {
        {u"\\\\server\\share\\x", ErrorBadNetworkPath}, {u"Q:\\x", ErrorPathNotFound}, {u"", ErrorPathNotFound}};
    for (const Row& row : rows) {
        std::string native;
        EXPECT_FALSE(MapPath(row.path, native)) << Readable(row.path);
        EXPECT_EQ(GetLastError(), row.error) << Readable(row.path);
    }
}

TEST(Wildcards, FollowTheSearchRules) {
    struct Row {
        std::u16string_view name;
        std::u16string_view pattern; // with a dot behind it if it ends in one
        bool matches;
    };
    constexpr Row rows[] = {{u"abcbd", u"a*b*d", true}, {u"abc", u"a*d", false},   {u"", u"*", true},
                            {u"x", u"", false},         {u"a.b.c", u"*.b", false}, {u"a.b", u"*.", false},
                            {u"a", u"a.?", true},       {u"a.", u"a.?", true},     {u"ab.c", u"a?.c?", true},
                            {u"a..b", u"a.*", true},    {u"axb", u"a.*", false},   {u"\u00DC", u"\u00FC", true}};
    for (const Row& row : rows) {
        const bool dot = row.pattern.ends_with(u'.');
        const std::u16string expression = SearchExpression(row.pattern.substr(0, row.pattern.size() - dot), dot);
        EXPECT_EQ(MatchesExpression(row.name, expression), row.matches)
            << Readable(row.name) << " " << Readable(row.pattern);
    }
}
