#include "foundation/inc/threadobject.h"

#include "foundation/inc/messagehandlers.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/text.h"
#include <latch>
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

template <class T>
class CProbe : public CThreadObject<T> {
public:
    std::int32_t GetIndex() const { return this->Index; }
    std::int32_t RecordCount() {
        const CCriticalSectionLock guard(this->Lock);
        return this->Records.Size();
    }
};

} // namespace

TEST(ThreadObject, EachThreadHasItsOwnZeroedValue) {
    static CProbe<std::uint64_t> family;
    *family.Get() = 7;
    std::thread([] {
        EXPECT_EQ(family.Find(), nullptr) << "not used yet";
        EXPECT_EQ(*family.Get(), 0U);
        *family.Get() = 8;
        EXPECT_EQ(*family.Find(), 8U);
    }).join();
    EXPECT_EQ(*family.Get(), 7U);
}

TEST(ThreadObject, RacingThreadsGetOneIndex) {
    for (int round = 0; round < 50; ++round) {
        auto family = std::make_unique<CProbe<int>>();
        CProbe<int> other;
        std::latch start(4);
        std::vector<std::thread> threads;
        std::atomic<int> differing{0};
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                *family->Get() = t;
                differing += *family->Get() != t;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(differing, 0);
        other.Get();
        EXPECT_EQ(other.GetIndex(), family->GetIndex() + 1) << "one index was taken";
    }
}

TEST(ThreadObject, ANewThreadClearsTheRecordsOfFinishedOnesOfItsFamily) {
    static CProbe<int> family;
    static CProbe<int> untouched;
    for (int i = 0; i < 3; ++i) {
        std::thread([] {
            untouched.Get();
            family.Get();
        }).join();
        EXPECT_EQ(family.RecordCount(), 1) << "the ones before are gone";
    }
    EXPECT_EQ(untouched.RecordCount(), 1);
    std::thread([] { family.Get(); }).join();
    EXPECT_EQ(untouched.RecordCount(), 1) << "another family's first use";
    family.Get();
    EXPECT_EQ(family.RecordCount(), 1) << "only this thread is alive";
}

TEST(ThreadObject, AThreadLivesUntilItsLastDestructor) {
    SKIP_WITHOUT_FAULTS(); // on Windows a thread that ends holds the loader's lock, and must not wait for another
    static CProbe<int> family;
    struct CLate {
        std::latch* ending = nullptr;
        std::latch* cleared = nullptr;
        int* value = nullptr;
        ~CLate() {
            ending->count_down();
            cleared->wait();
            EXPECT_EQ(family.Find(), value);
            *value = 2;
        }
    };
    std::latch ending(1);
    std::latch cleared(1);
    std::thread other([&] {
        ending.wait();
        family.Get();
        EXPECT_EQ(family.RecordCount(), 2) << "that of the thread that is ending is still there";
        cleared.count_down();
    });
    std::thread([&] {
        thread_local CLate late; // made before the record, so that it goes after all that the record has made
        late.ending = &ending;
        late.cleared = &cleared;
        late.value = family.Get();
    }).join();
    other.join();
}

TEST(ThreadObject, AThreadThatMustNotThrowHasARecordWithoutItsHandle) {
    SKIP_WITHOUT_FAULTS();
    static CProbe<int> family;
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([] {
        ThreadErrorMode.Get()->NoExceptions = true;
        Platform::ArmFault("DuplicateHandle", 1, 6, Platform::FaultMode::Once);
        EXPECT_NE(family.Get(), nullptr);
        Platform::DisarmFaults();
    }).join();
    EXPECT_EQ(handler.texts.size(), 1U);
    EXPECT_FALSE(Raised<CInternalError>([] { family.Get(); })) << "the next thread's first use";
    EXPECT_EQ(family.RecordCount(), 2);
}

TEST(ThreadObject, ALaterFamilyGrowsTheArrayAndKeepsTheRest) {
    static CProbe<int> early;
    static CProbe<int> between;
    static CProbe<int> late;
    *early.Get() = 5;
    std::thread([] {
        between.Get();
        *late.Get() = 3;
    }).join();
    *late.Get() = 9;
    EXPECT_EQ(*early.Get(), 5);
    EXPECT_EQ(between.Find(), nullptr) << "a null in between";
}

TEST(ReentryScope, LeavesTheStateAsItFoundIt) {
    CErrorGuardState& state = *ErrorGuardState.Get();
    state = {};
    {
        const CReentryScope outer(0);
        EXPECT_TRUE(state.Raising && !state.InInternalError);
        try {
            const CReentryScope inner(1);
            EXPECT_TRUE(state.Raising && state.InInternalError);
            GenerateMemoryException();
        } catch (CException* exception) {
            delete exception;
        }
        EXPECT_TRUE(state.Raising && !state.InInternalError);
    }
    EXPECT_FALSE(state.Raising);
}
