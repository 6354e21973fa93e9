// Why a draft could not be made: the published codes of both sides, and one line for the user.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace MailSystem {

/// One kind of failure, as each side's callers know it.
struct FailureCode {
    std::uint32_t simple;  // MAPISendMail returns it
    std::int32_t extended; // a method returns it
};

class MailFailure : public std::runtime_error {
public:
    MailFailure(const FailureCode& published, const std::string& text) : std::runtime_error(text), code(published) {}

    const FailureCode& Code() const { return code; }

private:
    FailureCode code;
};

/// The failure for an errno value, with the text "ACTION PATH: REASON".
///
///   no space, quota or file size left    MAPI_E_DISK_FULL            MAPI_E_NOT_ENOUGH_DISK
///   no memory                            MAPI_E_INSUFFICIENT_MEMORY  E_OUTOFMEMORY
///   no permission                        MAPI_E_FAILURE              E_ACCESSDENIED
///   anything else                        MAPI_E_FAILURE              E_FAIL
MailFailure StorageFailure(const char* action, const std::string& path, int error);

/// The same for a file that was to be attached. The Extended side is handed bytes and never comes here.
///
///   no such file, folder or name         MAPI_E_ATTACHMENT_NOT_FOUND
///   no memory                            MAPI_E_INSUFFICIENT_MEMORY
///   anything else                        MAPI_E_ATTACHMENT_OPEN_FAILURE
MailFailure AttachmentFailure(const std::string& path, int error);

/// A failure of neither kind, with its whole text: MAPI_E_FAILURE, E_FAIL.
MailFailure OtherFailure(const std::string& text);

/// The code and the line of whatever is thrown while a draft is made; exhausted memory comes as std::bad_alloc.
const FailureCode& CodeOf(const std::exception& failure);
const char* ReasonOf(const std::exception& failure);

} // namespace MailSystem
