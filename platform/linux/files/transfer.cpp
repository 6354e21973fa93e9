#include "platform/linux/files/transfer.h"

#include "platform/linux/descriptor.h"
#include <array>
#include <unistd.h>

namespace Platform {

namespace {

constexpr std::size_t PieceSize = 0x10000;

} // namespace

std::size_t WriteWhole(int descriptor, const void* bytes, std::size_t count) {
    const auto* start = static_cast<const char*>(bytes);
    std::size_t written = 0;
    while (written < count) {
        const ssize_t done = Retry([&] { return write(descriptor, start + written, count - written); });
        if (done < 0) {
            break;
        }
        written += static_cast<std::size_t>(done);
    }
    return written;
}

bool CopyContent(int source, int target, std::int64_t limit) {
    std::array<char, PieceSize> piece;
    for (std::int64_t total = 0;;) {
        const ssize_t count = Retry([&] { return read(source, piece.data(), piece.size()); });
        if (count <= 0) {
            return count == 0;
        }
        if (count > limit - total) {
            errno = EFBIG;
            return false;
        }
        const auto size = static_cast<std::size_t>(count);
        if (WriteWhole(target, piece.data(), size) < size) {
            return false;
        }
        total += count;
    }
}

bool Flush(int descriptor) {
    return Retry([&] { return fsync(descriptor); }) == 0;
}

} // namespace Platform
