// The way of a draft, whichever side it came from: to its place on the disk, and before the user's eyes.
#pragma once

#include "mailsystem/Draft.h"
#include <functional>

namespace MailSystem {

enum class EShow { InClient, Nowhere };

/// Saves what `make` gives and says on standard error where, or why not; `make` may raise. The published code of the
/// Simple side. What becomes of the client doesn't count: the draft is there.
std::uint32_t Deliver(const std::function<Draft()>& make, EShow show);

} // namespace MailSystem
