#include "foundation/inc/tlsslot.h"

#include "foundation/inc/debugtrace.h"

namespace Tsx {

CTlsSlot::CTlsSlot() : TlsIndex(Platform::TlsAlloc()) {
    if (TlsIndex == Platform::TlsOutOfIndexes) {
        DebugTrace(u"Not enough TLS indices\n");
    }
}

CTlsSlot::~CTlsSlot() {
    if (TlsIndex != Platform::TlsOutOfIndexes) {
        Platform::TlsFree(TlsIndex);
    }
}

} // namespace Tsx
