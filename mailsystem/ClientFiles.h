// Files that a mail client reads by their paths: those that a draft holds inside, put down beside it. Clients read them
// when the message is sent at the latest, so that they stay for thirty days (RemoveOldCopies).
#pragma once

#include "mailsystem/AttachmentFile.h"
#include <string_view>
#include <vector>

namespace MailSystem {

/// The files for one draft, in the folder DRAFT.files; gone with the object unless they are kept.
class ClientFiles {
public:
    explicit ClientFiles(const std::string& draftPath);
    ~ClientFiles();
    ClientFiles(const ClientFiles&) = delete;
    ClientFiles& operator=(const ClientFiles&) = delete;

    /// Adds an attachment under the name that the reader is to see, in a folder of its own, so that two of one name
    /// stay apart: a hard link where the file system has them, else a copy. Raises MailFailure.
    void Add(const Attachment& attachment);
    /// The paths of the attachments, in the order of their addition.
    const std::vector<std::string>& Attachments() const { return attachments; }

    /// Puts a text down as a file of that name; its path. Raises MailFailure.
    std::string AddText(const char* name, std::string_view text);

    /// A client has been told of the files: they stay.
    void Keep() { kept = true; }

private:
    std::string folder;
    std::vector<std::string> attachments;
    bool kept = false;
};

/// Makes `path` another name of the file `source`, or a copy of it where that cannot be. Raises MailFailure, and leaves
/// nothing at `path` then.
void LinkOrCopy(const std::string& source, const std::string& path);

} // namespace MailSystem
