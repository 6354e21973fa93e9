// The program with one static object more, whose construction fails: the failure is shown and the program does not
// start.
#include "foundation/inc/assertion.h"

namespace {

class CBroken {
public:
    CBroken() {
        int parts = 0;
        TSX_ASSERT_AT(parts > 0, u"src\\broken", 7);
    }
};

const CBroken broken;

} // namespace
