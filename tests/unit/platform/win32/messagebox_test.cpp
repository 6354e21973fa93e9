// Boxes and the windows that they belong to.
#include "foundation/src/messageboxrules.h"

#include <gtest/gtest.h>
#include <windows.h>

TEST(MessageBox, AVisibleOwnerHoldsTheBoxInPlace) {
    struct Row {
        DWORD visibility;
        std::uint32_t style;
    };
    for (const Row& row : {Row{WS_VISIBLE, 0x30}, Row{0, 0x52030}}) {
        HWND owner = ::CreateWindowExW(0, L"STATIC", L"owner", WS_POPUP | row.visibility, 0, 0, 9, 9, nullptr, nullptr,
                                       nullptr, nullptr);
        ASSERT_NE(owner, nullptr) << row.visibility;
        EXPECT_EQ(Tsx::GetBoxStyle(0, reinterpret_cast<Platform::Window>(owner), nullptr), row.style) << row.visibility;
        ::DestroyWindow(owner);
    }
}
