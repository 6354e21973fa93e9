// The user's mail client: which one it is, and how it comes to show a draft.
#pragma once

#include "mailsystem/Draft.h"

namespace MailSystem {

/// Opens the draft, which is at `draftPath`, in the user's mail client, and doesn't wait for it. A client that takes a
/// message on its command line gets it there, its attachments as files beside the draft that stay too. Any other gets
/// the draft itself, if the desktop knows someone for it. Nothing happens when there is no one, nor with the variable
/// CORVANE_MAIL_CLIENT at "draft".
void OpenInMailClient(const Draft& draft, const std::string& draftPath);

} // namespace MailSystem
