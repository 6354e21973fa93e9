// The parts of the way out of an overflowed stack, by themselves: Wine leaves such a stack too little room to look for
// a handler, so that the whole of it (sehexception_test) runs on Windows alone.
#include "foundation/inc/sehexception.h"
#include "tests/support/text.h"
#include <thread>
#include <windows.h>

using namespace Tsx;

namespace {

/// The page below the stack of this thread that tells of its growth; null without one.
void* GuardPage() {
    MEMORY_BASIC_INFORMATION part{};
    VirtualQuery(&part, &part, sizeof(part));
    const void* const stack = part.AllocationBase;
    for (auto* place = static_cast<char*>(part.AllocationBase);
         VirtualQuery(place, &part, sizeof(part)) != 0 && part.AllocationBase == stack; place += part.RegionSize) {
        if ((part.Protect & PAGE_GUARD) != 0) {
            return part.BaseAddress;
        }
    }
    return nullptr;
}

void Overflow() {
    DWORD before = 0;
    VirtualProtect(GuardPage(), 1, PAGE_READWRITE, &before);
    RaiseException(EXCEPTION_STACK_OVERFLOW, 0, 0, nullptr);
}

} // namespace

TEST(GuardedCall, AnOverflowIsToldAndThePageIsSetUpAgain) {
    std::thread([] {
        GuardForeignCode([] {
            ULONG kept = 0; // asks
            EXPECT_TRUE(SetThreadStackGuarantee(&kept) && kept >= 0x10000U) << "room for the handlers";
        });
        for (const char* turn : {"first", "second"}) {
            ASSERT_TRUE(GuardPage()) << turn;
            const auto exception = Raised<CSehException>([] { GuardForeignCode(Overflow); });
            EXPECT_TRUE(exception && exception->GetMessageText().View().starts_with(u"Stack overflow. ")) << turn;
        }
        EXPECT_TRUE(GuardPage());
    }).join();
}
