// Searches by pattern, and what tells of drives and of files on a path.
#include "tests/unit/platform/scratchfolder.h"

using namespace Platform;

TEST(SearchConformance, PatternsFindWhatWindowsFinds) {
    const CScratch scratch;
    for (const char16_t* name : {u"a.txt", u"ab.TXT", u"a.b.txt", u"noext", u"x y.c", u".dot", u"\U0001F600"}) {
        scratch.Make(name);
    }
    EXPECT_TRUE(Do(scratch, u"mkdir folder"));
    const auto found = [&](const std::u16string& pattern) { return Found(scratch(pattern)); };
    for (const char16_t* all : {u"*", u"*.*"}) {
        EXPECT_EQ(found(all), ". .. .dot a.b.txt a.txt ab.TXT folder noext x y.c \\uD83D\\uDE00");
    }
    ExpectRows(found, {u"*.txt -> a.b.txt a.txt ab.TXT", u"A*.TXT -> a.b.txt a.txt ab.TXT", u"a*b* -> a.b.txt ab.TXT",
                       u"?.txt -> a.txt", u"*.b.* -> a.b.txt", u"\U0001F600 -> \U0001F600", u"*.zip -> 2",
                       u"a.* -> a.b.txt a.txt", u"noext.* -> noext", u"?o*. -> folder noext", u"a*d -> 2"});
    ExpectRows(found, {u"a.txt -> a.txt", u"A.TXT -> a.txt", u"x y.c. . -> x y.c", u"folder -> folder",
                       u"folder\\* -> . ..", u"folder\\*.x -> 2", u"folder\\ -> 2", u"folder\\..\\a.txt -> a.txt",
                       u"none -> 2", u"none\\* -> 3", u"none\\x -> 3"});
    // A question mark is always a character in Wine.
    ExpectRows(found, {u"??.txt -> a.txt ab.TXT", u"a.txt? -> a.txt", u"noext.? -> noext", u"a.txt\\* -> 267"},
               Wine::Otherwise);
    EXPECT_EQ(Found(CPath(u"\\")), "2") << "a root is no entry";
    EXPECT_EQ(Found(CPath(u"\\*")).find(". .."), std::string::npos) << "and holds no such";
}

TEST(SearchConformance, ASearchGoesOnOverWhatChanges) {
    const CScratch scratch;
    EXPECT_TRUE(Do(scratch, u"make 1.x; make 2.x; make 3.x"));
    FindData data;
    const Handle search = FindFirstFile(scratch(u"*.x"), data);
    EXPECT_TRUE(Do(scratch, u"delete 1.x") && FindNextFile(search, data) && FindClose(search));
    EXPECT_EQ(Readable(data.name), "2.x");
}
TEST(SearchConformance, DrivesAndTheirTypes) {
    EXPECT_TRUE(GetDriveType(u"\\") == DriveFixed && GetDriveType(nullptr) == DriveFixed);
    for (const char16_t* none : {u"Q:\\", u"\\\\none\\none\\", u"\\no such folder\\"}) {
        EXPECT_EQ(GetDriveType(none), DriveNoRootDir) << Readable(none);
    }
    EXPECT_EQ(ErrorOf([] { return GetDiskFreeSpaceEx(u"Q:\\", nullptr, nullptr, nullptr); }), 3U);
}

TEST(SearchConformance, AFileOnAPath) {
    const CScratch scratch;
    EXPECT_TRUE(Do(scratch, u"mkdir one; mkdir two; make two\\file.ext"));
    const CPath path(scratch(u"one") + u";" + scratch(u"two"));
    char16_t found[1000] = {};
    char16_t* file = nullptr;
    const std::uint32_t length = SearchPath(path, u"file", u".ext", 1000, found, &file);
    ASSERT_GT(length, 0U);
    EXPECT_EQ(Readable(file), "file.ext");
    EXPECT_EQ(length, std::u16string_view(found).size());
    EXPECT_EQ(SearchPath(path, u"file.ext", u".other", length, nullptr, nullptr), length + 1) << "needs the terminator";
    EXPECT_EQ(SearchPath(path, CPath(found), nullptr, 1000, found, nullptr), length) << "a whole name stands";
    EXPECT_EQ(ErrorOf([&] { return SearchPath(path, u"none", u".ext", 1000, found, &file) != 0; }), 2U);
}
