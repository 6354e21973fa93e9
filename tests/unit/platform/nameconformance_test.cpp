// Files and folders by name: attributes, times, deletion, copies, moves, folders, full names.
#include "tests/unit/platform/scratchfolder.h"
#include <span>

using namespace Platform;

namespace {

struct Row {
    const char* name;
    bool (*operation)(const CScratch&);
    std::uint32_t error;
    Wine wine = Wine::AsWindows;
};

// What each row finds: "file" with three bytes, "other" with one, "readonly", "hidden", "folder" with "in" in it,
// "empty" with nothing.
void Try(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const CScratch scratch;
        scratch.Make(u"file", "abc");
        scratch.Make(u"other");
        scratch.Make(u"readonly");
        scratch.Make(u"hidden");
        scratch.MakeFolder(u"folder");
        scratch.Make(u"folder\\in");
        scratch.MakeFolder(u"empty");
        EXPECT_TRUE(SetFileAttributes(scratch(u"readonly"), FileAttributeReadOnly));
        EXPECT_TRUE(SetFileAttributes(scratch(u"hidden"), FileAttributeHidden));
        Claim(row.wine, row.name,
              [&] { EXPECT_EQ(ErrorOf([&] { return row.operation(scratch); }), row.error) << row.name; });
    }
}

constexpr std::uint32_t Replace = MoveFileReplaceExisting;

std::string StoredName(const CScratch& scratch, std::u16string_view name) {
    FindData data;
    const Handle search = FindFirstFile(scratch(name), data);
    FindClose(search);
    return search == InvalidHandle() ? "" : Readable(data.name);
}

} // namespace

TEST(NameConformance, DeletingAndFolders) {
    // clang-format off
    constexpr Row rows[] = {
        {"delete", [](const CScratch& s) { return DeleteFile(s(u"FILE")) && !s.Has(u"file"); }, 0},
        {"delete hidden", [](const CScratch& s) { return DeleteFile(s(u"hidden")); }, 0},
        {"delete read-only", [](const CScratch& s) { return DeleteFile(s(u"readonly")); }, 5},
        {"delete folder", [](const CScratch& s) { return DeleteFile(s(u"empty")); }, 5},
        {"delete missing", [](const CScratch& s) { return DeleteFile(s(u"none")); }, 2},
        {"delete in missing", [](const CScratch& s) { return DeleteFile(s(u"none\\in")); }, 3},
        {"delete with separator", [](const CScratch& s) { return DeleteFile(s(u"file\\")); }, 123},
        {"make folder", [](const CScratch& s) { return CreateDirectory(s(u"new\\"), nullptr) && s.Has(u"new"); }, 0},
        {"make folder, there", [](const CScratch& s) { return CreateDirectory(s(u"Folder"), nullptr); }, 183},
        {"make folder, file", [](const CScratch& s) { return CreateDirectory(s(u"file"), nullptr); }, 183},
        {"make folder, no parent", [](const CScratch& s) { return CreateDirectory(s(u"a\\b"), nullptr); }, 3},
        {"make folder below file", [](const CScratch& s) { return CreateDirectory(s(u"file\\b"), nullptr); }, 3},
        {"make folder, bad name", [](const CScratch& s) { return CreateDirectory(s(u"a<b"), nullptr); }, 123},
        {"make folder, name too long", [](const CScratch& s) { return CreateDirectory(s(std::u16string(256, u'x')),
            nullptr); }, 206, Wine::Otherwise},
        {"open, name too long", [](const CScratch& s) { return s.CanOpen(std::u16string(256, u'x'), GenericRead); }, 3,
            Wine::Otherwise},
        {"longest name", [](const CScratch& s) { return CreateDirectory(s(std::u16string(240, u'x')), nullptr); }, 0},
        {"remove folder", [](const CScratch& s) { return RemoveDirectory(s(u"EMPTY")) && !s.Has(u"empty"); }, 0},
        {"remove, not empty", [](const CScratch& s) { return RemoveDirectory(s(u"folder")); }, 145},
        {"remove file", [](const CScratch& s) { return RemoveDirectory(s(u"file")); }, 267},
        {"remove missing", [](const CScratch& s) { return RemoveDirectory(s(u"none")); }, 2},
        {"remove in missing", [](const CScratch& s) { return RemoveDirectory(s(u"none\\in")); }, 3},
        {"remove read-only", [](const CScratch& s) { return SetFileAttributes(s(u"empty"),
            FileAttributeReadOnly) && s.Has(u"empty") && RemoveDirectory(s(u"empty")); }, 5, Wine::Otherwise},
        {"make in read-only", [](const CScratch& s) { return SetFileAttributes(s(u"empty"),
            FileAttributeReadOnly) && s.CanOpen(u"empty\\new", GenericWrite, 0, CreateNew); }, 0},
        {"attributes of missing",
            [](const CScratch& s) { return GetFileAttributes(s(u"none")) != InvalidFileAttributes; }, 2},
        {"attributes in missing",
            [](const CScratch& s) { return GetFileAttributes(s(u"none\\in")) != InvalidFileAttributes; }, 3},
        {"attributes of folder with separator", [](const CScratch& s) { return s.Has(u"folder\\"); }, 0},
        {"attributes of bad name", [](const CScratch& s) { return s.Has(u"a*b"); }, 123},
        {"free space", [](const CScratch& s) { std::uint64_t free = 0; std::uint64_t total = 0;
            return GetDiskFreeSpaceEx(s(u"folder"), &free, &total, nullptr) && free > 0 && free <= total; }, 0},
        {"free space at a file", [](const CScratch& s) { return GetDiskFreeSpaceEx(s(u"file"), nullptr, nullptr,
            nullptr); }, 267},
    };
    // clang-format on
    Try(rows);
}

TEST(NameConformance, CopiesAndMoves) {
    constexpr Row rows[] = {
        {"copy", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"new"), true) && s.SizeOf(u"new") == 3; }, 0},
        {"copy over",
         [](const CScratch& s) { return CopyFile(s(u"other"), s(u"file"), false) && s.SizeOf(u"file") == 1; }, 0},
        {"copy, there", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"other"), true); }, 80},
        {"copy missing", [](const CScratch& s) { return CopyFile(s(u"none"), s(u"new"), false); }, 2},
        {"copy to missing", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"none\\new"), false); }, 3},
        {"copy onto itself", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"FILE"), false); }, 32},
        {"copy onto folder", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"folder"), false); }, 5},
        {"copy folder", [](const CScratch& s) { return CopyFile(s(u"folder"), s(u"new"), false); }, 5},
        {"copy onto read-only", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"readonly"), false); }, 5,
         Wine::Otherwise},
        {"copy onto hidden", [](const CScratch& s) { return CopyFile(s(u"file"), s(u"hidden"), false); }, 5,
         Wine::Otherwise},
        {"copy takes attributes",
         [](const CScratch& s) {
             return CopyFile(s(u"hidden"), s(u"new"), false) && CopyFile(s(u"readonly"), s(u"new2"), false) &&
                    (GetFileAttributes(s(u"new")) & FileAttributeHidden) != 0 &&
                    (GetFileAttributes(s(u"new2")) & FileAttributeReadOnly) != 0;
         },
         0},
        {"rename", [](const CScratch& s) { return MoveFile(s(u"file"), s(u"new")) && s.SizeOf(u"new") == 3; }, 0},
        {"rename folder", [](const CScratch& s) { return MoveFile(s(u"folder"), s(u"f2")) && s.Has(u"f2\\in"); }, 0},
        {"rename, there", [](const CScratch& s) { return MoveFile(s(u"file"), s(u"Other")); }, 183},
        {"rename folder, there", [](const CScratch& s) { return MoveFile(s(u"folder"), s(u"empty")); }, 183},
        {"rename missing", [](const CScratch& s) { return MoveFile(s(u"none"), s(u"new")); }, 2},
        {"rename to missing", [](const CScratch& s) { return MoveFile(s(u"file"), s(u"none\\new")); }, 3},
        {"rename to itself", [](const CScratch& s) { return MoveFile(s(u"file"), s(u"file")); }, 0},
        {"rename read-only", [](const CScratch& s) { return MoveFile(s(u"readonly"), s(u"new")); }, 0},
        {"change case",
         [](const CScratch& s) { return MoveFile(s(u"file"), s(u"FiLe")) && StoredName(s, u"file") == "FiLe"; }, 0,
         Wine::Otherwise},
        {"replace",
         [](const CScratch& s) {
             return MoveFileEx(s(u"file"), s(u"other"), Replace) && s.SizeOf(u"other") == 3 && !s.Has(u"file");
         },
         0},
        {"replace, written through",
         [](const CScratch& s) {
             return MoveFileEx(s(u"file"), s(u"other"), Replace | MoveFileCopyAllowed | MoveFileWriteThrough);
         },
         0},
        {"replace read-only", [](const CScratch& s) { return MoveFileEx(s(u"file"), s(u"readonly"), Replace); }, 5,
         Wine::Otherwise},
        {"replace folder", [](const CScratch& s) { return MoveFileEx(s(u"file"), s(u"empty"), Replace); }, 5},
    };
    Try(rows);
}

TEST(NameConformance, AttributesReadBack) {
    struct AttributeRow {
        std::uint32_t set, ofFile, ofFolder;
        Wine wine = Wine::AsWindows;
    };
    constexpr std::uint32_t folder = FileAttributeDirectory;
    constexpr AttributeRow rows[] = {
        {0x22, 0x22, folder | 0x22, Wine::Otherwise}, {0x27, 0x27, folder | 0x27, Wine::Otherwise},
        {0x20, 0x20, folder | 0x20, Wine::Otherwise}, {0x80, 0x80, folder, Wine::Otherwise}, // always archive there
        {0x01, 0x01, folder | 0x01, Wine::Otherwise}, {0x80, 0x80, folder, Wine::Otherwise}};
    const CScratch scratch;
    scratch.Make(u"file");
    scratch.MakeFolder(u"folder");
    EXPECT_EQ(GetFileAttributes(scratch(u"file")), FileAttributeArchive) << "nobody touched it";
    EXPECT_EQ(GetFileAttributes(scratch(u"folder")), FileAttributeDirectory);
    for (const AttributeRow& row : rows) {
        EXPECT_TRUE(SetFileAttributes(scratch(u"file"), row.set)) << row.set;
        EXPECT_TRUE(SetFileAttributes(scratch(u"folder"), row.set)) << row.set;
        EXPECT_EQ(GetFileAttributes(scratch(u"file")) & 7, row.ofFile & 7) << row.set;
        Claim(row.wine, std::to_string(row.set), [&] {
            EXPECT_EQ(GetFileAttributes(scratch(u"file")), row.ofFile) << row.set;
            EXPECT_EQ(GetFileAttributes(scratch(u"folder")), row.ofFolder) << row.set;
        });
    }
}

TEST(NameConformance, TimesAreExactAndLeftAloneOnWish) {
    const CScratch scratch;
    scratch.Make(u"file", "12345");
    constexpr std::int64_t creation = 0x01C0000000000123;
    constexpr std::int64_t access = 0x01D0000000000321;
    constexpr std::int64_t write = 0x01D1000000000457;
    constexpr std::int64_t zero = 0;
    const Handle file = scratch.Open(u"file", GenericRead | GenericWrite, 0);
    EXPECT_TRUE(SetFileTime(file, &creation, &access, &write));
    EXPECT_TRUE(SetFileTime(file, &zero, nullptr, &zero)) << "neither is a time";
    std::int64_t times[3] = {};
    EXPECT_TRUE(GetFileTime(file, &times[0], &times[1], &times[2]));
    EXPECT_TRUE(times[1] == access && times[2] == write);
    const std::int64_t impossible = -5;
    EXPECT_EQ(ErrorOf([&] { return SetFileTime(file, nullptr, nullptr, &impossible); }), ErrorInvalidParameter);
    CloseHandle(file);
    FileAttributeData data;
    EXPECT_TRUE(GetFileAttributesEx(scratch(u"file"), data));
    EXPECT_TRUE(data.lastAccessTime == access && data.lastWriteTime == write && data.size == 5);
    FindData found;
    EXPECT_TRUE(FindClose(FindFirstFile(scratch(u"file"), found)));
    EXPECT_TRUE(found.lastAccessTime == access && found.lastWriteTime == write && found.size == 5);
    Claim(Wine::Otherwise, "the time of creation", [&] {
        EXPECT_TRUE(times[0] == creation && data.creationTime == creation && found.creationTime == creation);
    });
    EXPECT_TRUE(CopyFile(scratch(u"file"), scratch(u"copy"), false));
    EXPECT_TRUE(GetFileAttributesEx(scratch(u"copy"), data) && data.lastWriteTime == write);
}

TEST(NameConformance, FullNames) {
    struct NameRow {
        std::u16string_view path, full;
        std::u16string_view file; // what stands behind the last separator, empty: nothing
        Wine wine = Wine::AsWindows;
    };
    constexpr NameRow rows[] = {{u"C:\\a\\..\\b", u"C:\\b", u"b"},
                                {u"C:\\a\\.", u"C:\\a", u"a"},
                                {u"C:\\a\\", u"C:\\a\\", u""},
                                {u"c:/a//b/", u"c:\\a\\b\\", u""},
                                {u"C:\\", u"C:\\", u""},
                                {u"C:\\a\\..\\..\\..", u"C:\\", u""},
                                {u"C:\\a.\\b. .", u"C:\\a\\b", u"b"},
                                {u"C:\\a..\\b", u"C:\\a..\\b", u"b", Wine::Otherwise},
                                {u"C:\\ a", u"C:\\ a", u" a"},
                                {u"C:\\...", u"C:\\", u""},
                                {u"\\\\s\\h\\..\\x", u"\\\\s\\h\\x", u"x"},
                                {u"\\\\s\\h", u"\\\\s\\h", u"h"},
                                {u"//s/h/x/./y", u"\\\\s\\h\\x\\y", u"y"},
                                {u"\\\\?\\C:\\a\\..\\b", u"\\\\?\\C:\\b", u"b"},
                                {u"", u"", u""}};
    for (const NameRow& row : rows) {
        Claim(row.wine, Readable(row.path), [&] {
            char16_t buffer[100] = {};
            char16_t* file = nullptr;
            const std::uint32_t length = GetFullPathName(CPath(std::u16string(row.path)), 100, buffer, &file);
            EXPECT_EQ(length, row.full.size()) << Readable(row.path);
            EXPECT_EQ(Readable(buffer), Readable(row.full)) << Readable(row.path);
            EXPECT_EQ(Readable(file ? file : u""), Readable(row.file)) << Readable(row.path);
        });
    }
    char16_t buffer[10] = u"untouched";
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 9, buffer, nullptr), 10U);
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 0, nullptr, nullptr), 10U);
    EXPECT_EQ(std::u16string_view(buffer), u"untouched");
    EXPECT_EQ(GetFullPathName(u"C:\\abcdef", 10, buffer, nullptr), 9U);
}

TEST(NameConformance, TheCurrentFolderIsWhereNamesBegin) {
    char16_t before[1000] = {};
    ASSERT_GT(GetCurrentDirectory(1000, before), 0U);
    const CScratch scratch;
    scratch.MakeFolder(u"folder");
    EXPECT_EQ(ErrorOf([&] { return SetCurrentDirectory(scratch(u"none")); }), 2U);
    ASSERT_TRUE(SetCurrentDirectory(scratch(u"folder")));
    EXPECT_TRUE(CreateDirectory(u"here", nullptr));
    EXPECT_TRUE(scratch.Has(u"folder\\here"));
    char16_t now[1000] = {};
    char16_t full[1000] = {};
    EXPECT_GT(GetCurrentDirectory(1000, now), 0U);
    EXPECT_GT(GetFullPathName(u"..\\folder\\.", 1000, full, nullptr), 0U);
    EXPECT_EQ(Readable(full), Readable(now));
    EXPECT_EQ(ErrorOf([&] { return RemoveDirectory(scratch(u"folder\\here")) && RemoveDirectory(now); }), 32U);
    EXPECT_TRUE(SetCurrentDirectory(before));
}
