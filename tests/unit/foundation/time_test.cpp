#include "foundation/inc/time.h"

#include "platform/inc/faults.h"
#include "tests/support/claims.h"
#include "tests/support/text.h"
#include <cstdlib>
#include <cstring>
#include <ctime>

using namespace Tsx;

namespace {

Platform::FileTime At(Platform::SystemTime moment) {
    Platform::FileTime time = -1;
    EXPECT_TRUE(Platform::SystemTimeToFileTime(moment, time));
    return time;
}

constexpr Platform::SystemTime FiveAndThree{2024, 2, 0, 28, 9, 5, 3, 999};

} // namespace

TEST(Time, CalendarAndCountsAreOneToOne) {
    for (const auto& [moment, time] :
         {std::pair(Platform::SystemTime{1601, 1, 1, 1, 0, 0, 0, 0}, Platform::FileTime{0}),
          {{1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000},
          {{2000, 2, 2, 29, 23, 59, 59, 999}, 125963423999990000},
          {{2000, 3, 3, 1, 0, 0, 0, 0}, 125963424000000000},
          {{30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000}}) {
        EXPECT_EQ(At(moment), time);
        Platform::SystemTime back{};
        ASSERT_TRUE(Platform::FileTimeToSystemTime(time, back));
        EXPECT_EQ(std::memcmp(&back, &moment, sizeof back), 0) << time;
    }
    Platform::FileTime untouched = 5;
    for (const Platform::SystemTime& lacking : {Platform::SystemTime{1900, 2, 0, 30, 0, 0, 0, 0},
                                                {2023, 13, 0, 1, 0, 0, 0, 0},
                                                {2023, 1, 0, 257, 0, 0, 0, 0},
                                                {2023, 1, 0, 1, 24, 0, 0, 0}}) {
        EXPECT_TRUE(!Platform::SystemTimeToFileTime(lacking, untouched) && untouched == 5) << lacking.year;
    }
}

TEST(Time, FormatsAndReadsLocalTimes) {
    EXPECT_EQ(FormatTime(u"%Y-%m-%d %H:%M:%S %j %w", At(FiveAndThree)), u"2024-02-28 09:05:03 001 3");
    EXPECT_EQ(FormatTime(u"", -1), u"") << "nothing is converted for an empty format";
    if (Applies(Wine::Otherwise)) { // it takes a buffer that is too small for enough
        std::u16string format;
        while (format.size() < 400) {
            format += u"%Y";
        }
        EXPECT_EQ(FormatTime(format.c_str(), At(FiveAndThree)).Length(), 800);
    }
    for (std::uint16_t month = 1; month <= 12; ++month) { // both sides of a change of the clocks
        const TTime time = TimeFromLocalSystemTime({2021, month, 0, 28, month, 30, 0, 0});
        EXPECT_EQ(FormatLocalTimeOfDay(time), CUnicodeString::Format(u"%02d:30:00 ", std::int32_t{month}));
    }
    Platform::SystemTime now{};
    Platform::GetLocalTime(now);
    const std::int64_t apart = Platform::GetSystemTimeAsFileTime() - TimeFromLocalSystemTime(now);
    EXPECT_LT(std::abs(apart), 600'000'000) << "the two clocks show one time";
#ifndef _WIN32
    // Windows reads its zone from the machine. Where that is at zero, two errors in one conversion make it right.
    setenv("TZ", "TEST-3:30", 1);
    tzset();
    EXPECT_EQ(At(FiveAndThree) - TimeFromLocalSystemTime(FiveAndThree), 126'000'000'000) << "three hours and a half";
    EXPECT_EQ(FormatLocalTimeOfDay(At(FiveAndThree)), u"12:35:03 ");
    unsetenv("TZ");
    tzset();
#endif
}

TEST(Time, FailuresAreInternalErrorsOfTheirLines) {
    const auto badDate = [] { TimeFromLocalSystemTime({2023, 2, 0, 30, 0, 0, 0, 0}); };
    ExpectInternalErrors("src\\time",
                         {{128, badDate}, {285, [] { FormatTime(nullptr, 0); }}, {293, [] { FormatTime(u"%H", -1); }}});
    SKIP_WITHOUT_FAULTS();
    const auto expect = [](const char* function, std::int32_t line, const std::function<void()>& call) {
        Platform::ArmFault(function, 1, 87, Platform::FaultMode::Once);
        ExpectInternalErrors("src\\time", {{line, call}});
        Platform::DisarmFaults();
    };
    expect("LocalFileTimeToFileTime", 113, [] { TimeFromLocalSystemTime(FiveAndThree); });
    expect("FileTimeToLocalFileTime", 265, [] { FormatLocalTimeOfDay(0); });
    expect("wcsftime", 317, [] { FormatTime(u"%H", 0); });
}
