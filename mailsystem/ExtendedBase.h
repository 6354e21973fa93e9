// What the objects of the Extended side have in common: the count of references, and failures as results.
#pragma once

#include "mailsystem/MapiUnusedSlots.h"
#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

namespace MailSystem {

constexpr std::int32_t ResultNoSupport = static_cast<std::int32_t>(0x80040102);        // MAPI_E_NO_SUPPORT
constexpr std::int32_t ResultInvalidEntryId = static_cast<std::int32_t>(0x80040107);   // MAPI_E_INVALID_ENTRYID
constexpr std::int32_t ResultInvalidObject = static_cast<std::int32_t>(0x80040108);    // MAPI_E_INVALID_OBJECT
constexpr std::int32_t ResultNotFound = static_cast<std::int32_t>(0x8004010F);         // MAPI_E_NOT_FOUND
constexpr std::int32_t ResultInvalidParameter = static_cast<std::int32_t>(0x80070057); // MAPI_E_INVALID_PARAMETER

/// What a slot answers that nothing here has a use for.
struct NoSupport {
    static std::int32_t Call(const char*) { return ResultNoSupport; }
};

/// An object with its count of references; the first one is the maker's. Gone with the last.
template <class TSlots>
class Counted : public TSlots {
public:
    std::int32_t QueryInterface(const Mapi::Guid&, void** object) override {
        *object = nullptr;
        return ResultNoSupport;
    }
    std::uint32_t AddRef() override { return ++references; }
    std::uint32_t Release() override {
        const std::uint32_t left = --references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    Counted() = default;
    virtual ~Counted() = default;

private:
    std::atomic<std::uint32_t> references{1};
};

/// One reference to an object.
template <class T>
class Reference {
public:
    Reference() = default;
    /// Takes over the maker's reference.
    static Reference Adopt(T* made) {
        Reference adopted;
        adopted.object = made;
        return adopted;
    }
    explicit Reference(T* shared) : object(shared) { object->AddRef(); }
    Reference(Reference&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    Reference& operator=(Reference&& other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    ~Reference() {
        if (object) {
            object->Release();
        }
    }

    T* operator->() const { return object; }
    T* Get() const { return object; }

private:
    T* object = nullptr;
};

/// Keeps the failure's text for the thread, where COM's callers ask for it (GetErrorInfo); the failure's result.
std::int32_t FailureResult(const std::exception& failure);

/// The result of `work`, which gives one itself; no exception leaves.
template <class TWork>
std::int32_t Guarded(TWork work) {
    try {
        return work();
    } catch (const std::exception& failure) {
        return FailureResult(failure);
    }
}

/// Hands out a new object, with its first reference.
template <class TObject, class TInterface, class... TArguments>
std::int32_t HandOut(TInterface** object, TArguments&&... arguments) {
    *object = nullptr;
    return Guarded([&] {
        *object = new TObject(std::forward<TArguments>(arguments)...);
        return Platform::SOk;
    });
}

/// Memory for a caller, who gives it back through MAPIFreeBuffer. Raises std::bad_alloc.
template <class T>
T* AllocateBuffer(std::size_t size) {
    void* buffer = std::malloc(size > 0 ? size : 1);
    if (!buffer) {
        throw std::bad_alloc();
    }
    return static_cast<T*>(buffer);
}

} // namespace MailSystem
