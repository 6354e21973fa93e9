// Why a draft could not be made: the published code, and one line for the user.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace MailSystem {

class MailFailure : public std::runtime_error {
public:
    MailFailure(std::uint32_t publishedCode, const std::string& text) : std::runtime_error(text), code(publishedCode) {}

    std::uint32_t Code() const { return code; }

private:
    std::uint32_t code;
};

/// The failure for an errno value, with the text "ACTION PATH: REASON".
///
///   no space, quota or file size left    ErrorDiskFull
///   no memory                            ErrorInsufficientMemory
///   anything else                        ErrorFailure
MailFailure StorageFailure(const char* action, const std::string& path, int error);

/// The same for a file that was to be attached.
///
///   no such file, folder or name         ErrorAttachmentNotFound
///   no memory                            ErrorInsufficientMemory
///   anything else                        ErrorAttachmentOpenFailure
MailFailure AttachmentFailure(const std::string& path, int error);

} // namespace MailSystem
