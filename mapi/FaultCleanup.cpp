#include "mapi/FaultCleanup.h"

#include "foundation/inc/assertion.h"
#include "foundation/inc/threadobject.h"

using namespace Tsx;

namespace Mapi {

namespace {

struct CCurrent {
    CFaultCleanup* cleanup; // null outside every guard
};

CThreadObject<CCurrent> CurrentCleanup;

} // namespace

CFaultCleanup::CFaultCleanup() : outer(std::exchange(CurrentCleanup.Get()->cleanup, this)) {}

CFaultCleanup::~CFaultCleanup() {
    CurrentCleanup.Get()->cleanup = outer;
    while (count > 0) {
        const CNote note = notes[--count];
        ReleaseAfterFailure([&note] { note.release(note.object); });
    }
}

CFaultCleanup* CFaultCleanup::Current() {
    const CCurrent* current = CurrentCleanup.Find();
    return current ? current->cleanup : nullptr;
}

void CFaultCleanup::Note(void* object, ReleaseFunction release) {
    TSX_REQUIRE(count < notes.size(), u"..\\Src\\FaultCleanup");
    notes[count++] = {object, release};
}

void CFaultCleanup::Forget(const void* object) {
    for (std::size_t i = count; i-- > 0;) {
        if (notes[i].object == object) {
            for (--count; i < count; ++i) {
                notes[i] = notes[i + 1];
            }
            return;
        }
    }
}

} // namespace Mapi
