#include "foundation/inc/tlsslot.h"

#include "foundation/inc/debugtrace.h"

namespace Tsx {

CTlsSlot::CTlsSlot() : index(Platform::TlsAlloc()) {
    if (index == Platform::TlsOutOfIndexes) {
        DebugTrace(u"Not enough TLS indices\n");
    }
}

CTlsSlot::~CTlsSlot() {
    if (index != Platform::TlsOutOfIndexes) {
        Platform::TlsFree(index);
    }
}

} // namespace Tsx
