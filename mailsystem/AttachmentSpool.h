// Where attachments wait that have no file of their own: those that arrive as bytes, and pipes and devices. On the disk
// and not in memory, for the caller holds the bytes already.
#pragma once

#include "mailsystem/AttachmentFile.h"
#include <string_view>

namespace MailSystem {

/// The files of one message, in a hidden folder among the drafts, which goes with the object. For one thread at a time.
class AttachmentSpool {
public:
    AttachmentSpool() = default;
    ~AttachmentSpool();
    AttachmentSpool(const AttachmentSpool&) = delete;
    AttachmentSpool& operator=(const AttachmentSpool&) = delete;

    /// Puts the bytes into a file of their own; its path. Raises MailFailure, and leaves no such file then.
    std::string Keep(std::string_view bytes);

    /// Reads what has no length to its end; the path of the file that has it now. A regular file or a folder stays what
    /// it is. Raises MailFailure, also for an endless one (Platform::LargestWithoutLength).
    std::string KeepIfWithoutLength(const std::string& path);

private:
    std::string folder; // empty until there is one
    unsigned count = 0;

    template <class TWrite>
    std::string NewFile(TWrite write);
};

} // namespace MailSystem
