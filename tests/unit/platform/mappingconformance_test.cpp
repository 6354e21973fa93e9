// What the system answers about mappings, on both systems.
#include "platform/inc/mappings.h"
#include "platform/inc/memory.h"
#include "tests/unit/platform/scratchfolder.h"
#include <cstring>
#include <thread>
#include <vector>

using namespace Platform;

namespace {

constexpr std::uint32_t Unit = 0x10000;

Handle Create(std::uint32_t protection, std::uint32_t size) {
    return CreateFileMapping(InvalidHandle(), nullptr, protection, 0, size, nullptr);
}

char* Map(Handle mapping, std::uint32_t access, std::uint32_t offset, std::size_t size) {
    return static_cast<char*>(MapViewOfFile(mapping, access, 0, offset, size));
}

} // namespace

TEST(Mappings, AnswersToTheArguments) {
    struct Row {
        const char* name;
        std::uint32_t protection, access, offset;
        std::size_t size;
        std::uint32_t error; // 0: mapped
        Wine wine = Wine::AsWindows;
    };
    constexpr Row rows[] = {
        {"a part", PageReadWrite, FileMapWrite, Unit, Unit, 0},
        {"to the end", PageReadWrite, FileMapRead, Unit, 0, 0},
        {"reading what is read only", PageReadOnly, FileMapRead, 0, 100, 0},
        {"off the grid", PageReadWrite, FileMapRead, 4096, 100, ErrorMappedAlignment},
        {"nothing behind the offset", PageReadWrite, FileMapRead, 2 * Unit, 0, ErrorAccessDenied, Wine::Otherwise},
        {"longer than the object", PageReadWrite, FileMapRead, Unit, Unit + 1, ErrorAccessDenied},
        {"writing what is read only", PageReadOnly, FileMapWrite, 0, 100, ErrorAccessDenied}};
    for (const Row& row : rows) {
        Claim(row.wine, row.name, [&] {
            Handle mapping = Create(row.protection, 2 * Unit);
            char* view = nullptr;
            EXPECT_EQ(ErrorOf([&] { return view = Map(mapping, row.access, row.offset, row.size); }), row.error)
                << row.name;
            EXPECT_TRUE(!view || (*view == 0 && UnmapViewOfFile(view))) << row.name;
            EXPECT_TRUE(CloseHandle(mapping)) << row.name;
        });
    }
    EXPECT_EQ(ErrorOf([] { return Create(PageReadWrite, 0); }), ErrorInvalidParameter);
    EXPECT_EQ(ErrorOf([] { return Map(nullptr, FileMapRead, 0, 1); }), ErrorInvalidHandle);
    char notMapped = 0;
    EXPECT_EQ(ErrorOf([&] { return UnmapViewOfFile(&notMapped); }), ErrorInvalidAddress);
}

TEST(Mappings, ViewsShowOneMemoryAndOutliveTheObject) {
    Handle mapping = Create(PageReadWrite, 2 * Unit);
    Handle other = Create(PageReadWrite, Unit);
    char* whole = Map(mapping, FileMapWrite, 0, 0);
    const char* part = Map(mapping, FileMapRead, Unit, 10);
    const char* elsewhere = Map(other, FileMapRead, 0, 0);
    ASSERT_TRUE(whole && part && elsewhere);
    std::memcpy(whole + Unit, "seen", 5);
    EXPECT_STREQ(part, "seen");
    EXPECT_TRUE(FlushViewOfFile(whole, 0));
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_TRUE(UnmapViewOfFile(whole));
    EXPECT_STREQ(part, "seen") << "after the object and the view that wrote it";
    EXPECT_STREQ(elsewhere, "");
    EXPECT_TRUE(UnmapViewOfFile(part));
    EXPECT_FALSE(FlushViewOfFile(part, 0));
    EXPECT_TRUE(UnmapViewOfFile(elsewhere));
    EXPECT_TRUE(CloseHandle(other));
}

TEST(Mappings, ObjectsAreManyAndEmptyWhenMade) {
    const auto useMany = [] { // by two threads
        for (int i = 0; i < 2'000; ++i) {
            Handle mapping = Create(PageReadWrite, Unit);
            char* view = Map(mapping, FileMapWrite, 0, 0);
            ASSERT_TRUE(view && *view == 0) << i << ": nothing of an object before it";
            *view = 'x';
            ASSERT_TRUE(CloseHandle(mapping) && UnmapViewOfFile(view)) << i;
        }
    };
    std::thread other(useMany);
    useMany();
    other.join();
    std::vector<Handle> many; // more than a process may have files open, as a rule
    for (int i = 0; i < 3'000 && (many.empty() || many.back()); ++i) {
        many.push_back(Create(PageReadWrite, Unit));
    }
    EXPECT_TRUE(many.back()) << many.size();
    for (Handle mapping : many) {
        CloseHandle(mapping);
    }
}

TEST(Mappings, ViewsBeyondFourGibibytes) {
    Handle mapping = CreateFileMapping(InvalidHandle(), nullptr, PageReadWrite, 1, 2 * Unit, nullptr);
    if (!mapping) {
        GTEST_SKIP() << "the system has no room for it";
    }
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 1, Unit, 0));
    const char* low = Map(mapping, FileMapRead, Unit, 1);
    const auto* again = static_cast<const char*>(MapViewOfFile(mapping, FileMapRead, 1, Unit, Unit));
    ASSERT_TRUE(view && low && again);
    view[Unit - 1] = 'x';
    EXPECT_TRUE(again[Unit - 1] == 'x' && *low == 0);
    EXPECT_FALSE(MapViewOfFile(mapping, FileMapRead, 1, Unit, Unit + 1));
    EXPECT_TRUE(UnmapViewOfFile(view) && UnmapViewOfFile(low) && UnmapViewOfFile(again) && CloseHandle(mapping));
}
