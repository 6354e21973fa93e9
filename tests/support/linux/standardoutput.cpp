#include "tests/support/standardoutput.h"

#include "platform/linux/files/handles.h"
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

const bool CStandardOutput::HasTerminals = true;

std::pair<Platform::Handle, Platform::Handle> OpenPipe(bool isTerminal) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(isTerminal ? openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) : pipe2(ends, O_CLOEXEC), 0);
    termios mode{};
    if (tcgetattr(ends[1], &mode) == 0) {
        cfmakeraw(&mode);
        tcsetattr(ends[1], TCSANOW, &mode);
    }
    const auto handleOf = [](int end) {
        auto* file = new Platform::FileObject;
        file->descriptor = Platform::Descriptor(end);
        return static_cast<Platform::HandleObject*>(file);
    };
    return {handleOf(ends[0]), handleOf(ends[1])};
}
