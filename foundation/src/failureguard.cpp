#include "foundation/inc/failureguard.h"

#include "foundation/inc/messagehandlers.h"
#include "foundation/src/statics.h"
#include <memory>

namespace Tsx {

namespace {

// In the order in which less and less is needed.
void ShowTextAlone(const CException& exception) noexcept {
    try {
        const CUnicodeString text = exception.GetMessageText();
        if (!text.IsEmpty()) { // a CUserException has none: what had to be said has been said
            ShowLastResort(text.Text());
        }
    } catch (CException* noText) {
        delete noText;
        ShowLastResort(NotEnoughMemoryText);
    } catch (const std::bad_alloc&) {
        ShowLastResort(NotEnoughMemoryText);
    }
}

} // namespace

void ShowAndDelete(CException* exception) noexcept {
    const std::unique_ptr<CException> owner(exception);
    if (GetStringStage() != EStringStage::Usable) {
        ShowLastResort(NotEnoughMemoryText); // nothing else is raised at the two ends of the process
        return;
    }
    try {
        DisplayException(exception);
    } catch (CException* notShown) {
        delete notShown;
        ShowTextAlone(*exception);
    } catch (const std::bad_alloc&) {
        ShowTextAlone(*exception);
    }
}

} // namespace Tsx
