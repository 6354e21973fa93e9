#include "platform/linux/pipewrite.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace Platform {

ssize_t WriteWithoutSignal(int descriptor, const void* bytes, std::size_t count) {
    sigset_t brokenPipe;
    sigset_t kept;
    sigset_t pending;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    sigpending(&pending);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &kept);
    const ssize_t done = write(descriptor, bytes, count);
    const int error = errno;
    if (done < 0 && error == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        // Takes the signal of this write, which is the thread's own, back.
        const timespec atOnce{};
        while (sigtimedwait(&brokenPipe, nullptr, &atOnce) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &kept, nullptr);
    errno = error;
    return done;
}

} // namespace Platform
