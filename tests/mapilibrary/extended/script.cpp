#include "tests/mapilibrary/extended/script.h"

#include "tests/mapilibrary/transcript.h"
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace {

std::vector<std::string_view> Words(const char* variable, const char* otherwise) {
    const char* value = std::getenv(variable);
    std::string_view text = value ? value : otherwise;
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) {
            words.push_back(text.substr(0, end));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

bool ReadHex(std::string_view text, std::uint32_t& number) {
    const char* const end = text.data() + text.size();
    return !text.empty() && std::from_chars(text.data(), end, number, 16).ptr == end;
}

// The sanitizers must leave these to the processor.
#define RAW __attribute__((no_sanitize("address", "undefined"), noinline))

volatile int* volatile nowhere = reinterpret_cast<volatile int*>(16);
volatile int one = 1;
volatile int zero = 0;

RAW void CrashReading() {
    static_cast<void>(*nowhere);
}

RAW void CrashWriting() {
    *nowhere = 1;
}

RAW void CrashDividing() {
    one = one / zero;
}

RAW int CrashComparing(const void*, const void*) {
    CrashWriting();
    return 0;
}

void CrashInCallback() {
    int numbers[] = {2, 1};
    std::qsort(numbers, 2, sizeof(int), &CrashComparing);
}

volatile bool endless = true;

RAW int Descend(int depth) {
    volatile char room[200] = {};
    room[0] = static_cast<char>(endless ? Descend(depth + 1) : depth);
    return room[0] + depth;
}

void CrashIfTold(std::string_view word) {
    if (word == "read") {
        CrashReading();
    } else if (word == "write") {
        CrashWriting();
    } else if (word == "divide") {
        CrashDividing();
    } else if (word == "callback") {
        CrashInCallback();
    } else if (word == "overflow") {
        Descend(0);
    }
}

bool GivesBack(std::string_view call) {
    return call.ends_with("::Release") || call.starts_with("Free") || call == "MAPIFreeBuffer" ||
           call == "MAPIUninitialize";
}

std::string WordOf(std::string_view call) {
    static std::map<std::string, std::uint64_t, std::less<>> calls;
    const std::uint64_t number = ++calls[std::string(call)];
    const std::string counted = std::string(call) + '#' + Decimal(number);
    for (const std::string_view rule : Words("CORVANE_MAPI_SCRIPT", "")) {
        const std::size_t equals = rule.find('=');
        if (equals == std::string_view::npos) {
            std::fprintf(stderr, "CORVANE_MAPI_SCRIPT: no such rule: %s\n", std::string(rule).c_str());
            std::abort();
        }
        const std::string_view name = rule.substr(0, equals);
        if (name == call || name == counted) {
            return std::string(rule.substr(equals + 1));
        }
    }
    return {};
}

} // namespace

Action ActionOf(std::string_view call) {
    static bool dying = false;
    if (dying && GivesBack(call)) {
        CrashWriting();
    }
    std::string word = WordOf(call);
    constexpr std::string_view last = ":dying";
    if (word.ends_with(last)) {
        dying = true;
        word.resize(word.size() - last.size());
    }
    std::uint32_t code = 0;
    if (word == "nothing") {
        return {false, 0, {}};
    }
    if (ReadHex(word, code)) {
        return {false, static_cast<std::int32_t>(code), {}};
    }
    constexpr std::string_view unlink = "unlink:";
    if (word.starts_with(unlink)) {
        std::remove(word.c_str() + unlink.size());
    }
    CrashIfTold(word);
    return {true, 0, word};
}

std::vector<StoreRow> StoreRows() {
    constexpr std::uint32_t storeProvider = 33; // MAPI_STORE_PROVIDER
    std::vector<StoreRow> rows;
    for (std::string_view word : Words("CORVANE_MAPI_STORES", "2/21")) {
        StoreRow row;
        row.type = storeProvider;
        if (word == "none") {
            break;
        }
        if (word.starts_with("noid:")) {
            word.remove_prefix(5);
            row.hasId = false;
        }
        row.hasProperties = word != "bare";
        row.flagsAreError = word == "error";
        const std::size_t slash = std::min(word.find('/'), word.size());
        if (row.hasProperties && !row.flagsAreError &&
            (!ReadHex(word.substr(0, slash), row.flags) ||
             (slash < word.size() && !ReadHex(word.substr(slash + 1), row.type)))) {
            std::fprintf(stderr, "CORVANE_MAPI_STORES: no such row: %s\n", std::string(word).c_str());
            std::abort();
        }
        rows.push_back(row);
    }
    return rows;
}
