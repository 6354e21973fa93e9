// What the basic types do when memory ends or a release fails, one failure at a time.
#include "platform/inc/faults.h"

#include "foundation/inc/alloc.h"
#include "foundation/inc/array.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/leaflock.h"
#include "foundation/inc/map.h"
#include "foundation/inc/pointerarray.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <cstdlib>
#include <ctime>

using namespace Tsx;
using Platform::FaultMode;

namespace {

class Faults : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT_FAULTS(); }
    void TearDown() override { Platform::DisarmFaults(); }
};

/// A run through the types that allocate, one change at a time, with what each change must leave behind.
class CRun {
public:
    /// Raises CMemoryException where an allocation fails.
    void GoOn() {
        for (; done < 40; ++done, step = 0) {
            text += u"and a bit longer each time ";
            ++step;
            array.Append(text);
            ++step;
            map.Set(CUnicodeString::FromInt(done), text);
            ++step;
            auto number = std::make_unique<int>(done);
            owned.Append(number.get());
            static_cast<void>(number.release());
        }
    }

    /// The change that failed has left everything as it was; those before it are whole.
    void ExpectWhole() const {
        const std::int32_t length = text.Length() / 27;
        EXPECT_TRUE(length == done + (step > 0) || length == done + 1) << "either before or after the change";
        EXPECT_EQ(array.Size(), done + (step > 1));
        EXPECT_EQ(map.GetItemCount(), done + (step > 2));
        EXPECT_EQ(owned.Size(), done);
        for (std::int32_t i = 0; i < map.GetItemCount(); ++i) {
            const CUnicodeString* value = map.Find(CUnicodeString::FromInt(i));
            EXPECT_TRUE(value && *value == array[i] && value->Length() == 27 * (i + 1)) << i;
        }
    }

private:
    CUnicodeString text;
    CArray<CUnicodeString> array;
    CMap<CUnicodeString, CUnicodeString> map;
    CPointerArray<int> owned;
    std::int32_t done = 0;
    int step = 0;
};

} // namespace

TEST_F(Faults, EachAllocationOfARunFailsInTurn) {
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        std::unique_ptr<CRun> run;
        std::int32_t runs = 0;
        std::int32_t failed = 0;
        FailEachCall(
            "allocation", Platform::ErrorNotEnoughMemory, mode,
            [&](std::int32_t) {
                run = std::make_unique<CRun>();
                ++runs;
            },
            [&] { failed += Raised<CMemoryException>([&] { run->GoOn(); }) ? 1 : 0; },
            [&](std::int32_t) { run->ExpectWhole(); });
        EXPECT_TRUE(failed > 20 && runs == failed + 1) << failed << " of " << runs;
    }
}

// What a heap that is not empty tells when it goes, and that a plan for a walk which cannot be had is told too.
TEST_F(Faults, AHeapTellsOfItsLeaks) {
    setenv("TESSARIX_DEBUG_OUTPUT", "1", 1);
    SetDebugFlag(DebugWalkHeapForLeaks, true);
    SetDebugFlag(DebugShowHeapMemoryLeaks, true);
    CHeapManager manager;
    manager.CreateHeap(0, true);
    const std::string address =
        CUnicodeString::Format(u"%p", static_cast<const void*>(manager.Alloc(300))).ToNarrow(65001).Text();
    testing::internal::CaptureStderr();
    manager.ReportLeaks();
    const std::string shown = testing::internal::GetCapturedStderr();
    for (const std::string& part :
         {"Undeleted memory block in heap manager. Address: " + address,
          std::string("Internal error: memory leak.\n\nHeap 0x"), std::string(") is not empty.")}) {
        EXPECT_NE(shown.find(part), std::string::npos) << shown;
    }
    Platform::ArmFault("HeapLock", 1, 6, FaultMode::Once);
    EXPECT_TRUE(Raised<CInternalError>([&] { manager.ReportLeaks(); }));
    SetDebugFlag(DebugShowHeapMemoryLeaks, false);
    Platform::ArmFault("allocation", 1, Platform::ErrorNotEnoughMemory, FaultMode::FromThenOn);
    EXPECT_FALSE(Raised<CMemoryException>([&] { manager.ReportLeaks(); })) << "the walk takes no memory";
    Platform::DisarmFaults();
    SetDebugFlag(DebugWalkHeapForLeaks, false);
    unsetenv("TESSARIX_DEBUG_OUTPUT");
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

TEST(LeafLock, WhoeverWaitsForItSleepsInTheEnd) {
    CLeafLock lock;
    lock.Enter();
    timespec used{};
    std::thread waiter([&] {
        const CLeafLockGuard guard(lock);
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    lock.Leave();
    waiter.join();
    EXPECT_TRUE(used.tv_sec == 0 && used.tv_nsec < 60'000'000) << used.tv_nsec;
}
