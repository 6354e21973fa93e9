// The fault hook, and with it what the basic types do when memory ends.
#include "platform/inc/faults.h"

#include "foundation/inc/alloc.h"
#include "foundation/inc/array.h"
#include "foundation/inc/debugflags.h"
#include "foundation/inc/map.h"
#include "foundation/inc/pointerarray.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/text.h"
#include <cstdlib>
#include <memory>
#include <string>

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
    Platform::DisarmFaults();
    SetDebugFlag(DebugWalkHeapForLeaks, false);
    SetDebugFlag(DebugShowHeapMemoryLeaks, false);
    unsetenv("TESSARIX_DEBUG_OUTPUT");
    manager.DestroyHeap();
    EXPECT_FALSE(manager.HasHeap()) << "allowed to take the block along";
}
