// A file that a message carries: looked at when the draft is made, read when it is written. It is open only while it is
// read, for a message may carry more files than a process may have open.
#pragma once

#include "platform/linux/descriptor.h"
#include <span>
#include <string>

namespace MailSystem {

/// What follows the last slash of a native path.
std::string LastComponent(const std::string& path);

struct Attachment {
    std::string path; // native
    std::string name; // as the reader sees it; when empty, the last component of the path

    /// The name that the reader sees: without folders, in one line of valid UTF-8.
    std::string ShownName() const;
};

/// An attachment that is being read.
class AttachmentReader {
public:
    AttachmentReader(std::string filePath, Platform::Descriptor openFile)
        : path(std::move(filePath)), file(std::move(openFile)) {}

    /// Fills `buffer` unless the content ends before; the number of bytes. Raises MailFailure.
    std::size_t Read(std::span<unsigned char> buffer);
    int Get() const { return file.Get(); }

private:
    std::string path;
    Platform::Descriptor file;
};

class AttachmentFile {
public:
    /// Raises MailFailure for what is missing, cannot be read or is no regular file.
    explicit AttachmentFile(Attachment source);

    std::string Name() const { return attachment.ShownName(); }

    /// The media type, from the name and the first bytes. "application/octet-stream" for what is not known better, for
    /// types whose content may not be in base64, and for every text: a client that sends a draft on may write a text
    /// anew, in another charset or with other line ends (mutt 2.2 does both), and never other bytes.
    const std::string& MediaType() const { return mediaType; }

    /// The content from its start. Raises MailFailure, as the constructor does.
    AttachmentReader Open() const;

private:
    Attachment attachment;
    std::string mediaType;
};

} // namespace MailSystem
