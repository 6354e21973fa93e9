#include "platform/linux/files/fileinfo.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>

namespace Platform {

namespace {

constexpr const char* AttributesName = "user.tessarix.attributes";
constexpr const char* CreatedName = "user.tessarix.created";
constexpr const char* WritersName = "user.tessarix.writers";

constexpr std::int64_t SecondsTo1970 = 11644473600; // from 1601
constexpr std::int64_t CountsInSecond = 10'000'000;
constexpr std::int64_t NanosecondsInCount = 100;

constexpr std::uint32_t NamedBits = FileAttributeHidden | FileAttributeSystem;
constexpr std::uint32_t KeptBits = NamedBits | FileAttributeArchive | FileAttributeTemporary;

// A name of an open file that also serves descriptors for questions alone, which take no extended attributes.
std::string NameOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

// What is kept beside a file, each only where somebody set it.
struct KeptValues {
    std::optional<std::uint32_t> bits;
    std::optional<std::int64_t> created;
};

template <class TNumber>
std::optional<TNumber> ReadNumber(decltype(&getxattr) get, const std::string& path, const char* attribute,
                                  std::string_view prefix, int base) {
    char buffer[32];
    const ssize_t size = get(path.c_str(), attribute, buffer, sizeof(buffer));
    std::string_view text(buffer, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (!text.starts_with(prefix)) {
        return std::nullopt;
    }
    text.remove_prefix(prefix.size());
    TNumber value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return result.ec == std::errc() ? std::optional(value) : std::nullopt;
}

// Which of the values a file may have.
struct ListedValues {
    bool bits;
    bool created;
};

// Most files have none, which one call tells. `list` fills a buffer with names as listxattr does.
template <class TList>
ListedValues ListKept(TList list) {
    char names[1024];
    const ssize_t size = list(names, sizeof(names));
    const bool isLong = size < 0 && errno == ERANGE;
    const std::string_view all(names, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const auto has = [&](const char* name) {
        return isLong || all.find(name) != std::string_view::npos;
    };
    return {has(AttributesName), has(CreatedName)};
}

KeptValues ReadListed(ListedValues listed, decltype(&getxattr) get, const std::string& path) {
    KeptValues kept;
    if (listed.bits) {
        kept.bits = ReadNumber<std::uint32_t>(get, path, AttributesName, "0x", 16);
    }
    if (listed.created) {
        kept.created = ReadNumber<std::int64_t>(get, path, CreatedName, "", 10);
        if (kept.created.value_or(0) < 0) { // anyone who may write the file can put there what is no time
            kept.created.reset();
        }
    }
    return kept;
}

KeptValues ReadKept(int descriptor) {
    const std::string path = NameOf(descriptor);
    const auto list = [&](char* names, std::size_t size) {
        return listxattr(path.c_str(), names, size);
    };
    return ReadListed(ListKept(list), &getxattr, path);
}

// As llistxattr of the entry's path through /proc, which takes more than twice as long as the system's own call for an
// entry. Linux has that from 6.13 on; a filter that knows no such call refuses it with EPERM.
ssize_t ListEntryAttributes(int folder, const std::string& name, char* names, std::size_t size) {
    constexpr long listxattrat = 465; // which the C library does not name yet
    static std::atomic<bool> isKnown{true};
    if (isKnown.load(std::memory_order_relaxed)) {
        const ssize_t listed = syscall(listxattrat, folder, name.c_str(), AT_SYMLINK_NOFOLLOW, names, size);
        if (listed >= 0 || (errno != ENOSYS && errno != EPERM)) {
            return listed;
        }
        isKnown.store(false, std::memory_order_relaxed);
    }
    return llistxattr((NameOf(folder) + "/" + name).c_str(), names, size);
}

// Of the entry itself where it is a link.
KeptValues ReadKept(int folder, const std::string& name) {
    const ListedValues listed =
        ListKept([&](char* names, std::size_t size) { return ListEntryAttributes(folder, name, names, size); });
    const bool any = listed.bits || listed.created;
    return any ? ReadListed(listed, &lgetxattr, NameOf(folder) + "/" + name) : KeptValues{};
}

bool Keep(int descriptor, const char* attribute, const std::string& text) {
    return setxattr(NameOf(descriptor).c_str(), attribute, text.data(), text.size(), 0) == 0;
}

bool IsFolder(mode_t mode) {
    return S_ISDIR(mode);
}

// What a file has that nobody touched.
std::uint32_t BitsByName(mode_t mode, const std::string& name) {
    const bool dotted = name.starts_with('.') && name != "." && name != "..";
    return (S_ISREG(mode) || S_ISLNK(mode) ? FileAttributeArchive : 0) | (dotted ? FileAttributeHidden : 0);
}

std::uint32_t BitsThatCount(mode_t mode) {
    return IsFolder(mode) ? KeptBits | FileAttributeReadOnly : KeptBits;
}

std::uint32_t AttributesOf(const KeptValues& kept, mode_t mode, const std::string& name) {
    std::uint32_t bits = kept.bits.value_or(BitsByName(mode, name)) & BitsThatCount(mode);
    if (IsFolder(mode)) {
        bits |= FileAttributeDirectory;
    } else if ((mode & S_IWUSR) == 0 && !S_ISLNK(mode)) {
        bits |= FileAttributeReadOnly;
    }
    return bits == 0 ? FileAttributeNormal : bits;
}

std::int64_t FileTimeOf(const statx_timestamp& time) {
    return Platform::FileTimeOf(time.tv_sec, time.tv_nsec);
}

constexpr unsigned StatusMask = STATX_BASIC_STATS | STATX_BTIME;

void Fill(FileAttributeData& data, const struct statx& status, const KeptValues& kept, const std::string& name) {
    data.attributes = AttributesOf(kept, status.stx_mode, name);
    data.lastAccessTime = FileTimeOf(status.stx_atime);
    data.lastWriteTime = FileTimeOf(status.stx_mtime);
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    data.creationTime = kept.created.value_or(hasBirth ? FileTimeOf(status.stx_btime) : data.lastWriteTime);
    data.size = IsFolder(status.stx_mode) ? 0 : static_cast<std::int64_t>(status.stx_size);
}

std::string HexText(std::uint32_t value) {
    char text[16] = "0x";
    const auto result = std::to_chars(text + 2, std::end(text), value, 16);
    return {text, result.ptr};
}

// The permissions are set last when they forbid the rest, and first when they allow it.
class ModeChange {
public:
    ModeChange(int openDescriptor, mode_t mode, std::uint32_t attributes)
        : descriptor(openDescriptor), before(mode & 07777), present(before), wanted(before) {
        const bool readOnly = (attributes & FileAttributeReadOnly) != 0;
        if (IsFolder(mode)) {
            return;
        }
        if (readOnly) {
            wanted = before & ~AnyWriter;
        } else if ((before & S_IWUSR) == 0) {
            wanted = before | S_IWUSR | KeptWriters();
        }
    }
    bool Open() { return (present & S_IWUSR) != 0 || Set(present | S_IWUSR); }
    bool Finish() {
        if ((before & AnyWriter & ~wanted) != 0) {
            // Without a place for them the owner alone gets the permission back.
            static_cast<void>(Keep(descriptor, WritersName, HexText(before & AnyWriter)));
        }
        return present == wanted || Set(wanted);
    }

private:
    static constexpr mode_t AnyWriter = S_IWUSR | S_IWGRP | S_IWOTH;

    // Nobody is let write who may not read, whatever stands there.
    mode_t KeptWriters() const {
        const mode_t readers = before & (S_IRUSR | S_IRGRP | S_IROTH);
        return ReadNumber<mode_t>(&getxattr, NameOf(descriptor), WritersName, "0x", 16).value_or(0) & (readers >> 1);
    }

    bool Set(mode_t mode) {
        const bool done = chmod(NameOf(descriptor).c_str(), mode) == 0;
        present = done ? mode : present;
        return done;
    }

    int descriptor;
    mode_t before;
    mode_t present;
    mode_t wanted;
};

// The error, 0 if none.
std::uint32_t KeepBits(int descriptor, ModeChange& change, std::uint32_t present, std::uint32_t wanted) {
    if (change.Open() && Keep(descriptor, AttributesName, HexText(wanted))) {
        return 0;
    }
    if (errno != ENOTSUP) {
        return WindowsErrorCode(errno);
    }
    return ((wanted ^ present) & NamedBits) != 0 ? ErrorNotSupported : 0;
}

} // namespace

std::int64_t FileTimeOf(std::int64_t seconds, std::int64_t nanoseconds) {
    if (seconds < -SecondsTo1970) {
        return 0;
    }
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max() / CountsInSecond - 1;
    const std::int64_t since1601 = std::min(seconds, last - SecondsTo1970) + SecondsTo1970;
    return since1601 * CountsInSecond + nanoseconds / NanosecondsInCount;
}

timespec NativeTimeOf(std::int64_t fileTime) {
    timespec time{};
    time.tv_sec = fileTime / CountsInSecond - SecondsTo1970;
    time.tv_nsec = fileTime % CountsInSecond * NanosecondsInCount;
    return time;
}

bool ReadFileInfo(int descriptor, const std::string& name, FileAttributeData& data) {
    struct statx status {};
    if (statx(descriptor, "", AT_EMPTY_PATH, StatusMask, &status) != 0) {
        return false;
    }
    Fill(data, status, ReadKept(descriptor), name);
    return true;
}

bool ReadEntryInfo(int folder, const std::string& name, FileAttributeData& data) {
    struct statx status {};
    if (statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, StatusMask, &status) != 0) {
        return false;
    }
    if (!S_ISLNK(status.stx_mode)) {
        Fill(data, status, ReadKept(folder, name), name);
        return true;
    }
    // A link tells of what it leads to, or of itself where that is nothing.
    Descriptor entry(openat(folder, name.c_str(), O_PATH | O_CLOEXEC));
    if (!entry) {
        entry = Descriptor(openat(folder, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    }
    if (!entry || !ReadFileInfo(entry.Get(), name, data)) {
        return false;
    }
    data.attributes = (data.attributes & ~FileAttributeReadOnly) | FileAttributeReparsePoint;
    return true;
}

std::uint32_t StoredAttributes(int descriptor) {
    return ReadKept(descriptor).bits.value_or(0);
}

bool StoreAttributes(int descriptor, const std::string& name, std::uint32_t attributes) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return FailFromErrno();
    }
    const std::uint32_t byName = BitsByName(status.st_mode, name);
    const std::uint32_t wanted = attributes & BitsThatCount(status.st_mode);
    const std::uint32_t present = ReadKept(descriptor).bits.value_or(byName);
    ModeChange change(descriptor, status.st_mode, attributes);
    const std::uint32_t error = wanted != present ? KeepBits(descriptor, change, present, wanted) : 0;
    if (error != 0) {
        static_cast<void>(change.Finish());
        return Fail(error);
    }
    return change.Finish() || FailFromErrno();
}

void StoreCreationTime(int descriptor, std::int64_t fileTime) {
    static_cast<void>(Keep(descriptor, CreatedName, std::to_string(fileTime)));
}

} // namespace Platform
