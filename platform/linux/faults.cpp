#include "platform/linux/faulthook.h"

#include "platform/inc/lasterror.h"
#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

namespace Platform {

namespace {

// Without a destructor: static objects still make calls while they go.
struct Plan {
    std::array<char, 64> function{}; // longer than any name
    std::int32_t nth = 0;
    std::uint32_t code = 0;
    FaultMode mode = FaultMode::Once;
    std::int32_t seen = 0;
    const char* failed = "none"; // the function that failed first
};

// Read without the lock, so that an unarmed hook costs one load.
std::atomic<bool> armed{false};

// Of one transfer; 0 is no limit.
std::atomic<std::uint32_t> mostBytes{0};

std::mutex& PlanLock() {
    static std::mutex lock;
    return lock;
}

Plan& CurrentPlan() {
    static constinit Plan plan;
    return plan;
}

template <class TNumber>
TNumber ReadNumber(std::string_view text) {
    TNumber value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::string_view TakeField(std::string_view& text) {
    const std::size_t end = text.find(':');
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return field;
}

void SetPlan(std::string_view function, std::int32_t nth, std::uint32_t code, FaultMode mode) {
    const std::lock_guard guard(PlanLock());
    Plan plan{{}, nth, code, mode};
    function.copy(plan.function.data(), plan.function.size() - 1);
    CurrentPlan() = plan;
    armed = true;
}

bool ReadEnvironment() {
    if (const char* most = std::getenv("TESSARIX_SHORT_TRANSFERS")) {
        mostBytes = ReadNumber<std::uint32_t>(most);
    }
    if (const char* value = std::getenv("TESSARIX_FAULT")) {
        std::string_view text = value;
        const std::string_view function = TakeField(text);
        const auto nth = ReadNumber<std::int32_t>(TakeField(text));
        const auto code = ReadNumber<std::uint32_t>(TakeField(text));
        SetPlan(function, nth, code, text == "on" ? FaultMode::FromThenOn : FaultMode::Once);
    }
    return true;
}

// The plan that a test gives to a whole process stands before the first call, whichever static object makes it.
void TakeEnvironment() {
    static const bool taken = ReadEnvironment();
    static_cast<void>(taken);
}

// A sweep over all calls of a program needs to know how many there are and which one failed first. Each module that
// this layer is linked into writes a line.
__attribute__((destructor)) void WriteCallsSeen() {
    const char* path = std::getenv("TESSARIX_FAULT_CALLS");
    std::FILE* file = path ? std::fopen(path, "ae") : nullptr;
    if (file) {
        std::fprintf(file, "%d %s\n", FaultCallsSeen(), CurrentPlan().failed);
        std::fclose(file);
    }
}

} // namespace

bool FaultsAvailable() {
    return true;
}

void ArmFault(const char* function, std::int32_t nth, std::uint32_t code, FaultMode mode) {
    TakeEnvironment();
    SetPlan(function, nth, code, mode);
}

void DisarmFaults() {
    TakeEnvironment();
    const std::lock_guard guard(PlanLock());
    armed = false;
    mostBytes = 0;
}

void ArmShortTransfers(std::uint32_t most) {
    TakeEnvironment();
    mostBytes = most;
}

std::int32_t FaultCallsSeen() {
    const std::lock_guard guard(PlanLock());
    return CurrentPlan().seen;
}

std::uint32_t TransferSize(std::uint32_t wanted) noexcept {
    TakeEnvironment();
    const std::uint32_t most = mostBytes.load(std::memory_order_relaxed);
    return most == 0 ? wanted : std::min(wanted, most);
}

bool FaultDue(const char* function, CallKind kind) noexcept {
    TakeEnvironment();
    if (!armed.load(std::memory_order_relaxed)) {
        return false;
    }
    const std::lock_guard guard(PlanLock());
    Plan& plan = CurrentPlan();
    const std::string_view planned = plan.function.data();
    const bool wanted = planned == function || (planned == "*" && kind != CallKind::StandardNew) ||
                        (planned == "allocation" && kind == CallKind::Allocation);
    if (!armed || !wanted) {
        return false;
    }
    ++plan.seen;
    const bool due = plan.mode == FaultMode::Once ? plan.seen == plan.nth : plan.seen >= plan.nth;
    if (due) {
        plan.failed = plan.seen == plan.nth ? function : plan.failed;
        SetLastError(plan.code);
    }
    return due;
}

} // namespace Platform
