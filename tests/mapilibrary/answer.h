// What the recording MAPI library answers, as the environment variable CORVANE_MAPI_ANSWER tells.
#pragma once

#include <cstdint>
#include <optional>

/// The answer to the `call`th delivery, from 1; nothing if the library is to crash. Ends the process with a line on
/// standard error for a word that means nothing.
///
///   unset, "success"          0 to each call
///   "abort"                   1 (MAPI_E_USER_ABORT) to each
///   "26"                      26 to each
///   "crash"                   nothing
///   "2,success"               2 to the first, 0 to all others
std::optional<std::uint32_t> AnswerToCall(int call);

/// Dies of an access to address 0.
void Crash();
