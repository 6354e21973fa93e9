#include "platform/linux/files/sharetable.h"

#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include <algorithm>
#include <fcntl.h>
#include <utility>

namespace Platform {

namespace {

std::mutex& TableLock() {
    static auto* const lock = new std::mutex; // handles may be closed by static destructors
    return *lock;
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
    Table added{{key, use}}; // takes the memory now, before other processes are told
    return AskUntilDecided([&] { return Ask(descriptor, added); }) || Fail(ErrorSharingViolation);
}

Agreement ShareClaim::Ask(int descriptor, Table& added) {
    const Entry& asked = added.front();
    const ShareTableLock lock;
    Table& table = Entries();
    const bool disagrees = std::any_of(table.begin(), table.end(), [&](const Entry& present) {
        return present.key == asked.key && !Agree(present.use, asked.use);
    });
    if (disagrees) {
        return Agreement::Refused;
    }
    const Agreement agreement = AnnounceUse(descriptor, asked.use);
    if (agreement != Agreement::Agreed) {
        return agreement;
    }
    ConfirmUse(descriptor, asked.use);
    if (asked.use.uses != 0) {
        table.splice(table.begin(), added);
        entry = table.begin();
        entered = true;
    }
    return Agreement::Agreed;
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

bool ShareTableLock::OthersAllowDelete(int folder, const char* name) {
    SetLastError(ErrorSharingViolation);
    return AskUntilDecided([&] { return AnnounceDeletion(folder, name); });
}

Agreement ShareTableLock::AnnounceDeletion(int folder, const char* name) {
    // One deletion at a time: another one would let a new file take the name before this one is done.
    constexpr ShareUse deletion{FileShareDelete, FileShareRead | FileShareWrite};
    Descriptor file(
        Retry([&] { return openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat opened {};
    if (!file && errno == ENOENT) {
        SetLastError(ErrorFileNotFound); // a file that gets the name now must not be deleted
        return Agreement::Refused;
    }
    if (!file || fstat(file.Get(), &opened) != 0) {
        return Agreement::Agreed; // a file that cannot be opened has no locks to look at
    }
    const auto isOpened = [&opened](const Deletion& other) {
        return other.key == FileKey(opened);
    };
    if (std::any_of(announced.begin(), announced.end(), isOpened)) {
        return Agreement::Agreed;
    }
    const Agreement agreement = AnnounceUse(file.Get(), deletion);
    if (agreement != Agreement::Agreed) {
        return agreement;
    }
    struct stat named {};
    if (fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) != 0 || FileKey(named) != FileKey(opened)) {
        return Agreement::Undecided;
    }
    announced.push_front({FileKey(opened), std::move(file)});
    return Agreement::Agreed;
}

} // namespace Platform
