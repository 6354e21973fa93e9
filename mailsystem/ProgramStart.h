// Other programs: asking one for a line, and starting one that outlives this process. No shell takes part.
#pragma once

#include <string>
#include <vector>

namespace MailSystem {

/// The first word of `words` names the program, looked for in PATH unless it has a folder.
using CommandWords = std::vector<std::string>;

/// Whether there is such a program in PATH.
bool IsProgramThere(const char* name);

/// Starts the program in a session of its own: no child of this process, with SIGPIPE at its default and without any
/// open file of ours. False when it cannot be started at all, for its words are too long or it is missing.
bool StartDetached(const CommandWords& words);

/// What the program writes to its standard output, without the white space around; empty when it cannot be started. One
/// that takes longer than five seconds is ended: a desktop that doesn't answer is no reason to wait.
std::string OutputOf(const CommandWords& words);

} // namespace MailSystem
