#include "foundation/inc/lastresort.h"

#include "platform/inc/messagebox.h"
#include "platform/inc/process.h"

namespace Tsx {

std::atomic<bool> FatalNoMessageBox{false};

std::int32_t ShowLastResort(const char16_t* text, std::uint32_t style) noexcept {
    return FatalNoMessageBox ? 0 : Platform::MessageBox(nullptr, text, FoundationTitle, style);
}

void EndWithLastResort(const char16_t* text) noexcept {
    ShowLastResort(text);
    Platform::Abort();
}

} // namespace Tsx
