// A hardware fault in the mail client's code leaves the guarded call without running a single destructor. What the
// frames that it leaves had in their hands is therefore also noted outside the guard, and released from there.
#pragma once

#include "mapi/MapiResult.h"
#include <array>
#include <cstdint>
#include <utility>

namespace Mapi {

/// Stands in the frame around a guarded call. While it lives, everything that a CHeld of this thread holds is noted
/// here; its end releases what is left, the last one first. Nothing is left unless a fault came between.
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
    /// Takes the last note of the object away; it need not be there.
    void Forget(const void* object);

private:
    struct CNote {
        void* object;
        ReleaseFunction release;
    };

    // No step of a delivery holds more at a time than a table, its rows, and an object opened from one of them.
    static constexpr std::size_t Room = 16;
    std::array<CNote, Room> notes{};
    std::size_t count = 0;
    CFaultCleanup* outer;
};

/// Owns one thing that the mail system gave, or nothing. TOwner::Release(T*) gives it back.
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

    /// Makes a call that hands out a pointer, takes what it gave and checks its result. `call` takes a T**.
    template <class TCall>
    void Receive(TCall call) {
        T* received = nullptr;
        const std::int32_t result = call(&received);
        Hold(received);
        CheckResult(result);
    }

    /// Gives the thing out of hand, unreleased.
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

/// An object of ours.
template <class T>
using CHeldObject = CHeld<T, CObjectOwner>;

} // namespace Mapi
