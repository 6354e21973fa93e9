#include "foundation/inc/messagelog.h"

namespace Tsx {

void WriteMessageLogLine(const char16_t* text) {
    static_cast<void>(text);
}

} // namespace Tsx
