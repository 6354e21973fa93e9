// Owners of what the MAPI library gives, for the wrappers of mapi/. A hardware fault in the MAPI library's code leaves
// the guarded call without running destructors, so each owner also notes what it holds outside the guard, in
// CFaultCleanup, which releases it after a fault.
#pragma once

#include "foundation/inc/failureguard.h"
#include "foundation/inc/sehexception.h"
#include "mapi/MapiResult.h"
#include <array>
#include <cstdint>
#include <utility>

namespace Mapi {

/// Releases something outside the guarded call, in a guard of its own, for a library that has failed once may do so
/// again. Another fault, and whatever else is raised, is dropped: the first failure is on its way to the user.
template <class TRelease>
void ReleaseAfterFailure(TRelease release) noexcept {
    Tsx::RunSilently([&release] { Tsx::GuardForeignCode(release); });
}

/// Empties a CHolder in this way. A guard is not cheap, and without a failure nothing is held any more.
template <class THolder>
void ClearAfterFailure(THolder& holder) noexcept {
    if (!holder.IsEmpty()) {
        ReleaseAfterFailure([&holder] { holder.Clear(); });
    }
}

/// For the frame around a guarded call. While it lives, everything that a CHeld of this thread holds is noted here. Its
/// end releases what is still noted, the last one first; without a fault that is nothing.
class CFaultCleanup {
public:
    using ReleaseFunction = void (*)(void* object);

    CFaultCleanup();
    ~CFaultCleanup();
    CFaultCleanup(const CFaultCleanup&) = delete;
    CFaultCleanup& operator=(const CFaultCleanup&) = delete;

    /// The calling thread's, or null.
    static CFaultCleanup* Current();

    void Note(void* object, ReleaseFunction release);
    /// Removes the last note of the object, if there is one.
    void Forget(const void* object);

private:
    struct CNote {
        void* object;
        ReleaseFunction release;
    };

    // No step of a delivery holds more at a time than a table, its rows and an object opened from one of them; the
    // rest is spare.
    static constexpr std::size_t Room = 16;
    std::array<CNote, Room> notes{};
    std::size_t count = 0;
    CFaultCleanup* outer;
};

/// Owns one thing that has to be released, or nothing. TOwner::Release(T*) releases it.
template <class T, class TOwner>
class CHeld {
public:
    CHeld() = default;
    explicit CHeld(T* toHold) { Hold(toHold); }
    ~CHeld() { Clear(); }
    CHeld(const CHeld&) = delete;
    CHeld& operator=(const CHeld&) = delete;

    /// Takes ownership; it must be empty.
    void Hold(T* toHold) {
        object = toHold;
        if (CFaultCleanup* cleanup = object ? CFaultCleanup::Current() : nullptr) {
            cleanup->Note(object, [](void* noted) { TOwner::Release(static_cast<T*>(noted)); });
        }
    }

    /// Makes a call that gives a pointer, takes ownership of that and checks the result. `call` takes a T**.
    template <class TCall>
    void Receive(TCall call) {
        T* received = nullptr;
        const std::int32_t result = call(&received);
        Hold(received);
        CheckResult(result);
    }

    /// Gives up the ownership without a release.
    T* Detach() {
        if (CFaultCleanup* cleanup = object ? CFaultCleanup::Current() : nullptr) {
            cleanup->Forget(object);
        }
        return std::exchange(object, nullptr);
    }

    void Clear() {
        if (T* released = Detach()) {
            TOwner::Release(released);
        }
    }

    T* Get() const { return object; }
    /// Nothing held raises CCOMException with E_POINTER.
    T* operator->() const { return Required(object); }

private:
    T* object = nullptr;
};

struct CInterfaceOwner {
    template <class T>
    static void Release(T* object) {
        object->Release();
    }
};

/// One reference to an interface.
template <class T>
using CInterface = CHeld<T, CInterfaceOwner>;

struct CObjectOwner {
    template <class T>
    static void Release(T* object) {
        delete object;
    }
};

/// An object made with new.
template <class T>
using CHeldObject = CHeld<T, CObjectOwner>;

} // namespace Mapi
