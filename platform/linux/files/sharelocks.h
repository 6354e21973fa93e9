// Share modes between processes: advisory locks by open file description, each on one byte far behind any content. How
// far they reach is told in sharetable.h.
//
// What a handle uses and allows, its share use, has a range of bytes in each of two areas. A handle that comes locks a
// byte of its range in the area "coming" and looks there at the ranges of all uses that disagree with its own:
//
//   nobody is there                     it may open: of two that come at once at least one sees the other
//   somebody, who also is in "open"     refused
//   somebody who is only coming         not decided: that handle may be refused too, or be gone in a moment
//
// A handle that may open locks a byte in "open" too, and keeps both until the descriptor is closed.
//
// A lock that begins below these areas is another program's and counts for nothing. Where it covers the areas too, it
// can hide ours: the handles of other processes are then not seen.
#pragma once

#include <cstdint>

namespace Platform {

/// What a handle does and allows, as FileShare bits: Read, Write, Delete.
struct ShareUse {
    std::uint32_t uses = 0;
    std::uint32_t allows = 0;
    std::uint32_t atFirst = 0; // uses while it is opened and not later
};

/// Whether two handles to one file may be open together.
bool Agree(const ShareUse& present, const ShareUse& added);

enum class Agreement { Agreed, Refused, Undecided };

/// Tells other processes of a use that is coming. Unless it is agreed to, nothing of it remains. The caller sees to it
/// that one thread of the process asks at a time, and opened the descriptor for what is used (to read, for a deletion).
Agreement AnnounceUse(int descriptor, const ShareUse& use);

/// Makes the announced use one of an open handle.
void ConfirmUse(int descriptor, const ShareUse& use);

/// Waits a moment, longer after more attempts.
void PauseAfterAttempt(int attempt);

/// Puts a question until it is decided; whether it was agreed to. A handle that is still only coming after about half
/// a second counts as open.
template <class TAsk>
bool AskUntilDecided(TAsk ask) {
    constexpr int attempts = 200;
    Agreement agreement = ask();
    for (int attempt = 1; agreement == Agreement::Undecided && attempt < attempts; ++attempt) {
        PauseAfterAttempt(attempt);
        agreement = ask();
    }
    return agreement == Agreement::Agreed;
}

} // namespace Platform
