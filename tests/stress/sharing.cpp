// sharing SECONDS FOLDER: processes that open, refuse and delete the same files at random, and a judge who looks at
// what each of them wrote down:
//
//   two handles that disagree were never open together
//   whoever was refused had somebody in the way at some time of the call
//   no name went while it was open
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
#include <vector>

using namespace Platform;

namespace {

constexpr int Processes = 3;
constexpr int Files = 2;
constexpr int RecordsOfEach = 4000; // in a round
constexpr std::uint32_t Deletion = 0;

struct Record {
    std::int64_t asked, answered; // before and after the call
    std::int64_t closing, closed; // the same of its end; those of the answer where nothing was opened
    std::uint32_t uses, allows;   // FileShare bits; uses is Deletion for one
    std::uint32_t error;
    int process, file;
};

struct Shared {
    std::atomic<int> ready{0};
    Record records[Processes][RecordsOfEach];
};

std::int64_t Now() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

bool Disagree(const Record& one, const Record& other) {
    return (one.uses & ~other.allows) != 0 || (other.uses & ~one.allows) != 0;
}

void Open(const std::u16string& path, Record& record, std::mt19937& random) {
    const std::uint32_t access = ((record.uses & FileShareRead) != 0 ? GenericRead : 0) |
                                 ((record.uses & FileShareWrite) != 0 ? GenericWrite : 0);
    record.asked = Now();
    const Handle file = CreateFile(path.c_str(), access, record.allows, nullptr, OpenAlways, 0, nullptr);
    record.error = file == InvalidHandle() ? GetLastError() : 0;
    record.answered = record.closing = record.closed = Now();
    if (file != InvalidHandle()) {
        if (random() % 4 == 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 50));
        }
        record.closing = Now();
        CloseHandle(file);
        record.closed = Now();
    }
}

void Delete(const std::u16string& path, Record& record) {
    record.asked = Now();
    record.error = DeleteFile(path.c_str()) ? 0 : GetLastError();
    record.answered = record.closing = record.closed = Now();
}

void Work(Shared& shared, int process, const std::u16string& folder, unsigned seed) {
    std::mt19937 random(seed);
    ++shared.ready;
    while (shared.ready < Processes) {
    }
    for (Record& record : shared.records[process]) {
        record.process = process;
        record.file = static_cast<int>(random() % Files);
        const std::u16string path = folder + u"/" + static_cast<char16_t>(u'a' + record.file);
        record.uses = static_cast<std::uint32_t>(random() % 4);
        record.allows = random() % 2 == 0 ? 3 : static_cast<std::uint32_t>(random() % 4);
        if (record.uses == Deletion) {
            Delete(path, record);
        } else {
            Open(path, record, random);
        }
    }
}

bool IsRight(const Record& record, std::span<const Record* const> others) {
    const auto any = [&](auto condition) {
        return std::any_of(others.begin(), others.end(), [&](const Record* other) {
            return other->process != record.process && other->error == 0 && other->uses != Deletion &&
                   condition(*other);
        });
    };
    const bool deletion = record.uses == Deletion;
    if (record.error == ErrorSharingViolation) {
        return any([&](const Record& other) {
            return other.asked <= record.answered && record.asked <= other.closed &&
                   (deletion || Disagree(record, other));
        });
    }
    if (record.error != 0) {
        return deletion && record.error == ErrorFileNotFound;
    }
    return !any([&](const Record& other) {
        return deletion ? other.answered < record.asked && record.answered < other.closing
                        : other.answered < record.closing && record.answered < other.closing && Disagree(record, other);
    });
}

// The wrong ones of a round. Sorted by time, so that only those near a record are compared with it.
int Judge(const Shared& shared, std::int64_t& refused) {
    int wrong = 0;
    for (int file = 0; file < Files; ++file) {
        std::vector<const Record*> records;
        for (const auto& list : shared.records) {
            for (const Record& record : list) {
                if (record.file == file) {
                    records.push_back(&record);
                }
            }
        }
        std::sort(records.begin(), records.end(),
                  [](const Record* one, const Record* other) { return one->asked < other->asked; });
        std::int64_t longest = 0;
        for (const Record* record : records) {
            longest = std::max(longest, record->closed - record->asked);
        }
        const auto before = [](const Record* record, std::int64_t time) { return record->asked < time; };
        for (const Record* record : records) {
            const auto first = std::lower_bound(records.begin(), records.end(), record->asked - longest, before);
            const auto last = std::lower_bound(records.begin(), records.end(), record->closed + 1, before);
            refused += record->error == ErrorSharingViolation ? 1 : 0;
            if (!IsRight(*record, {first, last})) {
                std::printf("wrong: process %d, file %d, uses %u, allows %u: error %u\n", record->process, file,
                            record->uses, record->allows, record->error);
                ++wrong;
            }
        }
    }
    return wrong;
}

bool Round(Shared& shared, const std::u16string& folder, unsigned seed) {
    shared.ready = 0;
    std::vector<pid_t> children;
    for (int process = 0; process < Processes; ++process) {
        const pid_t child = fork();
        if (child == 0) {
            Work(shared, process, folder, seed * Processes + static_cast<unsigned>(process));
            _exit(0);
        }
        children.push_back(child);
    }
    bool ended = true;
    for (const pid_t child : children) {
        int status = 0;
        ended = waitpid(child, &status, 0) == child && status == 0 && ended;
    }
    return ended;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::puts("usage: sharing SECONDS FOLDER");
        return 2;
    }
    const std::string place = arguments[2];
    const std::u16string folder(place.begin(), place.end());
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        return 2;
    }
    auto& shared = *new (memory) Shared;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
    unsigned seed = 0;
    int wrong = 0;
    std::int64_t refused = 0;
    do {
        if (!Round(shared, folder, ++seed)) {
            std::puts("a process ended before its work");
            return 1;
        }
        wrong += Judge(shared, refused);
    } while (wrong == 0 && std::chrono::steady_clock::now() < end);
    std::printf("%lld calls, %lld refused, %d wrong, last seed %u\n",
                static_cast<long long>(seed) * Processes * RecordsOfEach, static_cast<long long>(refused), wrong, seed);
    return wrong == 0 && refused > 0 ? 0 : 1;
}
