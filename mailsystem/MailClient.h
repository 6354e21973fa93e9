// The user's mail client: which one it is, and how it comes to show a draft.
#pragma once

#include "mailsystem/Draft.h"

namespace MailSystem {

/// Opens the draft, which is at `draftPath`, in the user's mail client, and doesn't wait for that. What
/// CORVANE_MAIL_CLIENT says decides:
///
///   unset, empty          the default that the desktop has for mailto: addresses
///   draft                 nothing is opened
///   a family's name       an installed client of that family (ClientFamilies)
///   a desktop entry's id  that one
///
/// Says on standard error why nothing could be opened, and what to do then. A desktop that doesn't answer costs five
/// seconds. The attachments' files must be there until this returns.
void OpenInMailClient(const Draft& draft, const std::string& draftPath) noexcept;

} // namespace MailSystem
