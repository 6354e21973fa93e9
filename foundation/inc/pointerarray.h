// The growing array that owns what its pointers point to.
#pragma once

#include "foundation/inc/allocationpolicy.h"
#include "foundation/inc/assertion.h"
#include "foundation/inc/growbuffer.h"
#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace Tsx {

/// An array of pointers, each owned and some perhaps null. Its buffer grows as that of CArray. TDestroy is called with
/// an element that is to go. An index outside the array is an assertion, and on a thread that must not throw the array
/// stays as it is, and what was to be added with the caller; a failed allocation raises CMemoryException,
/// leaves the array as it was, and leaves what was to be added with the caller.
template <class T, class TDestroy = std::default_delete<T>, class TMemory = CCurrentManagerPolicy>
class CPointerArray {
public:
    CPointerArray() = default;
    CPointerArray(CPointerArray&& other) noexcept { Swap(other); }
    ~CPointerArray() { FreeBuffer(); }
    CPointerArray(const CPointerArray&) = delete;
    CPointerArray& operator=(const CPointerArray&) = delete;
    CPointerArray& operator=(CPointerArray&& other) noexcept {
        CPointerArray taken(std::move(other));
        Swap(taken);
        return *this;
    }

    std::int32_t Size() const { return count; }
    std::int32_t Capacity() const { return capacity; }
    bool IsEmpty() const { return count == 0; }

    T* const* begin() const { return elements; }
    T* const* end() const { return elements + count; }
    T* operator[](std::int32_t index) const {
        TSX_REQUIRE(Has(index), ModuleName, nullptr);
        return elements[index];
    }

    void Append(T* element) { InsertAt(count, element); }

    void InsertAt(std::int32_t index, T* element) {
        TSX_REQUIRE(index >= 0 && index <= count, ModuleName);
        GrowBuffer<TMemory>(elements, count, capacity, std::int64_t{count} + 1, LeastStep);
        std::copy_backward(elements + index, elements + count, elements + count + 1);
        elements[index] = element;
        ++count;
    }

    /// Puts another element, or null, in an element's place, and hands the old one to the caller: `element` itself
    /// where there is no such place.
    T* Exchange(std::int32_t index, T* element) {
        TSX_REQUIRE(Has(index), ModuleName, element);
        return std::exchange(elements[index], element);
    }

    /// Destroys `number` elements from `index` on, in order, and closes the gap. A destructor may look at the array,
    /// and finds null where it stood itself.
    void DeleteAt(std::int32_t index, std::int32_t number = 1) {
        TSX_REQUIRE_AT(index >= 0, ModuleName, 466);
        TSX_REQUIRE_AT(index <= count, ModuleName, 467);
        TSX_REQUIRE_AT(number >= 0, ModuleName, 468);
        TSX_REQUIRE_AT(index <= std::int64_t{count} - number, ModuleName, 469);
        Destroy(index, number);
        std::copy(elements + index + number, elements + count, elements + index);
        count -= number;
    }

    void DeleteAll() { DeleteAt(0, count); }

    /// Destroys the elements and gives the buffer back.
    void FreeBuffer() {
        Destroy(0, count);
        count = 0;
        TMemory::Free(elements);
        elements = nullptr;
        capacity = 0;
    }

    void Swap(CPointerArray& other) noexcept {
        std::swap(count, other.count);
        std::swap(elements, other.elements);
        std::swap(capacity, other.capacity);
    }

private:
    static constexpr const char16_t* ModuleName = u"inc\\pointerarray";
    static constexpr std::int64_t LeastStep = 8;

    std::int32_t count = 0;
    T** elements = nullptr;
    std::int32_t capacity = 0;

    void Destroy(std::int32_t index, std::int32_t number) {
        for (std::int32_t i = index; i < index + number; ++i) {
            if (T* element = std::exchange(elements[i], nullptr)) {
                TDestroy()(element);
            }
        }
    }

    bool Has(std::int32_t index) const { return index >= 0 && index < count; }
};

} // namespace Tsx
