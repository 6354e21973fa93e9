#include "platform/inc/process.h"

#include <csignal>

int main() {
    // A reader of our output that has gone away is a write that fails, as on Windows, and not the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    return ProgramMain();
}
