// The way of a draft, whichever side it came from: to its place on the disk, and before the user's eyes.
#pragma once

#include "mailsystem/Draft.h"

namespace MailSystem {

enum class EShow { InClient, Nowhere };

/// Saves the draft, says on standard error where, and opens it in the user's mail client. Raises MailFailure and
/// std::bad_alloc, and has left nothing then. Once the draft is there nothing is raised, whatever becomes of the
/// client.
void Deliver(const Draft& draft, EShow show);

} // namespace MailSystem
