#include "foundation/inc/threadobject.h"

#include "tests/support/recordinghandler.h"

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
    static CProbe<std::uint64_t> early;
    static CProbe<int> between;
    static CProbe<int> late;
    *early.Get() = 7;
    std::thread([] {
        EXPECT_EQ(early.Find(), nullptr) << "not used yet";
        EXPECT_EQ(*early.Get(), 0U);
        *early.Get() = 8;
        between.Get();
        *late.Get() = 3;
    }).join();
    *late.Get() = 9;
    EXPECT_EQ(*early.Find(), 7U) << "also in an array that has grown";
    EXPECT_EQ(between.Find(), nullptr) << "a null in between";
}

TEST(ThreadObject, RacingThreadsGetOneIndex) {
    for (int round = 0; round < 50; ++round) {
        CProbe<int> family;
        CProbe<int> other;
        OnThreads(4, [&](int thread) {
            *family.Get() = thread;
            EXPECT_EQ(*family.Get(), thread);
        });
        other.Get();
        EXPECT_EQ(other.GetIndex(), family.GetIndex() + 1) << "one index was taken";
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
    std::thread([] { family.Get(); }).join();
    EXPECT_EQ(untouched.RecordCount(), 1) << "another family's first use";
    family.Get();
    EXPECT_EQ(family.RecordCount(), 1) << "only this thread is alive";
}
