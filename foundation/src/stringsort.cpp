#include "foundation/inc/stringsort.h"

#include <algorithm>
#include <utility>

namespace Tsx {

namespace {

constexpr std::int32_t LargestSelection = 8;

struct CRange {
    std::int32_t first;
    std::int32_t count;
};

// From the last position down, the largest element goes there.
void SelectionSort(CUnicodeString* strings, std::int32_t count) {
    for (std::int32_t last = count - 1; last > 0; --last) {
        std::int32_t largest = 0;
        for (std::int32_t i = 1; i <= last; ++i) {
            if (strings[i] > strings[largest]) {
                largest = i;
            }
        }
        std::swap(strings[largest], strings[last]);
    }
}

// Puts the middle element to its final place, with what is below it in front and what is above it behind; returns that
// place.
std::int32_t Partition(CUnicodeString* strings, std::int32_t count) {
    std::swap(strings[0], strings[count / 2]);
    const CUnicodeString pivot = strings[0];
    std::int32_t left = 0;
    std::int32_t right = count;
    for (;;) {
        do {
            ++left;
        } while (left < count && strings[left] < pivot);
        do {
            --right;
        } while (strings[right] > pivot);
        if (left >= right) {
            break;
        }
        std::swap(strings[left], strings[right]);
    }
    std::swap(strings[0], strings[right]);
    return right;
}

} // namespace

void SortStrings(CArray<CUnicodeString>& strings) {
    // The larger part waits and the smaller goes on, so that 64 ranges are enough for any count of 32 bits.
    CRange pending[64];
    std::int32_t waiting = 0;
    CRange range{0, strings.Size()};
    for (;;) {
        CUnicodeString* const first = strings.Data() + range.first;
        if (range.count <= LargestSelection) {
            SelectionSort(first, range.count);
            if (waiting == 0) {
                return;
            }
            range = pending[--waiting];
            continue;
        }
        const std::int32_t middle = Partition(first, range.count);
        CRange below{range.first, middle};
        CRange above{range.first + middle + 1, range.count - middle - 1};
        const bool belowIsLarger = below.count > above.count;
        pending[waiting++] = belowIsLarger ? below : above;
        range = belowIsLarger ? above : below;
    }
}

void SortUniqueStrings(CArray<CUnicodeString>& strings) {
    SortStrings(strings);
    strings.SetSize(static_cast<std::int32_t>(std::unique(strings.begin(), strings.end()) - strings.begin()));
}

} // namespace Tsx
