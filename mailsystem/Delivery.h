// Saving a draft and opening it in the user's mail client, for the Simple and the Extended side.
#pragma once

#include "mailsystem/Draft.h"

namespace MailSystem {

enum class EShow { InClient, Nowhere };

/// Saves the draft, says on standard error where, and opens it in the user's mail client. Raises MailFailure and
/// std::bad_alloc, and has left nothing then. Once the draft is there nothing is raised, whatever becomes of the
/// client.
void Deliver(const Draft& draft, EShow show);

} // namespace MailSystem
