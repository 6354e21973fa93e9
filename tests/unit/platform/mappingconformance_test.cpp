// What the system answers about mappings, on both systems.
#include "platform/inc/mappings.h"
#include "platform/inc/memory.h"
#include "tests/support/recordinghandler.h"
#include "tests/unit/platform/scratchfolder.h"
#include <cstring>
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
    const auto error = [](std::uint32_t protection, std::uint32_t access, std::uint32_t offset, std::size_t size) {
        Handle mapping = Create(protection, 2 * Unit);
        char* view = nullptr;
        const std::uint32_t found = ErrorOf([&] { return view = Map(mapping, access, offset, size); });
        EXPECT_TRUE(!view || (*view == 0 && UnmapViewOfFile(view)));
        EXPECT_TRUE(CloseHandle(mapping));
        return found;
    };
    EXPECT_EQ(error(PageReadWrite, FileMapWrite, Unit, Unit), 0U);
    EXPECT_EQ(error(PageReadWrite, FileMapRead, Unit, 0), 0U) << "to the end";
    EXPECT_EQ(error(PageReadOnly, FileMapRead, 0, 100), 0U);
    EXPECT_EQ(error(PageReadOnly, FileMapWrite, 0, 100), ErrorAccessDenied);
    EXPECT_EQ(error(PageReadWrite, FileMapRead, 4096, 100), ErrorMappedAlignment);
    EXPECT_EQ(error(PageReadWrite, FileMapRead, Unit, Unit + 1), ErrorAccessDenied) << "beyond the end";
    Claim(Wine::Otherwise, "a view of nothing",
          [&] { EXPECT_EQ(error(PageReadWrite, FileMapRead, 2 * Unit, 0), ErrorAccessDenied); });
    EXPECT_EQ(ErrorOf([] { return Create(PageReadWrite, 0); }), ErrorInvalidParameter);
    EXPECT_EQ(ErrorOf([] { return Map(nullptr, FileMapRead, 0, 1); }), ErrorInvalidHandle);
    char notMapped = 0;
    EXPECT_EQ(ErrorOf([&] { return UnmapViewOfFile(&notMapped); }), ErrorInvalidAddress);
}

TEST(Mappings, ViewsShowOneMemoryAndOutliveTheObject) {
    Handle mapping = Create(PageReadWrite, 2 * Unit);
    char* whole = Map(mapping, FileMapWrite, 0, 0);
    const char* part = Map(mapping, FileMapRead, Unit, 10);
    ASSERT_TRUE(whole && part);
    std::memcpy(whole + Unit, "seen", 5);
    EXPECT_STREQ(part, "seen");
    EXPECT_TRUE(FlushViewOfFile(whole, 0) && CloseHandle(mapping) && UnmapViewOfFile(whole));
    EXPECT_STREQ(part, "seen") << "after the object and the view that wrote it";
    EXPECT_TRUE(UnmapViewOfFile(part));
    EXPECT_FALSE(FlushViewOfFile(part, 0));
}

TEST(Mappings, ObjectsAreManyAndEmptyWhenMade) {
    OnThreads(2, [](int) {
        for (int i = 0; i < 2'000; ++i) {
            Handle mapping = Create(PageReadWrite, Unit);
            char* view = Map(mapping, FileMapWrite, 0, 0);
            ASSERT_TRUE(view && *view == 0) << i << ": nothing of an object before it";
            *view = 'x';
            ASSERT_TRUE(CloseHandle(mapping) && UnmapViewOfFile(view)) << i;
        }
    });
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
