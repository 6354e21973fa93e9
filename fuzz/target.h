// What all targets share: the entries of the fuzzer (target.cpp), which hand each input to the target's RunInput.
#pragma once

#include "foundation/inc/errors.h"
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// One input: each target has its own. Failures are thrown; what it raises ends the input and nothing else, but for an
/// internal error, which ends the run.
void RunInput(const std::string& bytes);

/// What must hold whatever the input is.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}
