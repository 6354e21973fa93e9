// Other programs: asking one for a line, starting one that outlives this process, and work in a process apart. No shell
// takes part.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace MailSystem {

/// The first word of `words` names the program, looked for in PATH unless it has a folder.
using CommandWords = std::vector<std::string>;

/// The most bytes that one word may have: the kernel's MAX_ARG_STRLEN with the terminator.
constexpr std::size_t LongestWord = 131071;

/// Starts the program in a session of its own: no child of this process, with SIGPIPE at its default and without any
/// open file of ours. Raises std::runtime_error with the reason when it cannot be started at all.
void StartDetached(const CommandWords& words);

/// What the program writes to its standard output, without the white space around; empty when it cannot be started.
/// Waits for its end.
std::string OutputOf(const CommandWords& words);

enum class EWorkEnd { Done, Broken, TimedOut };

/// Does the work in a child process, so that neither its time nor its end is this one's: it is ended, with all that it
/// waits for, when `most` is over. What StartDetached has started goes on. `work` may not raise.
///
///   Done        the work came to its end
///   Broken      the process ended before, or none could be made
///   TimedOut    it was ended
EWorkEnd DoApart(const std::function<void()>& work, std::chrono::milliseconds most) noexcept;

} // namespace MailSystem
