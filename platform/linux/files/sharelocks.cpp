#include "platform/linux/files/sharelocks.h"

#include "platform/inc/files.h"
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <thread>

namespace Platform {

namespace {

constexpr std::uint32_t AllKinds = FileShareRead | FileShareWrite | FileShareDelete;
constexpr std::uint32_t UseCount = (AllKinds + 1) * (AllKinds + 1);
constexpr int RangeBits = 20;
constexpr off_t RangeSize = off_t{1} << RangeBits;
constexpr off_t AreaSize = UseCount * RangeSize;
constexpr off_t ComingArea = off_t{1} << 62;
constexpr off_t OpenArea = ComingArea + AreaSize;

std::uint32_t NumberOf(std::uint32_t uses, std::uint32_t allows) {
    return uses | (allows & AllKinds) * (AllKinds + 1);
}

ShareUse UseOfNumber(std::uint32_t number) {
    return {number & AllKinds, number / (AllKinds + 1)};
}

struct flock LockOf(int type, off_t start, off_t size) {
    struct flock lock {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = size;
    return lock;
}

// Another value at each call, in each process.
std::uint64_t Scattered() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15U; // 2^64 divided by the golden ratio
}

// A byte of the range that nobody else has locked: the lock of a handle for writing alone is an exclusive one, as the
// system has no other for it.
void LockByte(int descriptor, std::uint32_t uses, off_t range) {
    const bool shared = uses == FileShareDelete || (uses & FileShareRead) != 0;
    for (int attempt = 0; attempt < 8; ++attempt) {
        const auto offset = static_cast<off_t>(Scattered() >> (64 - RangeBits));
        struct flock lock = LockOf(shared ? F_RDLCK : F_WRLCK, range + offset, 1);
        if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES)) {
            return; // without locks there is nothing to be seen either
        }
    }
}

void Unlock(int descriptor, off_t start, off_t size) {
    struct flock lock = LockOf(F_UNLCK, start, size);
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool OthersHold(int descriptor, off_t start, off_t size) {
    struct flock lock = LockOf(F_WRLCK, start, size);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK && lock.l_start >= ComingArea;
}

// Mostly nobody is there at all, which one call tells; else there is one for each run of uses that disagree.
bool AnyDisagrees(int descriptor, off_t area, const ShareUse& use) {
    if (!OthersHold(descriptor, area, AreaSize)) {
        return false;
    }
    const auto agrees = [&use](std::uint32_t number) {
        return Agree(UseOfNumber(number), use);
    };
    for (std::uint32_t first = 0; first < UseCount; ++first) {
        std::uint32_t end = first;
        while (end < UseCount && !agrees(end)) {
            ++end;
        }
        if (end > first && OthersHold(descriptor, area + first * RangeSize, (end - first) * RangeSize)) {
            return true;
        }
        first = end;
    }
    return false;
}

off_t RangeOf(off_t area, std::uint32_t uses, std::uint32_t allows) {
    return area + NumberOf(uses, allows) * RangeSize;
}

} // namespace

bool Agree(const ShareUse& present, const ShareUse& added) {
    return (present.uses & ~added.allows) == 0 && ((added.uses | added.atFirst) & ~present.allows) == 0;
}

Agreement AnnounceUse(int descriptor, const ShareUse& use) {
    const std::uint32_t uses = use.uses | use.atFirst;
    LockByte(descriptor, uses, RangeOf(ComingArea, uses, use.allows));
    if (!AnyDisagrees(descriptor, ComingArea, use)) {
        return Agreement::Agreed;
    }
    // In this order: whoever is no longer only coming is in "open" by now.
    const bool refused = AnyDisagrees(descriptor, OpenArea, use);
    Unlock(descriptor, ComingArea, AreaSize);
    return refused ? Agreement::Refused : Agreement::Undecided;
}

void ConfirmUse(int descriptor, const ShareUse& use) {
    const std::uint32_t announced = use.uses | use.atFirst;
    if (use.uses != 0) {
        LockByte(descriptor, use.uses, RangeOf(OpenArea, use.uses, use.allows));
    }
    if (announced == use.uses) {
        return;
    }
    if (use.uses != 0) {
        LockByte(descriptor, use.uses, RangeOf(ComingArea, use.uses, use.allows));
    }
    Unlock(descriptor, RangeOf(ComingArea, announced, use.allows), RangeSize);
}

void PauseAfterAttempt(int attempt) {
    constexpr std::uint64_t step = 50;
    std::this_thread::sleep_for(std::chrono::microseconds(1 + Scattered() % (step * static_cast<unsigned>(attempt))));
}

} // namespace Platform
