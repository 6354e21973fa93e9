#include "platform/linux/sharetable.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include <algorithm>
#include <array>
#include <atomic>
#include <fcntl.h>
#include <new>

namespace Platform {

namespace {

std::mutex& TableLock() {
    static auto* const lock = new std::mutex; // handles may be closed by static destructors
    return *lock;
}

bool Agree(const ShareUse& present, const ShareUse& added) {
    return (present.uses & ~added.allows) == 0 && ((added.uses | added.atFirst) & ~present.allows) == 0;
}

// The locks of a handle are single bytes far behind any content, one in the range "in use" of each thing it does and
// one in the range "denied" of each thing it doesn't allow. It sets its own first and looks at the opposite ranges
// then: of two that come at once at least one sees the other.
constexpr std::uint32_t Kinds[] = {FileShareRead, FileShareWrite, FileShareDelete};
constexpr off_t LocksStart = off_t{1} << 62;
constexpr off_t RangeSize = off_t{1} << 20;

off_t UseRange(std::size_t kind) {
    return LocksStart + static_cast<off_t>(2 * kind) * RangeSize;
}
off_t DenyRange(std::size_t kind) {
    return UseRange(kind) + RangeSize;
}

struct flock LockOf(int type, off_t start, off_t size) {
    struct flock lock {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = size;
    return lock;
}

// A byte of the range that nobody else has locked: a lock through a handle for writing alone is an exclusive one.
void LockByte(int descriptor, off_t range) {
    const int mode = fcntl(descriptor, F_GETFL) & O_ACCMODE;
    static std::atomic<std::uint32_t> counter{0};
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::uint32_t number = static_cast<std::uint32_t>(getpid()) * 2654435761U + ++counter * 40503U;
        struct flock lock = LockOf(mode == O_RDONLY ? F_RDLCK : F_WRLCK, range + number % RangeSize, 1);
        if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES)) {
            return; // without locks there is nothing to be seen either
        }
    }
}

bool OthersHoldAny(int descriptor, off_t range) {
    struct flock lock = LockOf(F_WRLCK, range, RangeSize);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void Unlock(int descriptor) {
    struct flock lock = LockOf(F_UNLCK, LocksStart, 0);
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool OtherProcessesAgree(int descriptor, const ShareUse& use) {
    for (std::size_t i = 0; i < std::size(Kinds); ++i) {
        if ((use.uses & Kinds[i]) != 0) {
            LockByte(descriptor, UseRange(i));
        }
        if ((use.allows & Kinds[i]) == 0) {
            LockByte(descriptor, DenyRange(i));
        }
    }
    for (std::size_t i = 0; i < std::size(Kinds); ++i) {
        if ((((use.uses | use.atFirst) & Kinds[i]) != 0 && OthersHoldAny(descriptor, DenyRange(i))) ||
            ((use.allows & Kinds[i]) == 0 && OthersHoldAny(descriptor, UseRange(i)))) {
            return false;
        }
    }
    return true;
}

} // namespace

ShareClaim::Table& ShareClaim::Entries() {
    static auto* const table = new Table;
    return *table;
}

ShareClaim::~ShareClaim() {
    if (entered) {
        const ShareTableLock lock;
        Entries().erase(entry);
    }
}

bool ShareClaim::Enter(int descriptor, const FileKey& key, const ShareUse& use) {
    if ((use.uses | use.atFirst) == 0) {
        return true;
    }
    const ShareTableLock lock;
    Table& table = Entries();
    const bool disagrees = std::any_of(table.begin(), table.end(),
                                       [&](const Entry& other) { return other.key == key && !Agree(other.use, use); });
    if (disagrees || !OtherProcessesAgree(descriptor, use)) {
        Unlock(descriptor); // before another thread takes these locks for those of an open file
        return Fail(ErrorSharingViolation);
    }
    if (use.uses == 0) {
        Unlock(descriptor);
        return true;
    }
    table.push_front({key, use});
    entry = table.begin();
    entered = true;
    return true;
}

ShareTableLock::ShareTableLock() : guard(TableLock()) {}

bool ShareTableLock::IsOpen(const FileKey& key) const {
    const auto& table = ShareClaim::Entries();
    return std::any_of(table.begin(), table.end(), [&](const auto& entry) { return entry.key == key; });
}

bool ShareTableLock::AllowsDelete(const FileKey& key) const {
    const auto& table = ShareClaim::Entries();
    return std::none_of(table.begin(), table.end(), [&](const auto& entry) {
        return entry.key == key && (entry.use.allows & FileShareDelete) == 0;
    });
}

bool OthersAllowDelete(int folder, const char* name) {
    Descriptor file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return !file || !OthersHoldAny(file.Get(), DenyRange(2));
}

} // namespace Platform
