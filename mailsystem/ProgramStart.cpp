#include "mailsystem/ProgramStart.h"

#include "mailsystem/Owners.h"
#include <array>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/wait.h>

namespace MailSystem {

namespace {

constexpr std::chrono::seconds AnswerTime{5};
constexpr std::size_t LongestAnswer = 4096;

// In the new process, before the program: only what is safe after a fork.
void BecomeIndependent(void*) {
    static_cast<void>(setsid());
    std::signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// GLib forks twice unless the child is asked for, closes what is open and tells when the program cannot be run.
bool Spawn(const CommandWords& words, unsigned flags, GPid* child, int* output) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str())); // GLib doesn't write to them
    }
    arguments.push_back(nullptr);
    const auto all = static_cast<GSpawnFlags>(flags | G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL);
    return g_spawn_async_with_pipes(nullptr, arguments.data(), nullptr, all, &BecomeIndependent, nullptr, child,
                                    nullptr, output, nullptr, nullptr) != FALSE;
}

std::string ReadAnswer(const Descriptor& output) {
    const auto end = std::chrono::steady_clock::now() + AnswerTime;
    std::string answer;
    std::array<char, 512> piece{};
    while (answer.size() < LongestAnswer) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        pollfd wanted{output.Get(), POLLIN, 0};
        const int ready = left > 0 ? poll(&wanted, 1, static_cast<int>(left)) : 0;
        const ssize_t count = ready > 0 ? read(output.Get(), piece.data(), piece.size()) : ready;
        if (count > 0) {
            answer.append(piece.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    return answer;
}

} // namespace

bool IsProgramThere(const char* name) {
    return GlibText(g_find_program_in_path(name)) != nullptr;
}

bool StartDetached(const CommandWords& words) {
    return Spawn(words, G_SPAWN_STDOUT_TO_DEV_NULL, nullptr, nullptr);
}

std::string OutputOf(const CommandWords& words) {
    GPid child = 0;
    int pipeEnd = -1;
    if (!Spawn(words, G_SPAWN_DO_NOT_REAP_CHILD, &child, &pipeEnd)) {
        return {};
    }
    const Descriptor output(pipeEnd);
    std::string answer = ReadAnswer(output);
    kill(-child, SIGKILL); // with all that it started; of no effect when it has ended by itself
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    const std::size_t first = answer.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : answer.substr(first, answer.find_last_not_of(" \t\r\n") - first + 1);
}

} // namespace MailSystem
