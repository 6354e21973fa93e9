#include "tests/mapilibrary/script.h"

#include "tests/mapilibrary/ledger.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

std::vector<std::string> Words(const char* variable, const char* otherwise) {
    const char* value = std::getenv(variable);
    std::vector<std::string> words(1);
    for (const char c : std::string_view(value ? value : otherwise)) {
        if (c == ' ') {
            words.emplace_back();
        } else {
            words.back() += c;
        }
    }
    return words;
}

// The sanitizers must leave these to the processor.
#define RAW __attribute__((no_sanitize("address", "undefined"), noinline))

volatile int* volatile nowhere = reinterpret_cast<volatile int*>(16);
volatile int one = 1;
volatile int zero = 0;
volatile bool endless = true;

RAW void CrashReading() {
    static_cast<void>(*nowhere);
}

RAW void CrashDividing() {
    one = one / zero;
}

RAW int Descend(int depth) {
    volatile char room[200] = {};
    room[0] = static_cast<char>(endless ? Descend(depth + 1) : depth);
    return room[0] + depth;
}

bool GivesBack(std::string_view call) {
    return call.ends_with("::Release") || call.starts_with("Free") || call == "MAPIFreeBuffer" ||
           call == "MAPIUninitialize";
}

// Each crashes, or does nothing for a word of the call's own.
void Obey(const std::string& word) {
    if (word == "read") {
        CrashReading();
    } else if (word == "divide") {
        CrashDividing();
    } else if (word == "overflow") {
        Descend(0);
    } else if (word.starts_with("unlink:")) {
        std::remove(word.c_str() + word.find(':') + 1);
    }
}

std::string WordOf(std::string_view call) {
    static std::vector<std::string> calls; // a map's [] would keep the library loaded, see Decimal
    calls.emplace_back(call);
    const auto number = std::count(calls.begin(), calls.end(), call);
    const std::string counted = std::string(call) + '#' + Decimal(static_cast<std::uint64_t>(number));
    for (const std::string& rule : Words("CORVANE_MAPI_SCRIPT", "")) {
        const std::string name = rule.substr(0, rule.find('='));
        if (name == call || name == counted) {
            return rule.substr(name.size() + 1);
        }
    }
    return {};
}

} // namespace

Action ActionOf(std::string_view call) {
    static bool dying = false;
    if (dying && GivesBack(call)) {
        CrashReading();
    }
    std::string word = WordOf(call);
    if (const std::size_t end = word.find(":dying"); end != std::string::npos) {
        dying = true;
        word.resize(end);
    }
    if (word == "nothing") {
        return {false, 0, {}};
    }
    char* end = nullptr;
    const auto code = static_cast<std::uint32_t>(std::strtoull(word.c_str(), &end, 16));
    if (!word.empty() && *end == '\0') {
        return {false, static_cast<std::int32_t>(code), {}};
    }
    Obey(word);
    return {true, 0, word};
}

std::vector<StoreRow> StoreRows() {
    constexpr std::uint32_t storeProvider = 33; // MAPI_STORE_PROVIDER
    std::vector<StoreRow> rows;
    for (const std::string& word : Words("CORVANE_MAPI_STORES", "2/21")) {
        if (word == "none") {
            break;
        }
        StoreRow& row = rows.emplace_back();
        row.hasId = !word.starts_with("noid:");
        row.hasProperties = word != "bare";
        row.flagsAreError = word == "error";
        char* end = nullptr;
        row.flags = static_cast<std::uint32_t>(std::strtoul(word.c_str() + (row.hasId ? 0 : 5), &end, 16));
        row.type = *end == '/' ? static_cast<std::uint32_t>(std::strtoul(end + 1, nullptr, 16)) : storeProvider;
    }
    return rows;
}
