// What each mail client wants on its command line to begin a message. Text alone: nothing is looked at or started.
#pragma once

#include "mailsystem/Draft.h"
#include "mailsystem/ProgramStart.h"

namespace MailSystem {

/// A draft's attachments as files, by absolute native paths.
using AttachedFiles = std::vector<std::string>;

/// Each gives the words of a command, empty when the client's syntax cannot carry a text of the draft.
///
///   Thunderbird    thunderbird -compose to='...',subject='...',body='...',attachment='file:///a,file:///b'
///   Claws          claws-mail --compose mailto:...?subject=...&body=... --attach /a /b
///   Evolution      evolution mailto:...?subject=...&body=...&attach=/a&attach=/b
CommandWords ThunderbirdWords(const Draft& draft, const AttachedFiles& files);
CommandWords ClawsWords(const Draft& draft, const AttachedFiles& files);
CommandWords EvolutionWords(const Draft& draft, const AttachedFiles& files);

} // namespace MailSystem
