#include "foundation/inc/filemapping.h"

#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "platform/inc/memory.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <cstring>
#include <functional>

using namespace Tsx;

TEST(FileMapping, SizesAreTheSystems) {
    EXPECT_EQ(ViewSize, static_cast<std::int64_t>(Platform::GetSystemInfo().allocationGranularity));
    EXPECT_EQ(MappingUnit, ViewSize);
}

TEST(FileMapping, ViewsBeginAnywhere) {
    CMemoryMapping mapping(1, 3 * ViewSize);
    EXPECT_EQ(mapping.File, Platform::InvalidHandle());
    auto* whole = static_cast<char*>(mapping.MapView(Platform::FileMapWrite, 0, 0));
    std::memcpy(whole + ViewSize + 100, "abc", 4);
    auto* part = static_cast<char*>(mapping.MapView(Platform::FileMapRead, ViewSize + 101, 3));
    auto* rest = static_cast<char*>(mapping.MapView(Platform::FileMapRead, ViewSize + 102, 0));
    EXPECT_STREQ(part, "bc");
    EXPECT_STREQ(rest, "c");
    EXPECT_EQ(static_cast<char*>(mapping.Views.Get(part)) + 101, part) << "the system's address is on its grid";
    mapping.Flush();
    mapping.UnmapView(part);
    EXPECT_STREQ(rest, "c");
    EXPECT_EQ(mapping.Views.GetItemCount(), 2);

    mapping.SetSize(ViewSize);
    EXPECT_TRUE(mapping.Views.IsEmpty());
    EXPECT_STREQ(static_cast<char*>(mapping.MapView(Platform::FileMapRead, 0, 0)), "") << "the contents are lost";
    EXPECT_TRUE(Raised<CLastErrorException>([&] { mapping.MapView(Platform::FileMapRead, ViewSize, 1); }));
    mapping.Close();
    mapping.Close();
    EXPECT_FALSE(mapping.IsOpen());
    EXPECT_EQ(mapping.File, nullptr);
}

TEST(FileMapping, TakesOverAnotherOnesObject) {
    CMapping mapping;
    EXPECT_TRUE(Raised<CInternalError>([&] { mapping.Attach(nullptr); }));
    mapping.Attach(
        Platform::CreateFileMapping(Platform::InvalidHandle(), nullptr, Platform::PageReadWrite, 0, 100, nullptr));
    EXPECT_EQ(mapping.Writable, 0U);
    EXPECT_EQ(mapping.File, Platform::InvalidHandle());
    EXPECT_EQ(*static_cast<char*>(mapping.MapView(Platform::FileMapRead, 99, 1)), '\0');
    EXPECT_TRUE(Raised<CInternalError>([&] { mapping.Attach(mapping.Handle); }));
}

TEST(FileMapping, WrongCallsAreInternalErrors) {
    CMapping closed;
    CMemoryMapping mapping(1, 100);
    char byte = 0;
    const std::function<void()> calls[] = {[&] { closed.MapView(Platform::FileMapRead, 0, 1); },
                                           [&] { closed.SetSize(1); },
                                           [&] { closed.UnmapView(nullptr); },
                                           [&] { mapping.UnmapView(&byte); },
                                           [&] { mapping.MapView(Platform::FileMapRead, -1, 1); },
                                           [&] { mapping.MapView(Platform::FileMapRead, 0, -1); },
                                           [&] { mapping.SetSize(0); },
                                           [&] { mapping.CMapping::SetSize(-1); },
                                           [&] { const CMemoryMapping negative(1, -1); }};
    for (const auto& call : calls) {
        EXPECT_TRUE(Raised<CInternalError>(call)) << "call " << &call - calls;
        EXPECT_EQ(ShownInstead(call), 1U) << "call " << &call - calls;
    }
    EXPECT_TRUE(mapping.IsOpen());
    EXPECT_TRUE(Raised<CLastErrorException>([&] { mapping.CMapping::SetSize(0); }))
        << "the system has none of that size";
    EXPECT_FALSE(mapping.IsOpen());
}

TEST(FileMapping, FailuresOfTheSystem) {
    if (!Platform::FaultsAvailable()) {
        GTEST_SKIP() << "this build has no fault hook";
    }
    CMemoryMapping mapping(1, ViewSize);
    mapping.MapView(Platform::FileMapRead, 0, 0);
    struct Row {
        const char* function;
        std::function<void()> call;
    };
    const Row rows[] = {{"FlushViewOfFile", [&] { mapping.Flush(); }},
                        {"MapViewOfFile", [&] { mapping.MapView(Platform::FileMapRead, 0, 0); }},
                        {"CreateFileMapping", [&] { const CMemoryMapping other(1, 1); }}};
    for (const Row& row : rows) {
        Platform::ArmFault(row.function, 1, 8, Platform::FaultMode::Once);
        EXPECT_TRUE(Raised<CMemoryException>(row.call)) << row.function;
        Platform::ArmFault(row.function, 1, 1455, Platform::FaultMode::Once);
        const auto failure = Raised<CLastErrorException>(row.call);
        EXPECT_EQ(failure ? failure->code : 0, 1455U) << row.function;
        Platform::DisarmFaults();
    }
    Platform::ArmFault("UnmapViewOfFile", 1, 5, Platform::FaultMode::FromThenOn);
    mapping.Close();
    Platform::DisarmFaults();
    EXPECT_TRUE(mapping.Views.IsEmpty()) << "what the system says to the end of a view goes unnoticed";
}
