#include "mailsystem/MailFailure.h"

#include "mailsystem/HeaderText.h"
#include "mapi/MapiRecords.h"
#include "mapi/SimpleMapi.h"
#include <cerrno>
#include <glib.h>
#include <new>

namespace MailSystem {

namespace {

constexpr auto ResultAccessDenied = static_cast<std::int32_t>(0x80070005);  // E_ACCESSDENIED
constexpr auto ResultNotEnoughDisk = static_cast<std::int32_t>(0x8004010D); // MAPI_E_NOT_ENOUGH_DISK

constexpr FailureCode DiskFull = {Mapi::ErrorDiskFull, ResultNotEnoughDisk};
constexpr FailureCode NoMemory = {Mapi::ErrorInsufficientMemory, Mapi::ResultOutOfMemory};
constexpr FailureCode NoAccess = {Mapi::ErrorFailure, ResultAccessDenied};
constexpr FailureCode Failed = {Mapi::ErrorFailure, Mapi::ResultFail};
constexpr FailureCode NotFound = {Mapi::ErrorAttachmentNotFound, Mapi::ResultFail};
constexpr FailureCode NotOpened = {Mapi::ErrorAttachmentOpenFailure, Mapi::ResultFail};

std::string Line(const char* action, const std::string& path, int error) {
    return std::string(action) + " " + OneLine(path) + ": " + g_strerror(error);
}

const FailureCode& StorageCode(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return DiskFull;
    case ENOMEM:
        return NoMemory;
    case EACCES:
    case EPERM:
    case EROFS:
        return NoAccess;
    default:
        return Failed;
    }
}

const FailureCode& AttachmentCode(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
        return NotFound;
    case ENOMEM:
        return NoMemory;
    default:
        return NotOpened;
    }
}

bool IsMemoryFailure(const std::exception& failure) {
    return dynamic_cast<const std::bad_alloc*>(&failure) != nullptr;
}

} // namespace

MailFailure StorageFailure(const char* action, const std::string& path, int error) {
    return {StorageCode(error), Line(action, path, error)};
}

MailFailure AttachmentFailure(const std::string& path, int error) {
    return {AttachmentCode(error), Line("cannot attach", path, error)};
}

MailFailure OtherFailure(const std::string& text) {
    return {Failed, text};
}

const FailureCode& CodeOf(const std::exception& failure) {
    if (const auto* const own = dynamic_cast<const MailFailure*>(&failure)) {
        return own->Code();
    }
    return IsMemoryFailure(failure) ? NoMemory : Failed;
}

const char* ReasonOf(const std::exception& failure) {
    return IsMemoryFailure(failure) ? "out of memory" : failure.what();
}

} // namespace MailSystem
