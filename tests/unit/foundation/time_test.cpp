#include "foundation/inc/time.h"

#include "platform/inc/faults.h"
#include "tests/support/text.h"
#include "tests/unit/platform/scratchfolder.h"

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
    struct Row {
        Platform::SystemTime moment;
        Platform::FileTime time;
    };
    for (const Row& row : {Row{{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
                           {{1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000},
                           {{2000, 2, 2, 29, 23, 59, 59, 999}, 125963423999990000},
                           {{2000, 3, 3, 1, 0, 0, 0, 0}, 125963424000000000},
                           {{30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000}}) {
        EXPECT_EQ(At(row.moment), row.time);
        Platform::SystemTime back{};
        ASSERT_TRUE(Platform::FileTimeToSystemTime(row.time, back));
        EXPECT_EQ(std::memcmp(&back, &row.moment, sizeof back), 0) << row.time;
    }
    Platform::FileTime untouched = 5;
    for (const Platform::SystemTime& lacking : {Platform::SystemTime{1900, 2, 0, 30, 0, 0, 0, 0},
                                                {2023, 4, 0, 31, 0, 0, 0, 0},
                                                {2023, 13, 0, 1, 0, 0, 0, 0},
                                                {2023, 257, 0, 1, 0, 0, 0, 0},
                                                {2023, 1, 0, 257, 0, 0, 0, 0},
                                                {2023, 1, 0, 0, 0, 0, 0, 0},
                                                {2023, 1, 0, 1, 24, 0, 0, 0},
                                                {2023, 1, 0, 1, 0, 60, 0, 0},
                                                {2023, 1, 0, 1, 0, 0, 60, 0},
                                                {2023, 1, 0, 1, 0, 0, 0, 1000},
                                                {1600, 1, 0, 1, 0, 0, 0, 0}}) {
        EXPECT_FALSE(Platform::SystemTimeToFileTime(lacking, untouched)) << lacking.year << ' ' << lacking.day;
    }
    EXPECT_EQ(untouched, 5);
}

TEST(Time, Formats) {
    CUnicodeString longFormat;
    std::u16string longText;
    for (int i = 0; i < 200; ++i) {
        longFormat += u"%Y";
        longText += u"2024";
    }
    struct Row {
        CUnicodeString format, text;
        Wine wine = Wine::AsWindows;
    };
    for (const Row& row : {Row{u"%H:%M:%S ", u"09:05:03 "},
                           {u"%Y-%m-%d", u"2024-02-28"},
                           {u"%j", u"001"},
                           {u"%w", u"3"},
                           {u"", u""},
                           // It takes a buffer that is too small for enough, and leaves out the terminator.
                           {longFormat, longText.c_str(), Wine::Otherwise}}) {
        if (Applies(row.wine)) {
            EXPECT_EQ(FormatTime(row.format.Text(), At(FiveAndThree)), row.text) << Readable(row.format.View());
        }
    }
    EXPECT_EQ(FormatTime(u"", -1), u"") << "nothing is converted for an empty format";
}

TEST(Time, LocalTimesComeBackAsTheyWent) {
    EXPECT_EQ(FormatLocalTimeOfDay(TimeFromLocalSystemTime(FiveAndThree)), u"09:05:03 ");
    for (std::uint16_t month = 1; month <= 12; ++month) {
        for (std::uint16_t hour = 0; hour < 24; ++hour) { // no hour is missing, whatever the zone's rules
            const Platform::SystemTime moment{2021, month, 0, 28, hour, 30, 0, 0};
            EXPECT_EQ(FormatLocalTimeOfDay(TimeFromLocalSystemTime(moment)),
                      CUnicodeString::Format(u"%02d:30:00 ", std::int32_t{hour}));
        }
    }
    Platform::SystemTime now{};
    Platform::GetLocalTime(now);
    const std::int64_t apart = Platform::GetSystemTimeAsFileTime() - TimeFromLocalSystemTime(now);
    EXPECT_LT(std::abs(apart), 600'000'000) << "the two clocks show one time";
}

TEST(Time, FailuresAreInternalErrorsOfTheirLines) {
    struct Row {
        const char* fault; // of the platform; null where the call itself is wrong
        std::int32_t line;
        void (*call)();
    };
    const Row rows[] = {
        {nullptr, 128,
         [] {
             TimeFromLocalSystemTime({2023, 2, 0, 30, 0, 0, 0, 0});
         }},
        {nullptr, 285, [] { FormatTime(nullptr, 0); }},
        {nullptr, 293, [] { FormatTime(u"%H", -1); }},
        {"LocalFileTimeToFileTime", 113, [] { TimeFromLocalSystemTime(FiveAndThree); }},
        {"FileTimeToLocalFileTime", 265, [] { FormatLocalTimeOfDay(0); }},
        {"wcsftime", 317, [] { FormatTime(u"%H", 0); }},
    };
    for (const Row& row : rows) {
        if (row.fault && !Platform::FaultsAvailable()) {
            continue;
        }
        if (row.fault) {
            Platform::ArmFault(row.fault, 1, 87, Platform::FaultMode::Once);
        }
        ExpectInternalErrors("src\\time", {{row.line, row.call}});
        Platform::DisarmFaults();
    }
}
