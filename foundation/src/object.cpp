#include "foundation/inc/object.h"

namespace Tsx {

void IObject::Serialize(CArchive&) {
    FailAssertion(u"inc\\Object", 22);
}

} // namespace Tsx
