#include "foundation/inc/sehexception.h"

#include "foundation/inc/scopeexit.h"
#include "platform/inc/debug.h"
#include "tests/support/claims.h"
#include "tests/support/recordinghandler.h"
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
    const CUnicodeString violation =
        u"Access violation. The instruction at 0x000000007FFABCDE referenced memory at 0x0000000000001234.";
    const CUnicodeString address = u"\nException address: 0x000000007FFABCDE";
    const CUnicodeString parameters = address + u"\n\nException has following parameters:\n\t0x00000001";
    const std::pair<Platform::ExceptionRecord, CUnicodeString> rows[] = {
        {Record(0xC0000005, {0, 0x1234}), violation + u"The memory could not be read."},
        {Record(0xC0000005, {8, 0x1234, 3}), violation + u"The memory could not be written."},
        {Record(0xC0000005, {1}),
         u"Access violation. The instruction referenced memory that could not be accessed." + parameters},
        {Record(0xC0000095, {1, 0xABCDE12345678}), u"Integer overflow." + parameters + u"\n\t0x12345678"},
        {Record(0xE06D7363), u"Microsoft C++ exception." + address},
        {Record(0x1A), u"Unknown exception 0x0000001A." + address}};
    for (const auto& [record, text] : rows) {
        EXPECT_EQ(GetSehExceptionText(record), text) << std::hex << record.ExceptionCode;
    }
}

TEST(SehException, TheFilterTakesErrorsAlone) {
    for (const auto& [code, answer] :
         {std::pair(0xC0000000U, 1), {0xFFFFFFFFU, 1}, {0xBFFFFFFFU, 0}, {0x80000003U, 0}, {0xE06D7363U, 0}, {0U, 0}}) {
        Platform::ExceptionRecord record = Record(code);
        Platform::ExceptionRecord copy{};
        DivideByZero();
        EXPECT_EQ(FilterForeignException({&record, nullptr}, copy), answer) << std::hex << code;
        EXPECT_EQ(Platform::clearfp() == 0, answer == 1) << std::hex << code;
    }
}

TEST(SehException, FaultsArriveWithTheirTexts) {
    const CUnicodeString constant = CUnicodeString::Format(u"%p", static_cast<const void*>(Constant));
    const std::pair<void (*)(), CUnicodeString> rows[] = {
        {ReadNothing, u"memory at 0x0000000000000000.The memory could not be read."},
        {[] { Write(Constant); }, u"memory at 0x" + constant + u".The memory could not be written."},
        {[] { Read(reinterpret_cast<const void*>(std::uintptr_t{1} << 62)); }, // NOLINT: none that can be
         u"memory at 0xFFFFFFFFFFFFFFFF.The memory could not be read."},
        {Divide, u"Integer division by zero.\nException address: 0x"},
        {Overflow, u"Stack overflow. "},
        {Overflow, u"Stack overflow. "}}; // the stack grows as before
    for (const auto& row : rows) {
        // Wine leaves an overflowed stack too little room to look for a handler.
        Claim(row.first == Overflow ? Wine::Ends : Wine::AsWindows, Readable(row.second.View()), [&row] {
            const CUnicodeString told = FaultText(row.first);
            EXPECT_NE(told.View().find(row.second.View()), std::u16string_view::npos) << Readable(told.View());
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
            const CUnicodeString outer = FaultText([&] {
                EXPECT_TRUE(FaultText(faults[thread]).View().starts_with(starts[thread])) << thread;
                const auto decline = [](const Platform::ExceptionPointers&, void*) { return 0; };
                Platform::GuardedCall([](void*) { Illegal(); }, decline, nullptr);
            });
            EXPECT_TRUE(outer.View().starts_with(starts[1])) << thread;
        }
    });
}

TEST(SehExceptionDeathTest, ABreakpointIsNotTranslated) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(GuardForeignCode(Platform::DebugBreak), "");
    EXPECT_DEATH(Illegal(), "") << "no guard is left behind";
}
