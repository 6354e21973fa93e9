// What each mail client wants on its command line to begin a message. Nothing is looked at or started here, and no text
// of the user can become an option: each is encoded, behind "--", joined to an option of ours, or an absolute path.
#pragma once

#include "mailsystem/ClientFiles.h"
#include "mailsystem/Draft.h"
#include "mailsystem/ProgramStart.h"

namespace MailSystem {

/// The words for a draft whose attachments stand in `files`.
///
///   mailto:            mailto:TO?cc=...&subject=...&body=...                  for any client; no attachments
///   with attachments   mailto:TO?...&attach=/a&attach=/b                      Evolution, Geary
///   with files         --compose mailto:TO?... --attach /a /b                 Claws Mail, Sylpheed
///   as options         --composer --subject=... --body=... --attach=/a -- TO  KMail; a body that is too long for a
///                                                                             word comes as --msg=FILE
CommandWords MailtoWords(const Draft& draft, ClientFiles& files);
CommandWords MailtoWithAttachments(const Draft& draft, ClientFiles& files);
CommandWords ComposeWithFiles(const Draft& draft, ClientFiles& files);
CommandWords ComposerOptions(const Draft& draft, ClientFiles& files);

} // namespace MailSystem
