// sharing SECONDS FOLDER: processes that open, refuse and delete the same file at random, and a judge who looks at what
// each of them wrote down: two handles that disagree were never open together; whoever was refused had somebody in the
// way at some time of the call; no name went while it was open.
#include "platform/inc/filenames.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <span>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Platform;

namespace {

constexpr unsigned Processes = 3;
constexpr std::size_t RecordsOfEach = 2500; // in a round
constexpr std::uint32_t Deletion = 0;

struct Record {
    std::int64_t asked, answered; // before and after the call
    std::int64_t closing, closed; // the same of its end; those of the answer where nothing was opened
    std::uint32_t uses, allows;   // FileShare bits; uses is Deletion for one
    std::uint32_t error;
};

struct Shared {
    std::atomic<unsigned> ready{0};
    Record records[Processes * RecordsOfEach];
};

std::int64_t Now() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

void Work(std::span<Record> records, const char16_t* path, unsigned seed) {
    std::mt19937 random(seed);
    for (Record& record : records) {
        record.uses = random() % 4;
        record.allows = random() % 2 == 0 ? 3 : random() % 4;
        const std::uint32_t access = ((record.uses & FileShareRead) != 0 ? GenericRead : 0) |
                                     ((record.uses & FileShareWrite) != 0 ? GenericWrite : 0);
        Handle file = InvalidHandle();
        record.asked = Now();
        const bool done =
            record.uses == Deletion
                ? DeleteFile(path)
                : (file = CreateFile(path, access, record.allows, nullptr, OpenAlways, 0, nullptr)) != InvalidHandle();
        record.error = done ? 0 : GetLastError();
        record.answered = record.closing = record.closed = Now();
        if (file != InvalidHandle()) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 4 == 0 ? random() % 50 : 0));
            record.closing = Now();
            CloseHandle(file);
            record.closed = Now();
        }
    }
}

// A process has no two handles at a time, so that its own records are in nobody's way.
bool IsRight(const Record& record, std::span<const Record> records) {
    const bool deletion = record.uses == Deletion;
    const bool refused = record.error == ErrorSharingViolation;
    const bool isInTheWay = std::any_of(records.begin(), records.end(), [&](const Record& other) {
        if (&other == &record || other.error != 0 || other.uses == Deletion) {
            return false;
        }
        const bool disagrees = deletion || (record.uses & ~other.allows) != 0 || (other.uses & ~record.allows) != 0;
        return disagrees && (refused    ? other.asked <= record.answered && record.asked <= other.closed
                             : deletion ? other.answered < record.asked && record.answered < other.closing
                                        : other.answered < record.closing && record.answered < other.closing);
    });
    return refused ? isInTheWay : record.error == 0 ? !isInTheWay : deletion && record.error == ErrorFileNotFound;
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
    auto& shared = *new (memory) Shared;
    const std::span<Record> records(shared.records);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
    unsigned round = 0;
    std::ptrdiff_t wrong = 0;
    std::ptrdiff_t refused = 0;
    do {
        shared.ready = 0;
        for (unsigned process = 0; process < Processes; ++process) {
            if (fork() == 0) {
                for (++shared.ready; shared.ready < Processes;) {
                }
                Work(records.subspan(process * RecordsOfEach, RecordsOfEach), path.c_str(),
                     round * Processes + process);
                _exit(0);
            }
        }
        for (int status = 0; wait(&status) > 0;) {
            wrong += status == 0 ? 0 : 1;
        }
        wrong += std::ranges::count_if(records, [&](const Record& each) { return !IsRight(each, records); });
        refused += std::ranges::count(records, ErrorSharingViolation, &Record::error);
        ++round;
    } while (wrong == 0 && std::chrono::steady_clock::now() < end);
    std::printf("%zu records a round, %td refused, %td wrong, %u rounds\n", records.size(), refused, wrong, round);
    return wrong == 0 && refused > 0 ? 0 : 1;
}
