// sharing SECONDS FOLDER: processes that open, refuse and delete the same files at random, and a judge who looks at
// what each of them wrote down: two handles that disagree were never open together; whoever was refused had somebody in
// the way at some time of the call; no name went while it was open.
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
#include <vector>

using namespace Platform;

namespace {

constexpr int Processes = 3;
constexpr unsigned Files = 2;
constexpr int RecordsOfEach = 4000; // in a round
constexpr std::uint32_t Deletion = 0;

struct Record {
    std::int64_t asked, answered; // before and after the call
    std::int64_t closing, closed; // the same of its end; those of the answer where nothing was opened
    std::uint32_t uses, allows;   // FileShare bits; uses is Deletion for one
    std::uint32_t error;
    int process;
};

struct Shared {
    std::atomic<int> ready{0};
    Record records[Processes][RecordsOfEach];
};

std::int64_t Now() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

// The file of a record alternates, so that the judge knows it.
void Work(Shared& shared, int process, const std::u16string& folder, unsigned seed) {
    std::mt19937 random(seed);
    ++shared.ready;
    while (shared.ready < Processes) {
    }
    unsigned count = 0;
    for (Record& record : shared.records[process]) {
        const std::u16string path = folder + u"/" + static_cast<char16_t>(u'a' + count++ % Files);
        const std::uint32_t uses = random() % 4;
        const std::uint32_t access =
            ((uses & FileShareRead) != 0 ? GenericRead : 0) | ((uses & FileShareWrite) != 0 ? GenericWrite : 0);
        const std::uint32_t allows = random() % 2 == 0 ? 3 : random() % 4;
        Handle file = InvalidHandle();
        record.asked = Now();
        if (uses == Deletion) {
            record.error = DeleteFile(path.c_str()) ? 0 : GetLastError();
        } else {
            file = CreateFile(path.c_str(), access, allows, nullptr, OpenAlways, 0, nullptr);
            record.error = file == InvalidHandle() ? GetLastError() : 0;
        }
        record.answered = record.closing = record.closed = Now();
        if (file != InvalidHandle()) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 4 == 0 ? random() % 50 : 0));
            record.closing = Now();
            CloseHandle(file);
            record.closed = Now();
        }
        record.uses = uses;
        record.allows = allows;
        record.process = process;
    }
}

bool IsRight(const Record& record, const std::vector<const Record*>& others) {
    const auto any = [&](auto condition) {
        return std::any_of(others.begin(), others.end(), [&](const Record* other) {
            return other->process != record.process && other->error == 0 && other->uses != Deletion &&
                   condition(*other);
        });
    };
    const bool deletion = record.uses == Deletion;
    const auto disagrees = [&](const Record& other) {
        return deletion || (record.uses & ~other.allows) != 0 || (other.uses & ~record.allows) != 0;
    };
    if (record.error == ErrorSharingViolation) {
        return any([&](const Record& other) {
            return other.asked <= record.answered && record.asked <= other.closed && disagrees(other);
        });
    }
    if (record.error != 0) {
        return deletion && record.error == ErrorFileNotFound;
    }
    return !any([&](const Record& other) {
        return deletion ? other.answered < record.asked && record.answered < other.closing
                        : other.answered < record.closing && record.answered < other.closing && disagrees(other);
    });
}

// The wrong ones of a round.
int Judge(const Shared& shared, std::int64_t& refused) {
    int wrong = 0;
    for (unsigned file = 0; file < Files; ++file) {
        std::vector<const Record*> records;
        for (const auto& list : shared.records) {
            for (unsigned i = file; i < RecordsOfEach; i += Files) {
                records.push_back(&list[i]);
            }
        }
        for (const Record* record : records) {
            refused += record->error == ErrorSharingViolation ? 1 : 0;
            if (!IsRight(*record, records)) {
                std::printf("wrong: process %d, file %u, uses %u, allows %u: error %u\n", record->process, file,
                            record->uses, record->allows, record->error);
                ++wrong;
            }
        }
    }
    return wrong;
}

} // namespace

int main(int count, char** arguments) {
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (count < 3 || memory == MAP_FAILED) {
        std::puts("usage: sharing SECONDS FOLDER");
        return 2;
    }
    const std::string place = arguments[2];
    auto& shared = *new (memory) Shared;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
    unsigned seed = 0;
    int wrong = 0;
    std::int64_t refused = 0;
    do {
        shared.ready = 0;
        for (int process = 0; process < Processes; ++process) {
            if (fork() == 0) {
                Work(shared, process, {place.begin(), place.end()}, seed * Processes + static_cast<unsigned>(process));
                _exit(0);
            }
        }
        int ended = 0;
        for (int status = 0; wait(&status) > 0;) {
            ended += status == 0 ? 1 : 0;
        }
        wrong += Judge(shared, refused) + Processes - ended;
        ++seed;
    } while (wrong == 0 && std::chrono::steady_clock::now() < end);
    std::printf("%d records a process and round, %lld refused, %d wrong, %u rounds\n", RecordsOfEach,
                static_cast<long long>(refused), wrong, seed);
    return wrong == 0 && refused > 0 ? 0 : 1;
}
