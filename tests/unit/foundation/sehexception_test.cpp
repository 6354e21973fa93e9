#include "foundation/inc/sehexception.h"

#include "foundation/inc/scopeexit.h"
#include "platform/inc/debug.h"
#include "tests/support/claims.h"
#include "tests/support/recordinghandler.h"
#include <tuple>
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
void ReadNothing() {
    Read(nullptr);
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
    constexpr const char16_t* address = u"\nException address: 0x000000007FFABCDE";
    constexpr const char16_t* parameters = u"\n\nException has following parameters:\n\t0x00000001";
    const CUnicodeString violation =
        u"Access violation. The instruction at 0x000000007FFABCDE referenced memory at 0x0000000000001234.";
    const std::pair<Platform::ExceptionRecord, CUnicodeString> rows[] = {
        {Record(0xC0000005, {0, 0x1234}), violation + u"The memory could not be read."},
        {Record(0xC0000005, {8, 0x1234, 3}), violation + u"The memory could not be written."},
        {Record(0xC0000005, {1}),
         CUnicodeString(u"Access violation. The instruction referenced memory that could not be accessed.") + address +
             parameters},
        {Record(0xC0000006, {1, 0xABCDE12345678, 0xC0000011}),
         CUnicodeString(u"In-page error. The instruction referenced memory but required "
                        u"data were not placed into memory because of an I/O error.") +
             address + parameters + u"\n\t0x12345678\n\t0xC0000011"},
        {Record(0x80000003), CUnicodeString(u"Breakpoint. A hard-coded breakpoint has been reached.") + address},
        {Record(0xE06D7363), CUnicodeString(u"Microsoft C++ exception.") + address},
        {Record(0xC00000FD),
         CUnicodeString(u"Stack overflow. A new guard page for the stack cannot be created.") + address},
        {Record(0xC000ABCD), CUnicodeString(u"Unknown exception 0xC000ABCD.") + address},
        {Record(0x1A), CUnicodeString(u"Unknown exception 0x0000001A.") + address}};
    for (const auto& [record, text] : rows) {
        EXPECT_EQ(GetSehExceptionText(record), text) << std::hex << record.ExceptionCode;
    }
}

TEST(SehException, TheFilterTakesErrorsAlone) {
    for (const auto& [code, answer] :
         {std::pair(0xC0000000U, 1), {0xFFFFFFFFU, 1}, {0xBFFFFFFFU, 0}, {0x80000003U, 0}, {0xE06D7363U, 0}, {0U, 0}}) {
        Platform::ExceptionRecord record = Record(code, {1, 2});
        Platform::ExceptionRecord copy{};
        DivideByZero();
        EXPECT_EQ(FilterForeignException({&record, nullptr}, copy), answer) << std::hex << code;
        EXPECT_EQ(Platform::clearfp() == 0, answer == 1) << std::hex << code;
        EXPECT_EQ(GetSehExceptionText(copy), GetSehExceptionText(record)) << "copied in any case";
    }
}

TEST(SehException, FaultsArriveWithTheirTexts) {
    const CUnicodeString constant = CUnicodeString::Format(u"%p", static_cast<const void*>(Constant));
    constexpr Wine ends = Wine::Ends; // it leaves an overflowed stack too little room to look for a handler
    for (const auto& [name, fault, text, wine] :
         {std::tuple(
              "read", +[] { Read(nullptr); },
              CUnicodeString(u"memory at 0x0000000000000000.The memory could not be read."), Wine::AsWindows),
          {"write", +[] { Write(Constant); }, u"memory at 0x" + constant + u".The memory could not be written.",
           Wine::AsWindows},
          {"no address", +[] { Read(reinterpret_cast<const void*>(std::uintptr_t{1} << 62)); }, // NOLINT
           u"memory at 0xFFFFFFFFFFFFFFFF.The memory could not be read.", Wine::AsWindows},
          {"divide", Divide, u"Integer division by zero.\nException address: 0x", Wine::AsWindows},
          {"overflow", +[] { Descend(0); }, u"Stack overflow. ", ends},
          {"overflow again", +[] { Descend(0); }, u"Stack overflow. ", ends}}) {
        Claim(wine, name, [&, called = fault, wanted = text] {
            DivideByZero();
            const CUnicodeString told = FaultText(called);
            EXPECT_NE(told.View().find(wanted.View()), std::u16string_view::npos) << Readable(told.View());
            EXPECT_EQ(Platform::clearfp(), 0U);
        });
    }
}

TEST(SehException, ExceptionsPassThroughWithTheirDestructors) {
    bool destroyed = false;
    EXPECT_TRUE(Raised<CUserException>([&] {
        GuardForeignCode([&] {
            const CScopeExit mark([&] { destroyed = true; });
            GenerateUserException();
        });
    }));
    EXPECT_TRUE(destroyed);
}

TEST(SehException, EveryThreadHasItsOwnGuardsWithinGuards) {
    OnThreads(3, [](int thread) {
        constexpr void (*faults[])() = {Divide, Illegal, ReadNothing};
        constexpr std::u16string_view starts[] = {u"Integer division", u"Illegal instruction", u"Access violation"};
        for (int round = 0; round < 200; ++round) {
            CUnicodeString inner;
            const CUnicodeString outer = FaultText([&] {
                inner = FaultText(faults[thread]);
                const auto decline = [](const Platform::ExceptionPointers&, void*) { return 0; };
                Platform::GuardedCall([](void*) { Illegal(); }, decline, nullptr);
            });
            EXPECT_TRUE(inner.View().starts_with(starts[thread])) << thread;
            EXPECT_TRUE(outer.View().starts_with(starts[1])) << thread;
        }
    });
}

TEST(SehExceptionDeathTest, ABreakpointIsNotTranslated) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(GuardForeignCode(Platform::DebugBreak), "");
    EXPECT_DEATH(Illegal(), "") << "no guard is left behind";
}
