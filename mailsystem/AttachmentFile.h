// What a message carries, a file or bytes: looked at when the message is made, read when it is written. A file is open
// only while it is read, for a message may carry more files than a process may have open.
#pragma once

#include "mailsystem/Owners.h"
#include <memory>
#include <span>
#include <string>

namespace MailSystem {

struct Attachment {
    std::string path;                         // native; of no meaning with bytes
    std::string name;                         // as the reader sees it; when empty, the last component of the path
    std::shared_ptr<const std::string> bytes; // null for a file

    /// The name that the reader sees: without folders, in one line of valid UTF-8.
    std::string ShownName() const;
};

/// Gives an attachment that is a pipe or a device the bytes of it: read to the end, and once in the life of the
/// process, however many messages carry it. Anything else stays as it is. Raises MailFailure, also for an endless
/// one (Platform::LargestWithoutLength).
void ReadWhatHasNoLength(Attachment& attachment);

/// An attachment that is being read.
class AttachmentReader {
public:
    AttachmentReader(const Attachment& source, Descriptor openFile) : attachment(source), file(std::move(openFile)) {}

    /// Fills `buffer` unless the content ends before; the number of bytes. Raises MailFailure.
    std::size_t Read(std::span<unsigned char> buffer);

private:
    const Attachment& attachment;
    Descriptor file;
    std::size_t position = 0; // in the bytes
};

class AttachmentFile {
public:
    /// Raises MailFailure for what is missing, cannot be read or is neither bytes nor a regular file.
    explicit AttachmentFile(Attachment source);

    std::string Name() const { return attachment.ShownName(); }

    /// The media type, from the name and the first bytes. What it knows no better, and every type whose content may not
    /// be in base64, is "application/octet-stream".
    const std::string& MediaType() const { return mediaType; }

    /// The content from its start; lives no longer than this object. Raises MailFailure, as the constructor does.
    AttachmentReader Open() const;

private:
    Attachment attachment;
    std::string mediaType;
};

} // namespace MailSystem
