// A message that a user is still to look at and send, and its form as a file that mail clients open for editing.
#pragma once

#include "mailsystem/AttachmentFile.h"
#include "mailsystem/DraftFolder.h"
#include "mailsystem/Owners.h"
#include <cstdint>
#include <gmime/gmime.h>
#include <string>
#include <vector>

namespace MailSystem {

/// All texts are UTF-8, from anywhere: what does not fit a header field is made fit.
struct Mailbox {
    std::string name;
    std::string address; // when empty, the name stands for it too; when both are, there is no mailbox
};

/// An address of the kind "SMTP:ann@example.org" names its kind before the address proper.
std::string WithoutKind(std::string address);

struct Draft {
    std::string subject;
    std::string body; // with any line ends
    Mailbox from;
    std::vector<Mailbox> to;
    std::vector<Mailbox> cc;
    std::vector<Mailbox> bcc;
    std::vector<Attachment> attachments;

    /// The recipients of a published class. One that is none of these counts as To, where the user sees it.
    std::vector<Mailbox>& ListFor(std::uint32_t recipientClass);
};

class DraftMessage {
public:
    /// Raises MailFailure for the first attachment that cannot be read; the others are not looked at then.
    explicit DraftMessage(const Draft& draft);

    /// Writes the whole message, reading the attachments piece by piece. Raises MailFailure when either end fails.
    void WriteTo(DraftFile& output) const;

private:
    struct FilePart {
        AttachmentFile file;
        ObjectPointer<GMimePart> part; // its fields alone
    };

    ObjectPointer<GMimeMessage> message;
    ObjectPointer<GMimePart> body;
    ObjectPointer<GMimeMultipart> parts; // null without attachments
    std::vector<FilePart> fileParts;

    void AddFields(const Draft& draft);
};

} // namespace MailSystem
