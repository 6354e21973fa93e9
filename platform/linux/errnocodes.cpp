#include "platform/linux/errnocodes.h"

#include "platform/inc/lasterror.h"
#include <cerrno>

namespace Platform {

namespace {

struct Row {
    int errnoValue;
    std::uint32_t code;
};

constexpr Row Rows[] = {
    {EACCES, ErrorAccessDenied},
    {EPERM, ErrorAccessDenied},
    {EISDIR, ErrorAccessDenied}, // opening a folder as a file is refused as an access
    {ETXTBSY, ErrorSharingViolation},
    {EBUSY, ErrorSharingViolation},
    {ENOENT, ErrorFileNotFound},
    {ENOTDIR, ErrorPathNotFound},
    {ELOOP, ErrorPathNotFound},
    {EEXIST, ErrorAlreadyExists},
    {ENOTEMPTY, ErrorDirectoryNotEmpty},
    {EXDEV, ErrorNotSameDevice},
    {ENOTSUP, ErrorNotSupported},
    {EFAULT, ErrorNoAccess},
    {EMFILE, ErrorTooManyOpenFiles},
    {ENFILE, ErrorTooManyOpenFiles},
    {ENOMEM, ErrorNotEnoughMemory},
    {ENOSPC, ErrorDiskFull},
    {EDQUOT, ErrorDiskFull},
    {EFBIG, ErrorDiskFull},
    {EROFS, ErrorWriteProtect},
    {ENAMETOOLONG, ErrorFilenameExcedRange},
    {EBADF, ErrorInvalidHandle},
    {EINVAL, ErrorInvalidParameter},
    {EPIPE, ErrorBrokenPipe},
    {ESPIPE, ErrorSeekOnDevice},
    {EIO, ErrorIoDevice},
    {EREMOTEIO, ErrorIoDevice},
    {EILSEQ, ErrorInvalidName}, // a file system that refuses the bytes of a name
    {EMLINK, ErrorTooManyLinks},
    {EOVERFLOW, ErrorFileTooLarge},
    {ENOLCK, ErrorLockFailed},
    {EAGAIN, ErrorBusy},
    {ENOSYS, ErrorCallNotImplemented},
    {ENODEV, ErrorBadUnit},
    {ENXIO, ErrorBadUnit},
    {ENOMEDIUM, ErrorNotReady},
    {EUCLEAN, ErrorFileCorrupt},
    {EBADMSG, ErrorFileCorrupt}, // a checksum of the file system that doesn't hold
    {ESTALE, ErrorFileInvalid},  // a file of a server that has been replaced there
    {ENOTCONN, ErrorNotConnected},
    {ECONNREFUSED, ErrorConnectionRefused},
    {ECONNRESET, ErrorNetnameDeleted},
    {ECONNABORTED, ErrorNetnameDeleted},
    {ETIMEDOUT, ErrorTimeout},
    {ENETDOWN, ErrorNetworkUnreachable},
    {ENETUNREACH, ErrorNetworkUnreachable},
    {EHOSTUNREACH, ErrorHostUnreachable},
    {EHOSTDOWN, ErrorHostDown},
};

} // namespace

std::uint32_t WindowsErrorCode(int errnoValue) {
    for (const Row& row : Rows) {
        if (row.errnoValue == errnoValue) {
            return row.code;
        }
    }
    return ErrorGeneralFailure;
}

} // namespace Platform
