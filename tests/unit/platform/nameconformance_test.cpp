// Files and folders by name: attributes, times, deletion, copies, moves, folders, full names.
#include "tests/unit/platform/scratchfolder.h"

using namespace Platform;

TEST(NameConformance, CommandsAnswerAsWindows) {
    const auto errorOf = [](const std::u16string& commands) {
        const CScratch scratch;
        scratch.Make(u"file", "abc");
        for (const char16_t* name : {u"other", u"readonly", u"hidden", u"folder\\in"}) {
            scratch.Make(name);
        }
        EXPECT_TRUE(Do(scratch, u"mkdir empty; protect readonly; hide hidden"));
        return std::to_string(ErrorOf([&] { return Do(scratch, commands); }));
    };
    const std::u16string tooLong(256, u'x');
    ExpectRows(errorOf, {u"delete FILE; gone file -> 0", u"delete hidden; gone hidden -> 0", u"delete readonly -> 5",
                         u"delete empty -> 5", u"delete none -> 2", u"delete none\\in -> 3", u"delete file\\ -> 123",
                         u"mkdir new\\; has new -> 0", u"mkdir Folder -> 183", u"mkdir file -> 183", u"mkdir a\\b -> 3",
                         u"mkdir file\\b -> 3", u"mkdir a<b -> 123"});
    ExpectRows(errorOf, {u"rmdir EMPTY; gone empty -> 0", u"rmdir folder -> 145", u"rmdir file -> 267",
                         u"rmdir none -> 2", u"rmdir none\\in -> 3", u"protect empty; make empty\\new -> 0",
                         u"has none -> 2", u"has none\\in -> 3", u"has folder\\ -> 0", u"has a*b -> 123"});
    ExpectRows(errorOf,
               {u"copy file new; bytes new 3; bytes file 3 -> 0", u"over other file; bytes file 1 -> 0",
                u"copy file other -> 80", u"over none new -> 2", u"over file none\\new -> 3", u"over file FILE -> 32",
                u"over file folder -> 5", u"over folder new -> 5", u"over readonly new; delete new -> 5"});
    ExpectRows(errorOf, {u"move file new; bytes new 3; gone file -> 0", u"move folder f2; has f2\\in; gone folder -> 0",
                         u"move file Other -> 183", u"move folder empty -> 183", u"move none new -> 2",
                         u"move file none\\new -> 3", u"move file file -> 0", u"move readonly new -> 0",
                         u"replace file other; bytes other 3; gone file -> 0",
                         u"through file other; bytes other 3; gone file -> 0", u"replace file empty -> 5"});
    ExpectRows(errorOf,
               {u"mkdir " + tooLong + u" -> 206", u"open " + tooLong + u" -> 3",
                u"protect empty; has empty; rmdir empty -> 5", u"over file readonly -> 5", u"over file hidden -> 5",
                u"replace file readonly -> 5"},
               Wine::Otherwise);
}

TEST(NameConformance, WhatCopiesAndMovesKeepOrChange) {
    const CScratch scratch;
    scratch.Make(u"file");
    EXPECT_TRUE(Do(scratch, u"hide file; copy file new"));
    EXPECT_NE(GetFileAttributes(scratch(u"new")) & FileAttributeHidden, 0U);
    Claim(Wine::Otherwise, "change case", [&] {
        EXPECT_TRUE(Do(scratch, u"move file FiLe"));
        EXPECT_EQ(Found(scratch(u"file")), "FiLe");
    });
    std::uint64_t free = 0;
    std::uint64_t total = 0;
    EXPECT_TRUE(GetDiskFreeSpaceEx(scratch(u""), &free, &total, nullptr) && free > 0 && free <= total);
    EXPECT_EQ(ErrorOf([&] { return GetDiskFreeSpaceEx(scratch(u"new"), nullptr, nullptr, nullptr); }), 267U);
}

TEST(NameConformance, AttributesReadBack) {
    const CScratch scratch;
    scratch.Make(u"file");
    EXPECT_TRUE(Do(scratch, u"mkdir folder"));
    EXPECT_EQ(GetFileAttributes(scratch(u"file")), FileAttributeArchive) << "nobody touched it";
    EXPECT_EQ(GetFileAttributes(scratch(u"folder")), FileAttributeDirectory);
    for (const std::uint32_t set : {0x22U, 0x27U, 0x20U, 0x80U, 0x01U, 0x80U}) {
        const std::uint32_t kept = set & ~FileAttributeNormal;
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), set) && SetFileAttributes(scratch(u"folder"), set)) << set;
        EXPECT_EQ(GetFileAttributes(scratch(u"file")) & 7, set & 7) << set;
        Claim(Wine::Otherwise, std::to_string(set), [&] { // always archive there
            EXPECT_EQ(GetFileAttributes(scratch(u"file")), kept == 0 ? FileAttributeNormal : kept) << set;
            EXPECT_EQ(GetFileAttributes(scratch(u"folder")), FileAttributeDirectory | kept) << set;
        });
    }
}

TEST(NameConformance, TimesAreExactAndLeftAloneOnWish) {
    const CScratch scratch;
    scratch.Make(u"file", "12345");
    constexpr std::int64_t set[] = {0x01C0000000000123, 0x01D0000000000321, 116444735999999999}; // the last before 1970
    constexpr std::int64_t zero = 0;
    constexpr std::int64_t impossible = -5;
    const Handle file = scratch.Open(u"file", GenericWrite, 0);
    EXPECT_TRUE(SetFileTime(file, &set[0], &set[1], &set[2]));
    EXPECT_TRUE(SetFileTime(file, &zero, nullptr, &zero)) << "neither is a time";
    EXPECT_EQ(ErrorOf([&] { return SetFileTime(file, nullptr, nullptr, &impossible); }), ErrorInvalidParameter);
    CloseHandle(file);
    FileAttributeData data;
    FindData found;
    EXPECT_TRUE(GetFileAttributesEx(scratch(u"file"), data) && FindClose(FindFirstFile(scratch(u"file"), found)));
    EXPECT_TRUE(data.size == 5 && data.lastAccessTime == set[1] && data.lastWriteTime == set[2]);
    EXPECT_TRUE(found.size == 5 && found.lastAccessTime == set[1] && found.lastWriteTime == set[2]);
    Claim(Wine::Otherwise, "the time of creation",
          [&] { EXPECT_TRUE(data.creationTime == set[0] && found.creationTime == set[0]); });
    EXPECT_TRUE(Do(scratch, u"copy file copy") && GetFileAttributesEx(scratch(u"copy"), data));
    EXPECT_EQ(data.lastWriteTime, set[2]);
}
// "|" stands before what is told to be the file's name.
TEST(NameConformance, FullNames) {
    const auto fullName = [](const std::u16string& path) {
        char16_t full[100] = {};
        char16_t* file = nullptr;
        const std::size_t length = GetFullPathName(path.c_str(), 100, full, &file);
        EXPECT_EQ(length, std::u16string_view(full).size()) << Readable(path);
        return Readable(file ? std::u16string(full, file) + u"|" + file : full);
    };
    ExpectRows(fullName,
               {u"C:\\a\\..\\b -> C:\\|b", u"C:\\a\\. -> C:\\|a", u"C:\\a\\ -> C:\\a\\", u"c:/a//b/ -> c:\\a\\b\\",
                u"C:\\ -> C:\\", u"C:\\a\\..\\..\\.. -> C:\\", u"C:\\a.\\b. . -> C:\\a\\|b", u"C:\\ a -> C:\\| a",
                u"C:\\... -> C:\\", u"\\\\s\\h\\..\\x -> \\\\s\\h\\|x", u"\\\\s\\h -> \\\\s\\|h",
                u"//s/h/x/./y -> \\\\s\\h\\x\\|y", u"\\\\?\\C:\\a\\..\\b -> \\\\?\\C:\\|b", u" -> "});
    ExpectRows(fullName, {u"C:\\a..\\b -> C:\\a..\\|b"}, Wine::Otherwise);
    char16_t buffer[10] = u"untouched";
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 9, buffer, nullptr), 10U);
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 0, nullptr, nullptr), 10U);
    EXPECT_EQ(std::u16string_view(buffer), u"untouched");
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 10, buffer, nullptr), 9U);
}
