#include "tests/support/standardoutput.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

struct Ends {
    int reading;
    int writing;
};

Ends OpenPipe(EOutput kind = EOutput::Pipe) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    if (kind == EOutput::BrokenPipe) {
        close(std::exchange(ends[0], -1));
    }
    return {ends[0], ends[1]};
}

Ends OpenFile(std::string_view content) {
    std::string path = std::string(getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp") + "/output-XXXXXX";
    const int file = mkostemp(path.data(), O_CLOEXEC);
    unlink(path.c_str());
    if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
        std::abort();
    }
    return {fcntl(file, F_DUPFD_CLOEXEC, 0), file};
}

// Without the terminal's own repair of line ends, so that what is read is what was written.
Ends OpenTerminal() {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (grantpt(master) != 0 || unlockpt(master) != 0) {
        std::abort();
    }
    const int slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode{};
    tcgetattr(slave, &mode);
    cfmakeraw(&mode);
    tcsetattr(slave, TCSANOW, &mode);
    return {master, slave};
}

Ends Open(EOutput kind, std::string_view content) {
    switch (kind) {
    case EOutput::File:
        return OpenFile(content);
    case EOutput::Pipe:
    case EOutput::BrokenPipe:
        return OpenPipe(kind);
    case EOutput::Terminal:
        return OpenTerminal();
    case EOutput::NullDevice:
        return {-1, open("/dev/null", O_WRONLY | O_CLOEXEC)};
    case EOutput::Missing:
        break;
    }
    return {-1, -1};
}

std::string ReadRest(int file) {
    lseek(file, 0, SEEK_SET);
    std::string all;
    std::array<char, 4096> piece{};
    ssize_t count = 0;
    // A terminal whose other end is closed ends in an error.
    while (file >= 0 && (count = read(file, piece.data(), piece.size())) > 0) {
        all.append(piece.data(), static_cast<std::size_t>(count));
    }
    return all;
}

/// One of the process's streams, led elsewhere.
class CRedirection {
public:
    CRedirection(int streamNumber, Ends ends)
        : stream(streamNumber), reading(ends.reading), kept(fcntl(streamNumber, F_DUPFD_CLOEXEC, 10)) {
        std::fflush(nullptr);
        if (ends.writing >= 0) {
            dup2(ends.writing, stream);
            close(ends.writing);
        } else {
            close(stream);
        }
    }
    ~CRedirection() {
        Restore();
        close(reading);
    }
    CRedirection(const CRedirection&) = delete;
    CRedirection& operator=(const CRedirection&) = delete;

    std::string Finish() {
        Restore();
        return ReadRest(reading);
    }

private:
    int stream;
    int reading;
    int kept; // the stream as it was; -1 when it is back

    void Restore() {
        if (kept >= 0) {
            dup2(kept, stream);
            close(std::exchange(kept, -1));
        }
    }
};

} // namespace

struct CStandardOutput::CState {
    CRedirection output;
};

const bool CStandardOutput::HasTerminals = true;

CStandardOutput::CStandardOutput(EOutput kind, std::string_view content)
    : state(new CState{{STDOUT_FILENO, Open(kind, content)}}) {}

CStandardOutput::~CStandardOutput() = default;

std::string CStandardOutput::Finish() {
    return std::unique_ptr<CState>(std::move(state))->output.Finish();
}
