// The fault hook, and with it what the basic types do when memory ends.
#include "platform/inc/faults.h"

#include "foundation/inc/alloc.h"
#include "foundation/inc/array.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/leaflock.h"
#include "foundation/inc/map.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/pointerarray.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <thread>

using namespace Tsx;
using Platform::FaultMode;

namespace {

Platform::Handle OpenNull() {
    return Platform::CreateFile(u"/dev/null", Platform::GenericRead, 0, nullptr, Platform::OpenExisting, 0, nullptr);
}

class Faults : public testing::Test {
protected:
    void SetUp() override {
        if (!Platform::FaultsAvailable()) {
            GTEST_SKIP() << "this build has no hook";
        }
    }
    void TearDown() override { Platform::DisarmFaults(); }
};

} // namespace

TEST_F(Faults, FailTheCallThatIsNamedAndNoOther) {
    const auto create = [] { return OpenNull() != Platform::InvalidHandle(); };
    struct Row {
        FaultMode mode;
        bool third;
    };
    for (const Row& row : {Row{FaultMode::Once, true}, Row{FaultMode::FromThenOn, false}}) {
        Platform::ArmFault("GetFileType", 1, 5, FaultMode::Once);
        Platform::Handle file = OpenNull();
        ASSERT_NE(file, Platform::InvalidHandle()) << "another function's turn";
        Platform::CloseHandle(file);
        Platform::ArmFault("CreateFile", 2, 4711, row.mode);
        file = OpenNull();
        Platform::CloseHandle(file);
        EXPECT_FALSE(create());
        EXPECT_EQ(Platform::GetLastError(), 4711U);
        file = OpenNull();
        EXPECT_EQ(file != Platform::InvalidHandle(), row.third);
        if (row.third) {
            Platform::CloseHandle(file);
        }
        EXPECT_EQ(Platform::FaultCallsSeen(), 3);
    }
}

namespace {

/// A run through the types that allocate, one change at a time, with what each change must leave behind.
class CRun {
public:
    /// Raises CMemoryException where an allocation fails.
    void GoOn() {
        for (int i = 0; i < 40; ++i) {
            text += u"and a bit longer each time ";
            length = text.Length();
            array.Append(text);
            ++appended;
            map.Set(CUnicodeString::FromInt(i), text);
            ++added;
            auto number = std::make_unique<int>(i);
            owned.Append(number.get());
            static_cast<void>(number.release());
            ++kept;
        }
    }

    /// The change that failed has left everything as it was; those before it are whole.
    void ExpectWhole() const {
        EXPECT_TRUE(text.Length() == length || text.Length() == length + 27) << "either before or after the change";
        EXPECT_EQ(array.Size(), appended);
        EXPECT_EQ(map.GetItemCount(), added);
        EXPECT_EQ(owned.Size(), kept);
        for (std::int32_t i = 0; i < added; ++i) {
            const CUnicodeString* value = map.Find(CUnicodeString::FromInt(i));
            ASSERT_NE(value, nullptr) << i;
            EXPECT_EQ(*value, array[i]);
        }
    }

private:
    CUnicodeString text;
    CArray<CUnicodeString> array;
    CMap<CUnicodeString, CUnicodeString> map;
    CPointerArray<int> owned;
    std::int32_t length = 0;
    std::int32_t appended = 0;
    std::int32_t added = 0;
    std::int32_t kept = 0;
};

} // namespace

TEST_F(Faults, EachAllocationOfARunFailsInTurn) {
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        for (std::int32_t nth = 1;; ++nth) {
            CRun run;
            bool failed = false;
            Platform::ArmFault("allocation", nth, Platform::ErrorNotEnoughMemory, mode);
            try {
                run.GoOn();
            } catch (CMemoryException* exception) {
                failed = true;
                delete exception;
            }
            const bool reached = Platform::FaultCallsSeen() >= nth;
            Platform::DisarmFaults();
            EXPECT_EQ(failed, reached);
            run.ExpectWhole();
            if (!failed) {
                EXPECT_GT(nth, 20) << "the sweep saw the allocations";
                break;
            }
        }
    }
}

// What a heap that is not empty tells when it goes, and that a plan for a walk which cannot be had is told too.
TEST_F(Faults, AHeapTellsOfItsLeaks) {
    setenv("TESSARIX_DEBUG_OUTPUT", "1", 1);
    SetDebugFlag(DebugWalkHeapForLeaks, true);
    SetDebugFlag(DebugShowHeapMemoryLeaks, true);
    CHeapManager manager;
    manager.CreateHeap(0, true);
    const CUnicodeString address = CUnicodeString::Format(u"%p", static_cast<const void*>(manager.Alloc(300)));
    testing::internal::CaptureStderr();
    manager.ReportLeaks();
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        shown.find("Undeleted memory block in heap manager. Address: " + std::string(address.ToNarrow(65001).Text())),
        std::string::npos)
        << shown;
    EXPECT_NE(shown.find("Internal error: memory leak.\n\nHeap 0x"), std::string::npos) << shown;
    EXPECT_NE(shown.find(") is not empty."), std::string::npos) << shown;
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
    for (const char* function : {"HeapLock", "HeapDestroy"}) {
        SetDebugFlag(DebugWalkHeapForLeaks, true);
        CHeapManager manager;
        manager.CreateHeap(0, true);
        manager.Alloc(300);
        Platform::ArmFault(function, 1, 6, FaultMode::FromThenOn);
    }
    SetDebugFlag(DebugWalkHeapForLeaks, false);
    EXPECT_EQ(handler.texts.size(), 5U);
}

TEST_F(Faults, WhoeverWaitsForALeafLockSleepsInTheEnd) {
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
