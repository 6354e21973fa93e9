// sharing SECONDS FOLDER: processes that open and delete the same file at random, and tell each other what they hold.
// Two handles that disagree are never held together, no name goes while the file is held, and where all agree nobody is
// refused.
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Platform;

namespace {

constexpr unsigned Processes = 3;
constexpr std::uint64_t Calls = 2500; // of each process in a round
constexpr std::uint32_t Deletion = 0;

struct Shared {
    std::atomic<unsigned> ready;
    std::atomic<std::uint64_t> held[Processes]; // 0, or the number of the call, 2 bits of uses and 2 of what is allowed
    std::atomic<int> refused, wrong;
};

void Work(Shared& shared, unsigned self, const char16_t* path, unsigned seed, bool allAgree) {
    std::mt19937 random(seed);
    for (std::uint64_t call = 1; call <= Calls; ++call) {
        const auto uses = static_cast<std::uint32_t>(allAgree ? 1 + random() % 3 : random() % 4);
        const auto allows = static_cast<std::uint32_t>(allAgree || random() % 2 == 0 ? 3 : random() % 4);
        const std::uint32_t access =
            ((uses & FileShareRead) != 0 ? GenericRead : 0) | ((uses & FileShareWrite) != 0 ? GenericWrite : 0);
        std::uint64_t before[Processes];
        std::copy(std::begin(shared.held), std::end(shared.held), before);
        Handle file = InvalidHandle();
        const bool done =
            uses == Deletion
                ? DeleteFile(path)
                : (file = CreateFile(path, access, allows, nullptr, OpenAlways, 0, nullptr)) != InvalidHandle();
        const std::uint32_t error = done ? 0 : GetLastError();
        if (error == ErrorSharingViolation) {
            ++(allAgree ? shared.wrong : shared.refused);
        } else if (!done && (uses != Deletion || error != ErrorFileNotFound)) {
            ++shared.wrong;
        } else if (uses != Deletion) {
            shared.held[self] = call << 4 | uses << 2 | allows;
        }
        for (unsigned other = 0; done && other < Processes; ++other) {
            const std::uint64_t now = other == self ? 0 : shared.held[other].load();
            const bool disagrees =
                uses == Deletion ? now == before[other] : (uses & ~now & 3) != 0 || (now >> 2 & ~allows & 3) != 0;
            shared.wrong += now != 0 && disagrees ? 1 : 0;
        }
        if (file != InvalidHandle()) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 4 == 0 ? random() % 50 : 0));
            shared.held[self] = 0;
            CloseHandle(file);
        }
    }
}

} // namespace

int main(int count, char** arguments) {
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (count < 3 || memory == MAP_FAILED) {
        std::puts("usage: sharing SECONDS FOLDER");
        return 2;
    }
    const std::string folder = arguments[2];
    const std::u16string path = std::u16string(folder.begin(), folder.end()) + u"/shared";
    auto& shared = *new (memory) Shared{};
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
    unsigned round = 0;
    for (; round < 2 || (shared.wrong == 0 && std::chrono::steady_clock::now() < end); ++round) {
        shared.ready = 0;
        for (unsigned process = 0; process < Processes; ++process) {
            if (fork() == 0) {
                for (++shared.ready; shared.ready < Processes;) {
                }
                Work(shared, process, path.c_str(), round * Processes + process, round % 2 == 0);
                _exit(0);
            }
        }
        for (int status = 0; wait(&status) > 0;) {
            shared.wrong += status == 0 ? 0 : 1;
        }
    }
    std::printf("%u rounds, %d refused, %d wrong\n", round, shared.refused.load(), shared.wrong.load());
    return shared.wrong == 0 && shared.refused > 0 ? 0 : 1;
}
