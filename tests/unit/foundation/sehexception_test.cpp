#include "foundation/inc/sehexception.h"

#include "foundation/inc/threadobject.h"
#include "platform/inc/debug.h"
#include "platform/inc/faults.h"
#include "tests/support/text.h"
#include "tests/unit/platform/scratchfolder.h"
#include <atomic>
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

Platform::ExceptionRecord Record(std::uint32_t code, const std::vector<std::uintptr_t>& parameters = {}) {
    Platform::ExceptionRecord record{};
    record.ExceptionCode = code;
    record.ExceptionAddress = reinterpret_cast<void*>(std::uintptr_t{0x7FFABCDE}); // NOLINT(performance-no-int-to-ptr)
    record.NumberParameters = static_cast<std::uint32_t>(parameters.size());
    std::copy(parameters.begin(), parameters.end(), record.ExceptionInformation);
    return record;
}

// Faults as machine code, which no sanitizer looks at and no optimiser takes for impossible.
[[gnu::noinline]] void Read(const void* place) {
    __asm__ volatile("movb (%0), %%al" ::"r"(place) : "rax", "memory");
}
[[gnu::noinline]] void Write(const void* place) {
    __asm__ volatile("movb $1, (%0)" ::"r"(place) : "memory");
}
void Divide() {
    __asm__ volatile("xorl %%edx, %%edx\n\tmovl $1, %%eax\n\txorl %%ecx, %%ecx\n\tidivl %%ecx" ::: "rax", "rcx", "rdx");
}
void Illegal() {
    __asm__ volatile("ud2");
}
volatile bool endless = true;
[[gnu::noinline]] int Descend(int depth) {
    volatile char room[200] = {};
    room[0] = static_cast<char>(endless ? Descend(depth + 1) : depth);
    return room[0] + depth;
}
void Overflow() {
    Descend(0);
}
void ReadNothing() {
    Read(nullptr);
}
void ReadNoAddress() {
    Read(reinterpret_cast<const void*>(std::uintptr_t{1} << 62)); // NOLINT(performance-no-int-to-ptr)
}

/// Leaves a mark in the floating-point status.
void DivideByZero() {
    volatile double number = 1;
    volatile double zero = 0;
    number = number / zero;
}

constexpr char Constant[] = "in a page that is read only";

/// The text of the fault that an action ends in.
template <class TAction>
CUnicodeString FaultText(TAction action) {
    const auto exception = Raised<CSehException>([&] { GuardForeignCode(action); });
    return exception ? exception->GetMessageText() : u"(none)";
}

} // namespace

TEST(SehException, PutsRecordsIntoWords) {
    struct Row {
        Platform::ExceptionRecord record;
        const char16_t* text;
    };
    const Row rows[] = {
        {Record(0xC0000005, {0, 0x1234}),
         u"Access violation. The instruction at 0x000000007FFABCDE referenced memory at "
         u"0x0000000000001234.The memory could not be read."},
        {Record(0xC0000005, {8, 0, 3}), u"Access violation. The instruction at 0x000000007FFABCDE referenced memory at "
                                        u"0x0000000000000000.The memory could not be written."},
        {Record(0xC0000005, {1}), u"Access violation. The instruction referenced memory that could not be accessed.\n"
                                  u"Exception address: 0x000000007FFABCDE\n\nException has following parameters:\n"
                                  u"\t0x00000001"},
        {Record(0xC0000006, {1, 0xABCDE12345678, 0xC0000011}),
         u"In-page error. The instruction referenced memory but required data were not placed into memory because of "
         u"an "
         u"I/O error.\nException address: 0x000000007FFABCDE\n\nException has following parameters:\n\t0x00000001\n"
         u"\t0x12345678\n\t0xC0000011"},
        {Record(0x80000003), u"Breakpoint. A hard-coded breakpoint has been reached.\nException address: "
                             u"0x000000007FFABCDE"},
        {Record(0xE06D7363), u"Microsoft C++ exception.\nException address: 0x000000007FFABCDE"},
        {Record(0xC00000FD), u"Stack overflow. A new guard page for the stack cannot be created.\nException address: "
                             u"0x000000007FFABCDE"},
        {Record(0xC000ABCD), u"Unknown exception 0xC000ABCD.\nException address: 0x000000007FFABCDE"},
        {Record(0x1A), u"Unknown exception 0x0000001A.\nException address: 0x000000007FFABCDE"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(GetSehExceptionText(row.record), row.text) << std::hex << row.record.ExceptionCode;
    }
}

TEST(SehException, TheFilterTakesErrorsAlone) {
    struct Row {
        std::uint32_t code;
        std::int32_t answer;
    };
    constexpr Row rows[] = {{0xC0000005, 1}, {0xC00000FD, 1}, {0xE0000001, 1}, {0xFFFFFFFF, 1}, {0xC0000000, 1},
                            {0x80000003, 0}, {0xE06D7363, 0}, {0x80000001, 0}, {0x80000002, 0}, {0xBFFFFFFF, 0},
                            {0x40000015, 0}, {0x20474343, 0}, {0, 0}};
    for (const Row& row : rows) {
        Platform::ExceptionRecord record = Record(row.code, {1, 2});
        Platform::ExceptionRecord copy{};
        DivideByZero();
        EXPECT_EQ(FilterForeignException({&record, nullptr}, copy), row.answer) << std::hex << row.code;
        EXPECT_EQ(Platform::clearfp() == 0, row.answer == 1) << std::hex << row.code;
        EXPECT_EQ(GetSehExceptionText(copy), GetSehExceptionText(record)) << "copied in any case";
    }
}

TEST(SehException, FaultsArriveWithTheirTexts) {
    struct Row {
        const char* name;
        void (*fault)();
        std::u16string_view start;
        std::u16string end;
        Wine wine = Wine::AsWindows; // it leaves an overflowed stack too little room to look for a handler
    };
    const CUnicodeString constant = CUnicodeString::Format(u"%p", static_cast<const void*>(Constant));
    const Row rows[] = {
        {"read", ReadNothing, u"Access violation. ", u"memory at 0x0000000000000000.The memory could not be read."},
        {"write", [] { Write(Constant); }, u"Access violation. ",
         u"memory at 0x" + std::u16string(constant.View()) + u".The memory could not be written."},
        {"no address", ReadNoAddress, u"Access violation. ",
         u"memory at 0xFFFFFFFFFFFFFFFF.The memory could not be read."},
        {"divide", Divide, u"Integer division by zero.\nException address: 0x", u""},
        {"illegal", Illegal, u"Illegal instruction. ", u""},
        {"overflow", Overflow, u"Stack overflow. ", u"", Wine::Ends},
        {"overflow again", Overflow, u"Stack overflow. ", u"", Wine::Ends},
    };
    for (const Row& row : rows) {
        Claim(row.wine, row.name, [&row] {
            DivideByZero();
            const CUnicodeString text = FaultText(row.fault);
            EXPECT_TRUE(text.View().starts_with(row.start)) << row.name << ": " << Readable(text.View());
            EXPECT_TRUE(text.View().ends_with(row.end)) << row.name << ": " << Readable(text.View());
            EXPECT_EQ(Platform::clearfp(), 0U) << row.name;
        });
    }
}

TEST(SehException, WithoutMemoryItIsTheMemoryFailure) {
    if (!Platform::FaultsAvailable()) {
        GTEST_SKIP();
    }
    Platform::ArmFault("allocation", 1, 8, Platform::FaultMode::FromThenOn);
    const auto failure = Raised<CMemoryException>([] { GenerateSehException(Record(0xC0000005)); });
    Platform::DisarmFaults();
    EXPECT_TRUE(failure);
}

TEST(SehException, ExceptionsPassThroughWithTheirDestructors) {
    bool destroyed = false;
    struct CMark {
        bool& mark;
        ~CMark() { mark = true; }
    };
    EXPECT_TRUE(Raised<CUserException>([&] {
        GuardForeignCode([&] {
            const CMark mark{destroyed};
            GenerateUserException();
        });
    }));
    EXPECT_TRUE(destroyed);
    EXPECT_TRUE(FaultText(ReadNothing).View().starts_with(u"Access")) << "the guard works again";
    int calls = 0;
    GuardForeignCode([&] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(SehException, AnInnerGuardTakesItsOwnFaults) {
    CUnicodeString inner;
    const CUnicodeString outer = FaultText([&] {
        inner = FaultText(Divide);
        const auto decline = [](const Platform::ExceptionPointers&, void*) { return 0; };
        Platform::GuardedCall([](void*) { Illegal(); }, decline, nullptr);
    });
    EXPECT_TRUE(inner.View().starts_with(u"Integer division")) << Readable(inner.View());
    EXPECT_TRUE(outer.View().starts_with(u"Illegal instruction")) << Readable(outer.View());
}

TEST(SehException, EveryThreadHasItsOwnGuard) {
    constexpr int rounds = 200;
    std::atomic<int> taken{0};
    const auto work = [&](void (*fault)(), std::u16string_view start) {
        for (int round = 0; round < rounds; ++round) {
            taken += FaultText(fault).View().starts_with(start) ? 1 : 0;
        }
    };
    std::thread other(work, Divide, u"Integer division");
    std::thread third(work, Illegal, u"Illegal instruction");
    work(ReadNothing, u"Access violation");
    other.join();
    third.join();
    EXPECT_EQ(taken, 3 * rounds);
}

TEST(SehExceptionDeathTest, ABreakpointIsNotTranslated) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(GuardForeignCode(Platform::DebugBreak), "");
    EXPECT_DEATH(Illegal(), "") << "no guard is left behind";
}
