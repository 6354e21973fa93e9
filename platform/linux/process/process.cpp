#include "platform/inc/process.h"

#include "platform/linux/process/commandline.h"
#include <atomic>
#include <cstdlib>
#include <unistd.h>

namespace Platform {

namespace {

int argumentCount = 0;
char** argumentVector = nullptr;

// The C library hands the program's arguments to initialisers too, so that they are known in every program, however it
// starts.
__attribute__((constructor)) void KeepArguments(int count, char** arguments, char**) {
    argumentCount = count;
    argumentVector = arguments;
}

} // namespace

const char16_t* GetCommandLine() {
    // Never destroyed: a static object's end may ask for it.
    static const std::u16string& line = *new std::u16string(JoinArguments(argumentCount, argumentVector));
    return line.c_str();
}

std::uint32_t GetCurrentProcessId() {
    return static_cast<std::uint32_t>(getpid());
}

std::uint32_t SetErrorMode(std::uint32_t mode) {
    // No call of this system shows a box; the word is kept as Windows keeps it.
    static std::atomic<std::uint32_t> current{0};
    return current.exchange(mode);
}

void Abort() {
    std::abort();
}

} // namespace Platform
