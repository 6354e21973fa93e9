// An array of characters that needs no memory while it is short.
#pragma once

#include "foundation/inc/growth.h"
#include "foundation/inc/memorymanager.h"
#include <algorithm>
#include <cstdint>

namespace Tsx {

/// Room for 512 characters in the object itself; more comes from the current memory manager. It grows as CArray does,
/// but by 512 at least, and moves back to the built-in room when the size falls to 512 or below. The content survives a
/// change of size up to the smaller one.
class CRoomyBuffer {
public:
    static constexpr std::int32_t BuiltInSize = 512;

    CRoomyBuffer() = default;
    ~CRoomyBuffer() { FreeBlock(); }
    CRoomyBuffer(const CRoomyBuffer&) = delete;
    CRoomyBuffer& operator=(const CRoomyBuffer&) = delete;

    std::int32_t Size() const { return size; }
    char16_t* Data() { return characters; }
    bool IsBuiltIn() const { return characters == builtIn; }
    std::int32_t Capacity() const { return capacity; }

    /// Raises CMemoryException and leaves the buffer as it was.
    void SetSize(std::int32_t wanted) {
        if (wanted > capacity) {
            MoveTo(GrownCapacity(capacity, wanted, BuiltInSize));
        } else if (wanted <= BuiltInSize && !IsBuiltIn()) {
            std::copy_n(characters, std::min(size, wanted), builtIn);
            FreeBlock();
            characters = builtIn;
            capacity = BuiltInSize;
        }
        size = wanted;
    }

private:
    std::int32_t size = 0;
    char16_t* characters = builtIn;
    std::int32_t capacity = BuiltInSize;
    char16_t builtIn[BuiltInSize];

    void MoveTo(std::int32_t newCapacity) {
        auto* block = static_cast<char16_t*>(AllocateFromCurrentManager(newCapacity * std::int64_t{sizeof(char16_t)}));
        std::copy_n(characters, size, block);
        FreeBlock();
        characters = block;
        capacity = newCapacity;
    }

    void FreeBlock() {
        if (!IsBuiltIn()) {
            FreeToOwnManager(characters);
        }
    }
};

} // namespace Tsx
