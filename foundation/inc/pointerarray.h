// The growing array that owns what its pointers point to: records of threads, resource modules, mappings.
#pragma once

#include "foundation/inc/array.h"
#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace Tsx {

/// A CArray of pointers, each owned and some perhaps null. TDestroy is called with an element that is to go. Where an
/// index is outside the array, or memory is exhausted, what was to be added stays the caller's.
template <class T, class TDestroy = std::default_delete<T>, class TMemory = CCurrentManagerPolicy>
class CPointerArray : private CArray<T*, TMemory> {
    using TBase = CArray<T*, TMemory>;

public:
    CPointerArray() = default;
    CPointerArray(CPointerArray&& other) noexcept = default;
    ~CPointerArray() { FreeBuffer(); }
    CPointerArray(const CPointerArray&) = delete;
    CPointerArray& operator=(const CPointerArray&) = delete;
    CPointerArray& operator=(CPointerArray&& other) noexcept {
        CPointerArray taken(std::move(other));
        TBase::Swap(taken);
        return *this;
    }

    using TBase::Capacity;
    using TBase::InsertAt;
    using TBase::IsEmpty;
    using TBase::Size;

    T* const* begin() const { return TBase::begin(); }
    T* const* end() const { return TBase::end(); }
    T* operator[](std::int32_t index) const { return TBase::operator[](index); }

    void Append(T* element) { TBase::Append(element); }

    /// Puts another element, or null, in an element's place, and hands the old one to the caller: `element` itself
    /// where there is no such place.
    T* Exchange(std::int32_t index, T* element) {
        TSX_REQUIRE(index >= 0 && index < Size(), ModuleName, element);
        return std::exchange(this->Data()[index], element);
    }

    /// Destroys `number` elements from `index` on, in order, and closes the gap. A destructor may look at the array,
    /// and finds null where it stood itself.
    void DeleteAt(std::int32_t index, std::int32_t number = 1) {
        TSX_REQUIRE_AT(index >= 0, ModuleName, 466);
        TSX_REQUIRE_AT(index <= Size(), ModuleName, 467);
        TSX_REQUIRE_AT(number >= 0, ModuleName, 468);
        TSX_REQUIRE_AT(index <= std::int64_t{Size()} - number, ModuleName, 469);
        Destroy(index, number);
        T** const first = this->Data() + index;
        std::copy(first + number, this->Data() + Size(), first);
        this->SetSize(Size() - number);
    }

    void DeleteAll() { DeleteAt(0, Size()); }

    /// Destroys the elements and gives the buffer back.
    void FreeBuffer() {
        Destroy(0, Size());
        TBase::FreeBuffer();
    }

private:
    static constexpr const char16_t* ModuleName = u"inc\\pointerarray";

    void Destroy(std::int32_t index, std::int32_t number) {
        for (std::int32_t i = index; i < index + number; ++i) {
            if (T* element = std::exchange(this->Data()[i], nullptr)) {
                TDestroy()(element);
            }
        }
    }
};

} // namespace Tsx
