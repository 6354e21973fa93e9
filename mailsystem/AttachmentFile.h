// A file that a message carries: looked at when the message is made, read when it is written. It is open only while it
// is read, for a message may carry more files than a process may have open.
#pragma once

#include "mailsystem/Owners.h"
#include <span>
#include <string>

namespace MailSystem {

class AttachmentFile {
public:
    /// Raises MailFailure for what is missing, cannot be read or is no regular file: a pipe could be read but once,
    /// and a device for ever.
    explicit AttachmentFile(std::string nativePath);

    /// The last component of the path, in valid UTF-8.
    std::string Name() const;

    /// The media type, from the name and the first bytes. What it knows no better, and every type whose content may not
    /// be in base64, is "application/octet-stream".
    const std::string& MediaType() const { return mediaType; }

    /// The file, open for reading from its start. Raises MailFailure, as the constructor does.
    Descriptor Open() const;

    /// Fills `buffer` unless the file ends before; the number of bytes. Raises MailFailure.
    std::size_t Read(const Descriptor& file, std::span<unsigned char> buffer) const;

private:
    std::string path;
    std::string mediaType;
};

} // namespace MailSystem
