#include "foundation/inc/failureguard.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/src/statics.h"
#include <memory>

namespace Tsx {

namespace {

bool Succeeds(const auto& action) noexcept {
    try {
        return RunSilently(action);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

void ShowAndDelete(CException* exception) noexcept {
    const std::unique_ptr<CException> owner(exception);
    if (GetStringStage() != SS_Usable) {
        ShowLastResort(NotEnoughMemoryText); // where strings cannot be made, nothing else is raised
        return;
    }
    if (Succeeds([exception] { DisplayException(exception); })) {
        return;
    }
    const bool hasText = Succeeds([exception] {
        const CUnicodeString text = exception->GetMessageText();
        if (!text.IsEmpty()) { // a CUserException has none and is silent
            ShowLastResort(text.Text());
        }
    });
    if (!hasText) {
        ShowLastResort(NotEnoughMemoryText);
    }
}

} // namespace Tsx
