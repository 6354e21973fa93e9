// What all targets share: failures are thrown, and what is raised ends an input and nothing else.
#pragma once

#include "foundation/inc/errors.h"
#include "foundation/inc/threadobject.h"
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// One target is linked into each program.
void RunInput(const std::string& bytes);

/// What must hold whatever the input is.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Tsx::ThreadErrorMode.Get()->NoExceptions = false;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        RunInput({data, data + size});
    } catch (Tsx::CInternalError*) {
        std::abort(); // data from outside never break an assumption
    } catch (Tsx::CException* exception) {
        delete exception;
    }
    return 0;
}
