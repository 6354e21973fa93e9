// The growing array of the foundation.
#pragma once

#include "foundation/inc/allocationpolicy.h"
#include "foundation/inc/assertion.h"
#include "foundation/inc/growth.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Tsx {

/// An array that owns its elements: built and destroyed in place, the last one destroyed first, in a buffer from the
/// current memory manager. An index outside the array is an assertion; on a thread that must not throw nothing is then
/// added or removed, and operator[] gives a spare element. What fails, an allocation or an element's own operation,
/// leaves the array as it was.
///
/// Growing to n elements sets the capacity to the old capacity plus the largest of half the old capacity, 8, and what
/// is missing:
///
///   capacity   0 -> 8 -> 16 -> 24 -> 36 -> 54 ...    one element at a time
///   capacity   0 -> 20                               20 elements at once
template <class T, class TPolicy = CCurrentManagerPolicy>
class CArray {
    static_assert(std::is_nothrow_move_constructible_v<T>, "growth moves elements and must not fail half-way");

public:
    CArray() = default;
    CArray(const CArray& other) : CArray() { AppendAll(other); } // a copy that fails half-way is destroyed
    CArray(CArray&& other) noexcept { Swap(other); }
    ~CArray() { FreeBuffer(); }

    CArray& operator=(const CArray& other) {
        if (this != &other) {
            CArray copy(other);
            Swap(copy);
        }
        return *this;
    }
    CArray& operator=(CArray&& other) noexcept {
        Swap(other);
        return *this;
    }

    std::int32_t Size() const { return count; }
    std::int32_t Capacity() const { return capacity; }
    bool IsEmpty() const { return count == 0; }

    T* Data() { return elements; }
    const T* Data() const { return elements; }
    T* begin() { return elements; }
    T* end() { return elements + count; }
    const T* begin() const { return elements; }
    const T* end() const { return elements + count; }

    T& operator[](std::int32_t index) { return __builtin_expect(Has(index), 1) ? elements[index] : FailIndex(); }
    const T& operator[](std::int32_t index) const {
        return __builtin_expect(Has(index), 1) ? elements[index] : FailIndex();
    }

    /// Adds one element at the end. The argument may be an element of this array.
    T& Append(T element) {
        Grow(std::int64_t{count} + 1);
        return *new (elements + count++) T(std::move(element));
    }

    void AppendAll(const CArray& other) {
        const std::int32_t added = other.count;
        Grow(std::int64_t{count} + added);
        std::uninitialized_copy_n(other.elements, added, elements + count);
        count += added;
    }

    void InsertAt(std::int32_t index, T element) {
        TSX_REQUIRE(index >= 0 && index <= count, ModuleName);
        Append(std::move(element));
        std::rotate(elements + index, elements + count - 1, elements + count);
    }

    void RemoveAt(std::int32_t index) {
        TSX_REQUIRE(Has(index), ModuleName);
        std::move(elements + index + 1, elements + count, elements + index);
        elements[--count].~T();
    }

    /// Sets the number of elements: new ones are value-initialised, surplus ones destroyed from the end.
    void SetSize(std::int32_t size) {
        TSX_REQUIRE(size >= 0, ModuleName);
        while (count > size) {
            elements[--count].~T();
        }
        if (count < size) {
            Grow(size);
            std::uninitialized_value_construct_n(elements + count, size - count);
            count = size;
        }
    }

    /// Makes room for exactly `wanted` elements if there is less.
    void Reserve(std::int32_t wanted) {
        if (wanted > capacity) {
            SetCapacity(wanted);
        }
    }

    void RemoveAll() { SetSize(0); }

    /// Destroys the elements and gives the buffer back.
    void FreeBuffer() {
        while (count > 0) {
            elements[--count].~T();
        }
        TPolicy::Free(elements);
        elements = nullptr;
        capacity = 0;
    }

    void Swap(CArray& other) noexcept {
        std::swap(count, other.count);
        std::swap(elements, other.elements);
        std::swap(capacity, other.capacity);
    }

private:
    static constexpr const char16_t* ModuleName = u"inc\\array";

    std::int32_t count = 0;
    T* elements = nullptr;
    std::int32_t capacity = 0;

    bool Has(std::int32_t index) const { return static_cast<std::uint32_t>(index) < static_cast<std::uint32_t>(count); }

    /// Returns on a thread that must not throw, with a spare element that is made anew each time, so that it keeps
    /// nothing of an earlier failure. It is never destroyed, for failures occur up to the end of static destruction.
    [[gnu::cold, gnu::noinline]] static T& FailIndex() {
        FailAssertion(ModuleName, __LINE__);
        alignas(T) static std::byte place[sizeof(T)]; // NOLINT(bugprone-sizeof-expression): elements may be pointers
        if constexpr (std::is_default_constructible_v<T>) {
            static T* spare = nullptr;
            if (spare) {
                spare->~T();
            }
            spare = new (place) T();
        }
        return *std::launder(reinterpret_cast<T*>(place));
    }

    void Grow(std::int64_t needed) {
        constexpr std::int64_t leastStep = 8;
        if (needed > capacity) {
            SetCapacity(GrownCapacity(capacity, needed, leastStep));
        }
    }

    void SetCapacity(std::int32_t newCapacity) {
        constexpr std::int64_t elementSize =
            sizeof(T); // NOLINT(bugprone-sizeof-expression): an element may be a pointer
        auto* buffer = static_cast<T*>(TPolicy::Alloc(newCapacity * elementSize));
        std::uninitialized_move_n(elements, count, buffer);
        std::destroy_n(elements, count);
        TPolicy::Free(elements);
        elements = buffer;
        capacity = newCapacity;
    }
};

} // namespace Tsx
