#include "mailsystem/ProgramStart.h"

#include "mailsystem/Owners.h"
#include "platform/linux/descriptor.h"
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>

namespace MailSystem {

namespace {

// In the new process, before the program: only what is safe after a fork.
void BecomeIndependent(void*) {
    static_cast<void>(setsid());
    std::signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

std::vector<char*> ArgumentsOf(const CommandWords& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str())); // GLib doesn't write to them
    }
    arguments.push_back(nullptr);
    return arguments;
}

// Whether the other end wrote a byte before it was closed.
EWorkEnd WaitForByte(int pipeEnd, std::chrono::milliseconds most) {
    const auto end = std::chrono::steady_clock::now() + most;
    pollfd wanted{pipeEnd, POLLIN, 0};
    int ready = -1;
    do {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        ready = left > 0 ? poll(&wanted, 1, static_cast<int>(left)) : 0;
    } while (ready < 0 && errno == EINTR);
    char byte = 0;
    if (ready == 0) {
        return EWorkEnd::TimedOut;
    }
    return Platform::Retry([&] { return read(pipeEnd, &byte, 1); }) == 1 ? EWorkEnd::Done : EWorkEnd::Broken;
}

} // namespace

void StartDetached(const CommandWords& words) {
    constexpr auto flags =
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    // GLib forks twice, as nobody asks for the child, closes what is open and tells when the program cannot be run.
    GError* error = nullptr;
    if (!g_spawn_async(nullptr, ArgumentsOf(words).data(), nullptr, flags, &BecomeIndependent, nullptr, nullptr,
                       &error)) {
        const std::unique_ptr<GError, Releaser<&g_error_free>> owner(error);
        throw std::runtime_error(error->message);
    }
}

std::string OutputOf(const CommandWords& words) {
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL);
    char* output = nullptr;
    if (!g_spawn_sync(nullptr, ArgumentsOf(words).data(), nullptr, flags, nullptr, nullptr, &output, nullptr, nullptr,
                      nullptr)) {
        return {};
    }
    return g_strstrip(GlibText(output).get());
}

EWorkEnd DoApart(const std::function<void()>& work, std::chrono::milliseconds most) noexcept {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return EWorkEnd::Broken;
    }
    const Platform::Descriptor readEnd(ends[0]);
    Platform::Descriptor writeEnd(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        static_cast<void>(setpgid(0, 0)); // for what it starts and waits for
        work();
        static_cast<void>(!write(writeEnd.Get(), "", 1));
        _exit(0); // the parent's clean-up and unwritten output are not this one's
    }
    writeEnd.Close();
    if (child < 0) {
        return EWorkEnd::Broken;
    }
    const EWorkEnd end = WaitForByte(readEnd.Get(), most);
    if (end == EWorkEnd::TimedOut) {
        kill(-child, SIGKILL);
        kill(child, SIGKILL); // if it has not come to have a group of its own
    }
    static_cast<void>(Platform::Retry([child] { return waitpid(child, nullptr, 0); }));
    return end;
}

} // namespace MailSystem
