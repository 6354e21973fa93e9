// Counted objects: the root class of everything that an archive can hold, and the pointer that keeps one alive. The
// wrappers of MAPI's interfaces are such objects too.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/memorymanager.h"
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Tsx {

class CArchive;

/// Objects come from the thread's current memory manager and may be shared by threads; what a derived class adds guards
/// itself. The count starts at 0: the holder that first receives an object adds 1, and the one that takes the last 1
/// away deletes it.
class IObject {
public:
    IObject() = default;
    IObject(const IObject&) = delete;
    IObject& operator=(const IObject&) = delete;

    /// Reads or writes the object, as the archive's direction says. An internal error in a class that has no form in
    /// archives.
    virtual void Serialize(CArchive& archive);
    virtual ~IObject() = default;

    void AddReference() const noexcept { RefCount.fetch_add(1, std::memory_order_relaxed); }
    void ReleaseReference() const noexcept {
        if (RefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    static void* operator new(std::size_t size) { return AllocateFromCurrentManager(static_cast<std::int64_t>(size)); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept { FreeToOwnManager(block); }

private:
    mutable std::atomic<std::int32_t> RefCount{0};
};

/// A counted reference to an object, or an empty one.
template <class T>
class CHolder {
public:
    CHolder() = default;
    explicit CHolder(T* toHold) noexcept : object(toHold) { Add(); }
    CHolder(const CHolder& other) noexcept : object(other.object) { Add(); }
    CHolder(CHolder&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~CHolder() { Clear(); }
    CHolder& operator=(CHolder other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    /// Takes over a reference that is counted already.
    static CHolder Adopt(T* counted) noexcept {
        CHolder holder;
        holder.object = counted;
        return holder;
    }

    void Clear() noexcept {
        if (T* released = std::exchange(object, nullptr)) {
            released->ReleaseReference();
        }
    }

    T* Get() const { return object; }
    bool IsEmpty() const { return !object; }
    /// An empty holder is an internal error.
    T* operator->() const { return Checked(); }
    T& operator*() const { return *Checked(); }

private:
    T* object = nullptr;

    void Add() const noexcept {
        if (object) {
            object->AddReference();
        }
    }

    T* Checked() const {
        TSX_ASSERT_AT(object, u"inc\\Object", 268);
        return object;
    }
};

} // namespace Tsx
