// The base of the wrappers in MapiSession.h, MapiStore.h and MapiMessage.h. Two levels of counting: the wrapper is
// counted by its holders, and holds one reference to its interface.
#pragma once

#include "foundation/inc/object.h"
#include "mapi/MapiResult.h"

namespace Mapi {

/// For the main thread. The interface may be null, as when a MAPI library reports success and gives nothing; the first
/// use then raises CCOMException with E_POINTER.
template <class T>
class CMapiWrapper : public virtual Tsx::IObject {
public:
    /// Adds a reference of its own.
    explicit CMapiWrapper(T* toWrap) : wrapped(toWrap) {
        if (wrapped) {
            wrapped->AddRef();
        }
    }
    ~CMapiWrapper() override {
        if (wrapped) {
            wrapped->Release();
        }
    }

    /// Never null. The reference stays this object's.
    T* Interface() const { return Required(wrapped); }

private:
    T* wrapped;
};

} // namespace Mapi
