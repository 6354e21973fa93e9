// Files by handle: what CreateFile makes of each disposition, how handles share a file, and what a handle may do.
#include "tests/unit/platform/scratchfolder.h"
#include <array>

using namespace Platform;

namespace {

constexpr std::uint32_t R = GenericRead;
constexpr std::uint32_t W = GenericWrite;
constexpr std::uint32_t ReadOnlyFile = FileAttributeReadOnly;
constexpr std::uint32_t HiddenFile = FileAttributeHidden;

std::string Content(Handle file) {
    std::array<char, 100> bytes{};
    std::uint32_t count = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), bytes.size(), count));
    return {bytes.data(), count};
}

} // namespace

TEST(FileConformance, DispositionsDoWhatTheirNamesSay) {
    struct Row {
        const char* name;
        std::u16string_view path;
        std::uint32_t access, disposition, attributes;
        std::uint32_t error; // the last error: 0 and 183 are successes
        std::int64_t size;   // afterwards, -1: not there
        Wine wine = Wine::AsWindows;
    };
    constexpr std::uint32_t normal = FileAttributeNormal;
    constexpr Row rows[] = {
        {"new", u"new", W, CreateNew, normal, 0, 0},
        {"new over a file", u"file", W, CreateNew, normal, 80, 3},
        {"new over a file of other case", u"FILE", W, CreateNew, normal, 80, 3},
        {"new over a folder", u"folder", W, CreateNew, normal, 80, 0},
        {"new in a missing folder", u"none\\new", W, CreateNew, normal, 3, -1},
        {"new below a file", u"file\\new", W, CreateNew, normal, 3, -1},
        {"new with a closing separator", u"new\\", W, CreateNew, normal, 123, -1},
        {"always", u"new", W, CreateAlways, normal, 0, 0},
        {"always over a file", u"file", W, CreateAlways, normal, 183, 0},
        {"always over a file, to read", u"file", R, CreateAlways, normal, 183, 0},
        {"always over a folder", u"folder", W, CreateAlways, normal, 5, 0},
        {"always over a read-only file", u"readonly", W, CreateAlways, normal, 5, 3, Wine::Otherwise}, // a root's Wine
        {"always over a hidden file", u"hidden", W, CreateAlways, normal, 5, 3, Wine::Otherwise},
        {"always over a hidden file, repeating it", u"hidden", W, CreateAlways, HiddenFile, 183, 0},
        {"existing", u"file", R, OpenExisting, normal, 0, 3},
        {"existing, by other case", u"FilE", R, OpenExisting, normal, 0, 3},
        {"existing, no access", u"file", 0, OpenExisting, normal, 0, 3},
        {"existing, missing", u"new", R, OpenExisting, normal, 2, -1},
        {"existing, missing folder", u"none\\new", R, OpenExisting, normal, 3, -1},
        {"existing folder", u"folder", R, OpenExisting, normal, 5, 0},
        {"existing folder, asked for", u"folder", R, OpenExisting, FileFlagBackupSemantics, 0, 0},
        {"existing folder with a closing separator", u"folder\\", R, OpenExisting, normal, 3, 0, Wine::Otherwise},
        {"existing with a closing separator", u"file\\", R, OpenExisting, normal, 123, -1},
        {"existing read-only, to write", u"readonly", W, OpenExisting, normal, 5, 3, Wine::Otherwise},
        {"existing read-only, to read", u"readonly", R, OpenExisting, normal, 0, 3},
        {"existing hidden, to write", u"hidden", W, OpenExisting, normal, 0, 3},
        {"open or make", u"new", W, OpenAlways, normal, 0, 0},
        {"open or make, there", u"file", W, OpenAlways, normal, 183, 3},
        {"open or make, a folder", u"folder", W, OpenAlways, normal, 5, 0},
        {"empty", u"file", W, TruncateExisting, normal, 0, 0},
        {"empty what is missing", u"new", W, TruncateExisting, normal, 2, -1},
        {"empty without writing", u"file", R, TruncateExisting, normal, 87, 3, Wine::Otherwise},
        {"no such disposition", u"file", R, 6, normal, 87, 3},
        {"a character no name has", u"a?b", W, CreateNew, normal, 123, -1},
        {"another", u"a|b", R, OpenExisting, normal, 123, -1},
        {"a control character", u"a\x1F", W, CreateNew, normal, 123, -1},
        {"blanks and dots that close a name go", u"file. .", R, OpenExisting, normal, 0, 3},
        {"dots and blanks within", u" a..b c", W, CreateNew, normal, 0, 0},
        {"beyond the basic plane", u"\U0001F600", W, CreateNew, normal, 0, 0},
        {"up and down", u"folder\\..\\none\\..\\file", R, OpenExisting, normal, 0, 3},
    };
    for (const Row& row : rows) {
        const CScratch scratch;
        scratch.MakeFolder(u"folder");
        scratch.Make(u"file", "abc");
        scratch.Make(u"readonly", "abc");
        scratch.Make(u"hidden", "abc");
        EXPECT_TRUE(SetFileAttributes(scratch(u"readonly"), ReadOnlyFile));
        EXPECT_TRUE(SetFileAttributes(scratch(u"hidden"), HiddenFile));
        Claim(row.wine, row.name, [&] {
            const bool opened = scratch.CanOpen(row.path, row.access, 0, row.disposition, row.attributes);
            EXPECT_EQ(GetLastError(), row.error) << row.name;
            EXPECT_EQ(opened, row.error == 0 || row.error == ErrorAlreadyExists) << row.name;
            EXPECT_EQ(scratch.SizeOf(row.path), row.size) << row.name;
        });
    }
    EXPECT_EQ(ErrorOf([] { return CreateFile(u"", R, 0, nullptr, OpenExisting, 0, nullptr) != InvalidHandle(); }), 3U);
}

// Each pair of handles to one file, by access and share mode of both.
TEST(FileConformance, HandlesShareAFileOnlyIfBothAgree) {
    const CScratch scratch;
    scratch.Make(u"file", "abc");
    struct Use {
        std::uint32_t access, uses;
    };
    constexpr Use uses[] = {{R, 1}, {W, 2}, {R | W, 3}};
    for (const Use& first : uses) {
        for (std::uint32_t firstShare = 0; firstShare < 8; ++firstShare) {
            const Handle file = scratch.Open(u"file", first.access, firstShare);
            ASSERT_NE(file, InvalidHandle());
            bool emptied = false;
            for (const Use& second : uses) {
                for (std::uint32_t share = 0; share < 8; ++share) {
                    for (const std::uint32_t disposition : {CreateNew, CreateAlways, OpenExisting, OpenAlways}) {
                        const bool empties = disposition == CreateAlways;
                        if (empties && second.access == R && !Applies(Wine::Otherwise)) {
                            continue; // emptying is no writing there
                        }
                        const std::uint32_t secondUses = second.uses | (empties ? FileShareWrite : 0);
                        const bool agree = (secondUses & ~firstShare) == 0 && (first.uses & ~share) == 0;
                        const std::uint32_t error = disposition == CreateNew ? ErrorFileExists
                                                    : agree                  ? ErrorSuccess
                                                                             : ErrorSharingViolation;
                        emptied = emptied || (empties && agree);
                        EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"FILE", second.access, share, disposition); }),
                                  error)
                            << first.uses << "/" << firstShare << " " << second.uses << "/" << share << " "
                            << disposition;
                    }
                }
            }
            EXPECT_EQ(scratch.SizeOf(u"file") == 0, emptied) << "what is refused leaves the content";
            EXPECT_TRUE(scratch.CanOpen(u"file", 0)) << "questions are free";
            EXPECT_TRUE(CloseHandle(file));
            EXPECT_TRUE(DeleteFile(scratch(u"file")));
            scratch.Make(u"file", "abc");
        }
    }
    Claim(Wine::Otherwise, "whoever empties a file writes it", [&] {
        const Handle file = scratch.Open(u"file", R, FileShareRead);
        EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"file", R, 7, CreateAlways); }), ErrorSharingViolation);
        CloseHandle(file);
    });
}

TEST(FileConformance, WhatIsOpenKeepsItsName) {
    constexpr struct {
        std::u16string_view commands;
        std::uint32_t share;
        std::uint32_t error;
        Wine wine = Wine::AsWindows;
    } rows[] = {
        {u"delete file", 3, 32},
        {u"delete file", 7, 0},
        {u"delete file; make file", 7, 0, Wine::Otherwise}, // the name goes with the last handle, as before Windows 10
        {u"move file new", 3, 32},
        {u"move file new", 7, 0},
        {u"replace other file", 3, 5},
        {u"replace other file", 7, 5},
        {u"copy file new", FileShareRead, 0},
        {u"copy file new", 0, 32},
        {u"over other file", 0, 32},
        {u"over other file", 3, 0},
        {u"hide file", 0, 0},
    };
    for (const auto& row : rows) {
        const std::string name = Readable(row.commands) + ", shared " + std::to_string(row.share);
        Claim(row.wine, name, [&] {
            const CScratch scratch;
            scratch.Make(u"file");
            scratch.Make(u"other");
            const Handle file = scratch.Open(u"file", R, row.share);
            EXPECT_EQ(ErrorOf([&] { return Do(scratch, row.commands); }), row.error) << name;
            EXPECT_TRUE(CloseHandle(file));
        });
    }
}

TEST(FileConformance, HandlesDoWhatTheyWereOpenedFor) {
    struct Row {
        const char* name;
        bool (*operation)(Handle);
        std::uint32_t onReading, onWriting;
        Wine wine = Wine::AsWindows;
    };
    // clang-format off
    const Row rows[] = {
        {"read", [](Handle file) { std::uint32_t count = 0; char byte = 0; return ReadFile(file, &byte, 1, count); },
            0, 5},
        {"write", [](Handle file) { std::uint32_t count = 0; return WriteFile(file, "x", 1, count); }, 5, 0},
        {"end", [](Handle file) { return SetEndOfFile(file); }, 5, 0, Wine::Otherwise},
        {"flush", [](Handle file) { return FlushFileBuffers(file); }, 5, 0},
        {"set times", [](Handle file) { const std::int64_t time = 0x1D0000000000000; return SetFileTime(file, nullptr,
            nullptr, &time); }, 5, 0, Wine::Otherwise},
        {"times", [](Handle file) { return GetFileTime(file, nullptr, nullptr, nullptr); }, 0, 0},
        {"size", [](Handle file) { std::int64_t size = 0; return GetFileSizeEx(file, size); }, 0, 0},
        {"type", [](Handle file) { return GetFileType(file) == FileTypeDisk; }, 0, 0},
    };
    // clang-format on
    for (const Row& row : rows) {
        Claim(row.wine, row.name, [&] {
            const CScratch scratch;
            scratch.Make(u"file");
            const std::pair<std::uint32_t, std::uint32_t> handles[] = {{R, row.onReading}, {W, row.onWriting}};
            for (const auto& [access, error] : handles) {
                const Handle file = scratch.Open(u"file", access, 0);
                EXPECT_EQ(ErrorOf([&] { return row.operation(file); }), error) << row.name << " " << access;
                CloseHandle(file);
            }
        });
    }
    EXPECT_EQ(ErrorOf([] { return CloseHandle(nullptr); }), ErrorInvalidHandle);
    EXPECT_EQ(ErrorOf([] { return FindClose(InvalidHandle()); }), ErrorInvalidHandle);
    EXPECT_EQ(ErrorOf([] { return GetFileSize(InvalidHandle(), nullptr) != InvalidFileSize; }), ErrorInvalidHandle);
}

TEST(FileConformance, ThePositionMovesInBothForms) {
    const CScratch scratch;
    scratch.Make(u"file", "0123456789");
    const Handle file = scratch.Open(u"file", R | W, 0);
    struct Row {
        std::int32_t distance, high;
        bool hasHigh;
        std::uint32_t method;
        std::uint32_t low; // the result
        std::int32_t newHigh;
        std::uint32_t error;
    };
    constexpr std::uint32_t none = InvalidSetFilePointer;
    constexpr Row rows[] = {{3, 0, false, FileBegin, 3, 0, 4711},    {-1, 0, false, FileCurrent, 2, 0, 4711},
                            {-4, -1, true, FileEnd, 6, 0, 4711},     {-1, 0, true, FileBegin, none, 0, 0},
                            {1, 0, true, FileCurrent, 0, 1, 4711},   {0, 0, false, FileCurrent, none, 0, 87},
                            {5, 0, false, FileBegin, 5, 0, 4711},    {-6, 0, false, FileCurrent, none, 0, 131},
                            {0, -1, true, FileBegin, none, -1, 131}, {0, 0, false, 3, none, 0, 87},
                            {0, 0, false, FileCurrent, 5, 0, 4711}};
    for (const Row& row : rows) {
        const auto number = &row - rows; // the fifth gives a position cut to 32 bits under Wine
        Claim(number == 5 ? Wine::Otherwise : Wine::AsWindows, "move " + std::to_string(number), [&] {
            std::int32_t high = row.high;
            SetLastError(4711);
            EXPECT_EQ(SetFilePointer(file, row.distance, row.hasHigh ? &high : nullptr, row.method), row.low) << number;
            EXPECT_EQ(GetLastError(), row.error) << number;
            EXPECT_EQ(high, row.newHigh) << number;
        });
    }
    EXPECT_EQ(Content(file), "56789");
    EXPECT_EQ(Content(file), "") << "the end";
    std::int64_t position = 0;
    EXPECT_TRUE(SetFilePointerEx(file, 0x100000002, position, FileBegin) && position == 0x100000002);
    EXPECT_EQ(Content(file), "") << "beyond the end";
    EXPECT_TRUE(SetFilePointerEx(file, 2, position, FileBegin) && SetEndOfFile(file));
    EXPECT_TRUE(SetFilePointerEx(file, 1, position, FileEnd) && position == 3);
    std::uint32_t count = 0;
    EXPECT_TRUE(WriteFile(file, "x", 1, count) && count == 1);
    EXPECT_EQ(GetFileSize(file, nullptr), 4U);
    EXPECT_TRUE(SetFilePointerEx(file, 0, position, FileBegin));
    EXPECT_EQ(Content(file), std::string("01\0x", 4)) << "a gap is zeros";
    EXPECT_TRUE(CloseHandle(file));
    const Handle metadata = scratch.Open(u"file", 0, 0);
    EXPECT_TRUE(SetFilePointerEx(metadata, 2, position, FileBegin) && position == 2);
    EXPECT_TRUE(SetFilePointerEx(metadata, -1, position, FileCurrent) && position == 1);
    EXPECT_TRUE(SetFilePointerEx(metadata, 1, position, FileEnd) && position == 5);
    EXPECT_EQ(ErrorOf([&] { return SetFilePointerEx(metadata, -6, position, FileCurrent); }), 131U);
    EXPECT_TRUE(CloseHandle(metadata));
}
