#include "mapi/MapiResult.h"

#include "foundation/inc/errors.h"

using namespace Tsx;

namespace Mapi {

void CheckResult(std::int32_t result) {
    if (result >= 0) {
        return;
    }
    if (result == ResultOutOfMemory) {
        GenerateMemoryException();
    }
    GenerateCOMException(result);
}

} // namespace Mapi
