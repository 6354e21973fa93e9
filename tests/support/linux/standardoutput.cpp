#include "tests/support/standardoutput.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

int OpenTemporaryFile() {
    std::string path = std::string(getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp") + "/output-XXXXXX";
    const int file = mkostemp(path.data(), O_CLOEXEC);
    unlink(path.c_str());
    return file;
}

// What is written to the second end is read from the first.
std::array<int, 2> OpenEnds(EOutput kind, std::string_view content) {
    std::array<int, 2> ends{-1, -1};
    switch (kind) {
    case EOutput::File:
        ends[1] = OpenTemporaryFile();
        ends[0] = fcntl(ends[1], F_DUPFD_CLOEXEC, 0);
        Require(write(ends[1], content.data(), content.size()) == static_cast<ssize_t>(content.size()));
        break;
    case EOutput::Pipe:
    case EOutput::BrokenPipe:
        Require(pipe2(ends.data(), O_CLOEXEC) == 0);
        if (kind == EOutput::BrokenPipe) {
            close(std::exchange(ends[0], -1));
        }
        break;
    case EOutput::Terminal: { // without its own repair of line ends, so that what is read is what was written
        ends[0] = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        Require(grantpt(ends[0]) == 0 && unlockpt(ends[0]) == 0);
        ends[1] = open(ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios mode{};
        tcgetattr(ends[1], &mode);
        cfmakeraw(&mode);
        tcsetattr(ends[1], TCSANOW, &mode);
        break;
    }
    case EOutput::NullDevice:
        ends[1] = open("/dev/null", O_WRONLY | O_CLOEXEC);
        break;
    case EOutput::Missing:
        break;
    }
    return ends;
}

} // namespace

struct CStandardOutput::CState {
    int reading = -1;
    int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10); // the output as it was

    CState(EOutput kind, std::string_view content) {
        std::fflush(nullptr);
        const std::array<int, 2> ends = OpenEnds(kind, content);
        reading = ends[0];
        close(STDOUT_FILENO);
        if (ends[1] >= 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[1]);
        }
    }
    ~CState() {
        PutBack();
        close(reading);
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
        lseek(reading, 0, SEEK_SET);
        std::string all;
        std::array<char, 4096> piece{};
        // A terminal whose other end is closed ends in an error.
        for (ssize_t count = 0; (count = read(reading, piece.data(), piece.size())) > 0;) {
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
