// Files by handle: what CreateFile makes of each disposition, how handles share a file, and what a handle may do.
#include "tests/unit/platform/scratchfolder.h"

using namespace Platform;

namespace {

constexpr std::uint32_t R = GenericRead;
constexpr std::uint32_t W = GenericWrite;

} // namespace

// A name, an access, and a letter for the disposition: new, always, existing, or always opened, truncated. The last
// error (0 and 183 are successes) and the file's size afterwards, -1 without one.
TEST(FileConformance, DispositionsDoWhatTheirNamesSay) {
    std::uint32_t attributes = FileAttributeNormal;
    const auto opened = [&](const std::u16string& question) {
        const CScratch scratch;
        for (const char16_t* name : {u"file", u"readonly", u"hidden"}) {
            scratch.Make(name, "abc");
        }
        EXPECT_TRUE(Do(scratch, u"mkdir folder; protect readonly; hide hidden"));
        const std::u16string name = question.substr(0, question.rfind(u','));
        const char16_t access = question[name.size() + 2];
        const auto disposition = static_cast<std::uint32_t>(std::u16string_view(u" naeot?").find(question.back()));
        const bool done = scratch.CanOpen(name,
                                          access == u'w'   ? W
                                          : access == u'r' ? R
                                                           : 0,
                                          0, disposition, attributes);
        const std::uint32_t error = GetLastError();
        EXPECT_EQ(done, error == 0 || error == ErrorAlreadyExists) << Readable(question);
        return std::to_string(error) + " " + std::to_string(scratch.SizeOf(name));
    };
    ExpectRows(opened, {u"new, wn -> 0 0", u"file, wn -> 80 3", u"FILE, wn -> 80 3", u"folder, wn -> 80 0",
                        u"none\\new, wn -> 3 -1", u"file\\new, wn -> 3 -1", u"new\\, wn -> 123 -1",
                        u"a?b, wn -> 123 -1", u"a\x1F, wn -> 123 -1", u" a..b c, wn -> 0 0", u"\U0001F600, wn -> 0 0"});
    ExpectRows(opened, {u"new, wa -> 0 0", u"file, wa -> 183 0", u"file, ra -> 183 0", u"folder, wa -> 5 0"});
    ExpectRows(opened, {u"FilE, re -> 0 3", u"file, -e -> 0 3", u"new, re -> 2 -1", u"none\\new, re -> 3 -1",
                        u"folder, re -> 5 0", u"file\\, re -> 123 -1", u"readonly, re -> 0 3", u"hidden, we -> 0 3",
                        u"a|b, re -> 123 -1", u"file. ., re -> 0 3", u"folder\\..\\no\\..\\file, re -> 0 3"});
    ExpectRows(opened, {u"new, wo -> 0 0", u"file, wo -> 183 3", u"folder, wo -> 5 0", u"file, wt -> 0 0",
                        u"new, wt -> 2 -1", u"file, r? -> 87 3"});
    // Wine opens what is hidden or read-only, and empties without writing.
    ExpectRows(opened,
               {u"readonly, wa -> 5 3", u"hidden, wa -> 5 3", u"folder\\, re -> 3 0", u"readonly, we -> 5 3",
                u"file, rt -> 87 3"},
               Wine::Otherwise);
    attributes = FileAttributeHidden;
    ExpectRows(opened, {u"hidden, wa -> 183 0"});
    attributes = FileFlagBackupSemantics;
    ExpectRows(opened, {u"folder, re -> 0 0"});
    EXPECT_EQ(ErrorOf([] { return CreateFile(u"", R, 0, nullptr, OpenExisting, 0, nullptr) != InvalidHandle(); }), 3U);
}

// Each pair of handles to one file, by access and share mode of both.
TEST(FileConformance, HandlesShareAFileOnlyIfBothAgree) {
    const CScratch scratch;
    const std::pair<std::uint32_t, std::uint32_t> uses[] = {{R, 1}, {W, 2}, {R | W, 3}}; // accesses and what they use
    const auto checkSecond = [&](std::uint32_t firstUses, std::uint32_t firstShare) {
        bool emptied = false;
        for (std::uint32_t i = 0; i < 3 * 8 * 4; ++i) {
            const std::uint32_t access = uses[i / 32].first;
            const std::uint32_t share = i / 4 % 8;
            const std::uint32_t disposition = i % 4 + CreateNew; // and CreateAlways, OpenExisting, OpenAlways
            const bool empties = disposition == CreateAlways;
            if (empties && access == R && !Applies(Wine::Otherwise)) {
                continue; // emptying is no writing there
            }
            const std::uint32_t secondUses = uses[i / 32].second | (empties ? FileShareWrite : 0);
            const bool agree = (secondUses & ~firstShare) == 0 && (firstUses & ~share) == 0;
            emptied = emptied || (empties && agree);
            EXPECT_EQ(ErrorOf([&] { return scratch.CanOpen(u"FILE", access, share, disposition); }),
                      disposition == CreateNew ? ErrorFileExists
                      : agree                  ? ErrorSuccess
                                               : ErrorSharingViolation)
                << firstUses << "/" << firstShare << " " << access << "/" << share << " " << disposition;
        }
        EXPECT_EQ(scratch.SizeOf(u"file") == 0, emptied) << "what is refused leaves the content";
    };
    for (std::uint32_t i = 0; i < 3 * 8; ++i) {
        const auto& [access, firstUses] = uses[i / 8];
        scratch.Make(u"file", "abc");
        const Handle file = scratch.Open(u"file", access, i % 8);
        checkSecond(firstUses, i % 8);
        EXPECT_TRUE(scratch.CanOpen(u"file", 0)) << "questions are free";
        EXPECT_TRUE(CloseHandle(file) && DeleteFile(scratch(u"file")));
    }
}

TEST(FileConformance, WhatIsOpenKeepsItsName) {
    const auto errorOf = [](const std::u16string& row) {
        const CScratch scratch;
        scratch.Make(u"file");
        scratch.Make(u"other");
        const Handle file = scratch.Open(u"file", R, row.back() - u'0');
        const std::uint32_t error = ErrorOf([&] { return Do(scratch, row.substr(0, row.find(u','))); });
        EXPECT_TRUE(CloseHandle(file));
        return std::to_string(error);
    };
    ExpectRows(errorOf,
               {u"delete file, shared 3 -> 32", u"delete file, shared 7 -> 0", u"move file new, shared 3 -> 32",
                u"move file new, shared 7 -> 0", u"replace other file, shared 3 -> 5",
                u"replace other file, shared 7 -> 5", u"copy file new, shared 1 -> 0", u"copy file new, shared 0 -> 32",
                u"over other file, shared 0 -> 32", u"over other file, shared 3 -> 0", u"hide file, shared 0 -> 0"});
    // The name goes with the last handle, as before Windows 10.
    ExpectRows(errorOf, {u"delete file; make file, shared 7 -> 0"}, Wine::Otherwise);
}

TEST(FileConformance, HandlesDoWhatTheyWereOpenedFor) {
    static std::uint32_t count = 0;
    static char byte = 0;
    static constexpr std::int64_t time = 0x1D0000000000000;
    struct Row {
        const char* name;
        bool (*operation)(Handle);
        std::uint32_t onReading, onWriting;
        Wine wine = Wine::AsWindows;
    };
    constexpr Row rows[] = {
        {"read", [](Handle file) { return ReadFile(file, &byte, 1, count); }, 0, 5},
        {"write", [](Handle file) { return WriteFile(file, "x", 1, count); }, 5, 0},
        {"end", [](Handle file) { return SetEndOfFile(file); }, 5, 0, Wine::Otherwise},
        {"flush", [](Handle file) { return FlushFileBuffers(file); }, 5, 0},
        {"times", [](Handle file) { return SetFileTime(file, nullptr, nullptr, &time); }, 5, 0, Wine::Otherwise},
        {"size", [](Handle file) { return GetFileSize(file, nullptr) == 1; }, 0, 0},
        {"type", [](Handle file) { return GetFileType(file) == FileTypeDisk; }, 0, 0},
    };
    for (const Row& row : rows) {
        Claim(row.wine, row.name, [&] {
            const CScratch scratch;
            scratch.Make(u"file");
            for (const auto& [access, error] : {std::pair{R, row.onReading}, {W, row.onWriting}}) {
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

// "b" from the begin, "c" from the current position, "e" from the end, "x" from nowhere; a capital in the form of
// two words.
TEST(FileConformance, ThePositionMovesInBothForms) {
    const CScratch scratch;
    scratch.Make(u"file", "0123456789");
    const Handle file = scratch.Open(u"file", R | W, 0);
    const auto moved = [file](const std::u16string& text) {
        const std::int64_t distance = std::stoll(Readable(text.substr(1)));
        auto high = static_cast<std::int32_t>(distance >> 32);
        const std::size_t form = std::u16string_view(u"bcexBCE").find(text[0]);
        const bool inTwo = form > 3;
        SetLastError(4711);
        const std::uint32_t low = SetFilePointer(file, static_cast<std::int32_t>(distance), inTwo ? &high : nullptr,
                                                 static_cast<std::uint32_t>(form % 4));
        return low == InvalidSetFilePointer && GetLastError() != 0
                   ? "error " + std::to_string(GetLastError())
                   : std::to_string((inTwo ? std::int64_t{high} << 32 : 0) | low);
    };
    ExpectRows(moved, {u"b3 -> 3", u"c-1 -> 2", u"E-4 -> 6", u"B4294967295 -> 4294967295", u"C1 -> 4294967296"});
    ExpectRows(moved, {u"c0 -> error 87"}, Wine::Otherwise); // cut to 32 bits there
    ExpectRows(moved, {u"b5 -> 5", u"c-6 -> error 131", u"B-4294967296 -> error 131", u"x0 -> error 87"});
    const auto rest = [&] {
        char bytes[100];
        std::uint32_t count = 0;
        EXPECT_TRUE(ReadFile(file, bytes, 100, count));
        return std::string(bytes, count);
    };
    const auto move = [&](std::int64_t distance, std::uint32_t from) {
        std::int64_t position = -1;
        return SetFilePointerEx(file, distance, position, from) ? position : -1;
    };
    EXPECT_EQ(rest(), "56789") << "what fails moves nothing";
    EXPECT_EQ(rest(), "") << "the end";
    EXPECT_EQ(move(0x100000002, FileBegin), 0x100000002);
    EXPECT_EQ(rest(), "") << "beyond the end";
    EXPECT_EQ(move(2, FileBegin), 2);
    EXPECT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(move(1, FileEnd), 3);
    std::uint32_t count = 0;
    EXPECT_TRUE(WriteFile(file, "x", 1, count) && count == 1 && GetFileSize(file, nullptr) == 4);
    EXPECT_EQ(move(-4, FileCurrent), 0);
    EXPECT_EQ(rest(), std::string("01\0x", 4)) << "a gap is zeros";
    EXPECT_TRUE(CloseHandle(file));
}
