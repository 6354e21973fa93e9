#include "mailsystem/MailFailure.h"

#include "mailsystem/HeaderText.h"
#include "mapi/SimpleMapi.h"
#include <cerrno>
#include <glib.h>

namespace MailSystem {

namespace {

std::string Line(const char* action, const std::string& path, int error) {
    return std::string(action) + " " + OneLine(path) + ": " + g_strerror(error);
}

} // namespace

MailFailure StorageFailure(const char* action, const std::string& path, int error) {
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    const std::uint32_t other = error == ENOMEM ? Mapi::ErrorInsufficientMemory : Mapi::ErrorFailure;
    return {full ? Mapi::ErrorDiskFull : other, Line(action, path, error)};
}

MailFailure AttachmentFailure(const std::string& path, int error) {
    const bool missing = error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
    const std::uint32_t other = error == ENOMEM ? Mapi::ErrorInsufficientMemory : Mapi::ErrorAttachmentOpenFailure;
    return {missing ? Mapi::ErrorAttachmentNotFound : other, Line("cannot attach", path, error)};
}

} // namespace MailSystem
