#include "tests/support/standardoutput.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pty.h>
#include <sys/mman.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

struct CStandardOutput::CState {
    std::array<int, 2> ends{-1, -1};                      // what is written to the second is read from the first
    int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10); // the output as it was

    CState(EOutput kind, std::string_view content) {
        std::fflush(nullptr);
        if (kind == EOutput::File) {
            ends[1] = memfd_create("output", MFD_CLOEXEC);
            ends[0] = fcntl(ends[1], F_DUPFD_CLOEXEC, 0);
            Require(write(ends[1], content.data(), content.size()) == static_cast<ssize_t>(content.size()));
        } else if (kind == EOutput::Pipe || kind == EOutput::BrokenPipe) {
            Require(pipe2(ends.data(), O_CLOEXEC) == 0);
            close(kind == EOutput::BrokenPipe ? std::exchange(ends[0], -1) : -1);
        } else if (kind == EOutput::Terminal) { // without its own repair of line ends: what is read is what was written
            termios mode{};
            Require(openpty(ends.data(), &ends[1], nullptr, nullptr, nullptr) == 0 && tcgetattr(ends[1], &mode) == 0);
            cfmakeraw(&mode);
            tcsetattr(ends[1], TCSANOW, &mode);
        } else if (kind == EOutput::NullDevice) {
            ends[1] = open("/dev/null", O_WRONLY | O_CLOEXEC);
        }
        close(STDOUT_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[1]);
    }
    ~CState() {
        PutBack();
        close(ends[0]);
    }
    CState(const CState&) = delete;
    CState& operator=(const CState&) = delete;

    void PutBack() {
        if (kept >= 0) {
            dup2(kept, STDOUT_FILENO);
            close(std::exchange(kept, -1));
        }
    }
    std::string Read() {
        PutBack();
        lseek(ends[0], 0, SEEK_SET);
        std::string all;
        std::array<char, 4096> piece{};
        // A terminal whose other end is closed ends in an error.
        for (ssize_t count = 0; (count = read(ends[0], piece.data(), piece.size())) > 0;) {
            all.append(piece.data(), static_cast<std::size_t>(count));
        }
        return all;
    }
};

const bool CStandardOutput::HasTerminals = true;

CStandardOutput::CStandardOutput(EOutput kind, std::string_view content) : state(new CState(kind, content)) {}

CStandardOutput::~CStandardOutput() = default;

std::string CStandardOutput::Finish() {
    return std::unique_ptr<CState>(std::move(state))->Read();
}
