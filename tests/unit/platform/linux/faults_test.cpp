// What the basic types do when memory ends or a release fails, one failure at a time.
#include "platform/inc/faults.h"

#include "foundation/inc/alloc.h"
#include "foundation/inc/array.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/pointerarray.h"
#include "platform/inc/lasterror.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"

using namespace Tsx;
using Platform::FaultMode;

namespace {

class Faults : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT_FAULTS(); }
    void TearDown() override { Platform::DisarmFaults(); }
};

} // namespace

TEST_F(Faults, EachAllocationThatFailsLeavesTextsAndArraysWhole) {
    struct CRun {
        CUnicodeString text;
        CArray<CUnicodeString> array;
        CPointerArray<int> owned;
    };
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        std::unique_ptr<CRun> run;
        const auto change = [&run] {
            for (int i = 0; i < 40; ++i) {
                run->text += u"and a bit longer each time ";
                run->array.Append(run->text);
                auto number = std::make_unique<int>(i);
                run->owned.Append(number.get());
                static_cast<void>(number.release());
            }
        };
        const auto check = [&run](std::int32_t nth) {
            EXPECT_EQ(run->text.Length() % 27, 0) << nth;
            const std::int32_t size = run->array.Size();
            EXPECT_TRUE(run->text.Length() / 27 - size <= 1 && size - run->owned.Size() <= 1) << nth;
            for (std::int32_t i = 0; i < size; ++i) {
                EXPECT_EQ(run->array[i], run->text.Left(27 * (i + 1))) << nth;
            }
        };
        EXPECT_GT(FailEachCall(
                      "allocation", 8, mode, [&](auto) { run = std::make_unique<CRun>(); }, change, check),
                  20);
    }
}

// What a heap that is not empty tells when it goes, and that a plan for a walk which cannot be had is told too.
TEST_F(Faults, AHeapTellsOfItsLeaks) {
    SetDebugFlag(DebugWalkHeapForLeaks, true);
    SetDebugFlag(DebugShowHeapMemoryLeaks, true);
    CHeapManager manager;
    manager.CreateHeap(0, true);
    manager.Alloc(300);
    testing::internal::CaptureStderr();
    manager.ReportLeaks();
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_NE(shown.find("Internal error: memory leak.\n\nHeap 0x"), std::string::npos) << shown;
    Platform::ArmFault("HeapLock", 1, 6, FaultMode::Once);
    EXPECT_TRUE(Raised<CInternalError>([&] { manager.ReportLeaks(); }));
    SetDebugFlag(DebugShowHeapMemoryLeaks, false);
    Platform::ArmFault("allocation", 1, Platform::ErrorNotEnoughMemory, FaultMode::FromThenOn);
    EXPECT_FALSE(Raised<CMemoryException>([&] { manager.ReportLeaks(); })) << "the walk takes no memory";
    SetDebugFlag(DebugWalkHeapForLeaks, false);
    manager.DestroyHeap();
    EXPECT_FALSE(manager.HasHeap()) << "allowed to take the block along";
}

// Each failure of a release is told, and what comes behind it is released all the same.
TEST_F(Faults, NothingLeavesADestructor) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    Platform::ArmFault("VirtualFree", 1, 8, FaultMode::FromThenOn);
    {
        CBlockManager blocks(1024);
        for (int i = 0; i < 100; ++i) {
            blocks.AllocBlock();
        }
        const CMemoryManagerScope manager(&VirtualMemoryManager);
        FreeToOwnManager(AllocateFromCurrentManager(10));
    }
    EXPECT_EQ(handler.texts.size(), 3U) << "two pages and a block";
    SetDebugFlag(DebugWalkHeapForLeaks, true);
    for (const char* function : {"HeapLock", "HeapDestroy"}) {
        CHeapManager manager;
        manager.CreateHeap(0, true);
        manager.Alloc(300);
        Platform::ArmFault(function, 1, 6, FaultMode::FromThenOn);
    }
    SetDebugFlag(DebugWalkHeapForLeaks, false);
    EXPECT_EQ(handler.texts.size(), 5U);
}
