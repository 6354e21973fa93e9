// Arrays of plain elements that need no memory while they are short.
#pragma once

#include "foundation/inc/growth.h"
#include "foundation/inc/memorymanager.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Tsx {

/// Room for `Room` elements in the object itself; more comes from the current memory manager. It grows as CArray does,
/// but by `Room` at least, and moves back to the built-in room when the size falls to that or below. The content
/// survives a change of size up to the smaller one; what is new is undefined.
template <class T, std::int32_t Room>
class CRoomyArray {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    static constexpr std::int32_t BuiltInSize = Room;

    CRoomyArray() = default;
    ~CRoomyArray() { FreeBlock(); }
    CRoomyArray(const CRoomyArray&) = delete;
    CRoomyArray& operator=(const CRoomyArray&) = delete;

    std::int32_t Size() const { return size; }
    T* Data() { return elements; }
    bool IsBuiltIn() const { return elements == builtIn; }
    std::int32_t Capacity() const { return capacity; }

    /// Raises CMemoryException and leaves the buffer as it was.
    void SetSize(std::int32_t wanted) {
        if (wanted > capacity) {
            MoveTo(GrownCapacity(capacity, wanted, BuiltInSize));
        } else if (wanted <= BuiltInSize && !IsBuiltIn()) {
            std::copy_n(elements, std::min(size, wanted), builtIn);
            FreeBlock();
            elements = builtIn;
            capacity = BuiltInSize;
        }
        size = wanted;
    }

private:
    std::int32_t size = 0;
    T* elements = builtIn;
    std::int32_t capacity = BuiltInSize;
    T builtIn[static_cast<std::size_t>(BuiltInSize)];

    void MoveTo(std::int32_t newCapacity) {
        auto* block = static_cast<T*>(AllocateFromCurrentManager(newCapacity * std::int64_t{sizeof(T)}));
        std::copy_n(elements, size, block);
        FreeBlock();
        elements = block;
        capacity = newCapacity;
    }

    void FreeBlock() {
        if (!IsBuiltIn()) {
            FreeToOwnManager(elements);
        }
    }
};

/// Characters of a formatted line.
using CRoomyBuffer = CRoomyArray<char16_t, 512>;

} // namespace Tsx
