// Searches by pattern, and what tells of drives and of files on a path.
#include "tests/unit/platform/scratchfolder.h"

using namespace Platform;

namespace {

// The names that a search tells, in its order, or its error.
std::string Found(const std::u16string& pattern) {
    FindData data;
    const Handle search = FindFirstFile(pattern.c_str(), data);
    if (search == InvalidHandle()) {
        return std::to_string(GetLastError());
    }
    std::string names = Readable(data.name);
    while (FindNextFile(search, data)) {
        names += " " + Readable(data.name);
    }
    EXPECT_EQ(GetLastError(), ErrorNoMoreFiles) << Readable(pattern);
    EXPECT_TRUE(FindClose(search));
    return names;
}

} // namespace

TEST(SearchConformance, PatternsFindWhatWindowsFinds) {
    struct Row {
        std::u16string_view pattern;
        const char* found;
        Wine wine = Wine::AsWindows;
    };
    constexpr Row rows[] = {
        {u"*", ". .. .dot a.b.txt a.txt ab.TXT folder noext x y.c \\uD83D\\uDE00"},
        {u"*.*", ". .. .dot a.b.txt a.txt ab.TXT folder noext x y.c \\uD83D\\uDE00"},
        {u"*.txt", "a.b.txt a.txt ab.TXT"},
        {u"A*.TXT", "a.b.txt a.txt ab.TXT"},
        {u"a*b*", "a.b.txt ab.TXT"},
        {u"?.txt", "a.txt"},
        {u"*.b.*", "a.b.txt"},
        {u"\U0001F600", "\\uD83D\\uDE00"},
        {u"*.zip", "2"},
        {u"??.txt", "a.txt ab.TXT", Wine::Otherwise}, // a question mark is always a character there
        {u"a.txt?", "a.txt", Wine::Otherwise},
        {u"a.*", "a.b.txt a.txt"},
        {u"noext.*", "noext", Wine::Otherwise},
        {u"?o*.", "folder noext", Wine::Otherwise},
        {u"a.txt", "a.txt"},
        {u"A.TXT", "a.txt"},
        {u"x y.c. .", "x y.c"},
        {u"folder", "folder"},
        {u"folder\\*", ". .."},
        {u"folder\\*.x", "2"},
        {u"folder\\", "2"},
        {u"folder\\..\\a.txt", "a.txt"},
        {u"none", "2"},
        {u"none\\*", "3"},
        {u"none\\x", "3"},
        {u"a.txt\\*", "267", Wine::Otherwise},
    };
    const CScratch scratch;
    for (const char16_t* name : {u"a.txt", u"ab.TXT", u"a.b.txt", u"noext", u"x y.c", u".dot", u"\U0001F600"}) {
        scratch.Make(name);
    }
    scratch.MakeFolder(u"folder");
    for (const Row& row : rows) {
        Claim(row.wine, Readable(row.pattern),
              [&] { EXPECT_EQ(Found(scratch(row.pattern)), row.found) << Readable(row.pattern); });
    }
    EXPECT_EQ(Found(u"\\"), "2") << "a root is no entry";
    EXPECT_EQ(Found(u"\\*").find(". .."), std::string::npos) << "and holds no such";
}

TEST(SearchConformance, ASearchGoesOnOverWhatChanges) {
    const CScratch scratch;
    for (const char16_t* name : {u"1.x", u"2.x", u"3.x"}) {
        scratch.Make(name, "ab");
    }
    FindData data;
    const Handle search = FindFirstFile(scratch(u"*.x"), data);
    ASSERT_NE(search, InvalidHandle());
    EXPECT_EQ(data.size, 2);
    EXPECT_EQ(data.attributes & (FileAttributeDirectory | FileAttributeReadOnly), 0U);
    EXPECT_TRUE(DeleteFile(scratch(u"1.x")));
    EXPECT_TRUE(FindNextFile(search, data));
    EXPECT_EQ(Readable(data.name), "2.x");
    EXPECT_TRUE(FindClose(search));
}

TEST(SearchConformance, PathsLongerThanTheOldLimitTakeThePrefix) {
    const CScratch scratch;
    char16_t full[1000] = {};
    ASSERT_GT(GetFullPathName(scratch(u"1"), 1000, full, nullptr), 0U);
    CPath path(u"\\\\?\\" + std::u16string(full));
    for (int level = 0; level < 5; ++level) {
        ASSERT_TRUE(CreateDirectory(path, nullptr)) << level << " " << GetLastError();
        path += u'\\' + std::u16string(80, static_cast<char16_t>(u'a' + level));
    }
    const Handle file = CreateFile(path, GenericWrite, 0, nullptr, CreateNew, 0, nullptr);
    ASSERT_NE(file, InvalidHandle()) << GetLastError();
    CloseHandle(file);
    EXPECT_EQ(Found(path.substr(0, path.size() - 80) + u"*"), ". .. " + std::string(80, 'e'));
    EXPECT_TRUE(DeleteFile(path));
    for (int level = 0; level < 4; ++level) { // what the C++ library cannot remove everywhere
        path.resize(path.size() - 81);
        EXPECT_TRUE(RemoveDirectory(path)) << level;
    }
}

TEST(SearchConformance, DrivesAndTheirTypes) {
    struct Row {
        const char16_t* root;
        std::uint32_t type;
        Wine wine = Wine::AsWindows;
    };
    const CScratch scratch;
    constexpr Row rows[] = {{u"\\", DriveFixed},
                            {nullptr, DriveFixed},
                            {u"Q:\\", DriveNoRootDir},
                            {u"\\\\none\\none\\", DriveNoRootDir},
                            {u"\\no such folder\\", DriveNoRootDir, Wine::Otherwise}};
    for (const Row& row : rows) {
        const std::string root = row.root ? Readable(row.root) : "null";
        Claim(row.wine, root, [&] { EXPECT_EQ(GetDriveType(row.root), row.type) << root; });
    }
    EXPECT_EQ(ErrorOf([] { return GetDiskFreeSpaceEx(u"Q:\\", nullptr, nullptr, nullptr); }), 3U);
}

TEST(SearchConformance, AFileOnAPath) {
    const CScratch scratch;
    scratch.MakeFolder(u"one");
    scratch.MakeFolder(u"two");
    scratch.Make(u"two\\file.ext");
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
