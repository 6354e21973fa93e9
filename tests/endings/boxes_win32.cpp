#include "tests/endings/boxes.h"

#include <cstdio>
#include <windows.h>

namespace {

constexpr int TextControl = 0xFFFF; // of a message box

bool IsDialog(const CREATESTRUCTW& window) {
    return reinterpret_cast<ULONG_PTR>(window.lpszClass) == reinterpret_cast<ULONG_PTR>(WC_DIALOG);
}

// Without a display a box is begun and never stands: nothing of what it says can be seen then.
LRESULT CALLBACK OnHook(int code, WPARAM window, LPARAM details) {
    if (code == HCBT_CREATEWND) {
        const CREATESTRUCTW& created = *reinterpret_cast<CBT_CREATEWNDW*>(details)->lpcs;
        if (IsDialog(created)) {
            std::fputs("box", stderr);
        }
    } else if (code == HCBT_ACTIVATE) {
        const auto box = reinterpret_cast<HWND>(window);
        char title[64] = {};
        char text[1024] = {};
        ::GetWindowTextA(box, title, sizeof(title));
        ::GetDlgItemTextA(box, TextControl, text, sizeof(text));
        std::fprintf(stderr, " %s: %s\n", title, text);
        ::EndDialog(box, IDOK);
    }
    return ::CallNextHookEx(nullptr, code, window, details);
}

} // namespace

void AnswerBoxes() {
    ::SetWindowsHookExW(WH_CBT, &OnHook, nullptr, ::GetCurrentThreadId());
}
