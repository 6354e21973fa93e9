// The fault hook, and with it what the basic types do when memory ends.
#include "platform/inc/faults.h"

#include "foundation/inc/array.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/text.h"

using namespace Tsx;
using Platform::FaultMode;

namespace {

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
    const auto create = [] {
        return Platform::CreateFile(u"/dev/null", Platform::GenericRead, 0, Platform::OpenExisting, 0) !=
               Platform::InvalidHandle();
    };
    struct Row {
        FaultMode mode;
        bool third;
    };
    for (const Row& row : {Row{FaultMode::Once, true}, Row{FaultMode::FromThenOn, false}}) {
        Platform::ArmFault("GetFileType", 1, 5, FaultMode::Once);
        Platform::Handle file = Platform::CreateFile(u"/dev/null", Platform::GenericRead, 0, Platform::OpenExisting, 0);
        ASSERT_NE(file, Platform::InvalidHandle()) << "another function's turn";
        Platform::CloseHandle(file);
        Platform::ArmFault("CreateFile", 2, 4711, row.mode);
        file = Platform::CreateFile(u"/dev/null", Platform::GenericRead, 0, Platform::OpenExisting, 0);
        Platform::CloseHandle(file);
        EXPECT_FALSE(create());
        EXPECT_EQ(Platform::GetLastError(), 4711U);
        file = Platform::CreateFile(u"/dev/null", Platform::GenericRead, 0, Platform::OpenExisting, 0);
        EXPECT_EQ(file != Platform::InvalidHandle(), row.third);
        if (row.third) {
            Platform::CloseHandle(file);
        }
        EXPECT_EQ(Platform::FaultCallsSeen(), 3);
    }
}

// Each allocation of a small run fails in turn: the failure arrives and what was being changed is as it was.
TEST_F(Faults, ExhaustedMemoryLeavesStringsAndArraysAsTheyWere) {
    for (std::int32_t nth = 1;; ++nth) {
        CArray<CUnicodeString> array;
        CUnicodeString text(u"0123456789");
        array.Append(text);
        const CUnicodeString before = text;
        Platform::ArmFault("allocation", nth, Platform::ErrorNotEnoughMemory, FaultMode::FromThenOn);
        bool failed = false;
        std::int32_t size = array.Size();
        try {
            text += u" and more than a block of one hundred and twenty-eight bytes would ever have room for";
            for (int i = 0; i < 20; ++i) {
                size = array.Size();
                array.Append(text);
            }
        } catch (CMemoryException* exception) {
            failed = true;
            Platform::DisarmFaults();
            delete exception;
        } catch (...) {
            Platform::DisarmFaults();
            throw;
        }
        const bool reached = Platform::FaultCallsSeen() >= nth;
        Platform::DisarmFaults();
        EXPECT_EQ(failed, reached);
        if (!failed) {
            EXPECT_GT(nth, 3) << "the sweep saw the allocations";
            break;
        }
        EXPECT_EQ(array.Size(), size);
        EXPECT_TRUE(text == before || array.Size() > 1 || text.Length() > 80);
    }
}
