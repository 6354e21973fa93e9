#include "tests/mapilibrary/answer.h"

#include "mapi/SimpleMapi.h"
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// The word of that number, from 1; the last one if there are fewer.
std::string_view WordOfCall(std::string_view list, int call) {
    for (int i = 1; i < call && list.find(',') != std::string_view::npos; ++i) {
        list.remove_prefix(list.find(',') + 1);
    }
    return list.substr(0, list.find(','));
}

} // namespace

std::optional<std::uint32_t> AnswerToCall(int call) {
    const char* list = std::getenv("CORVANE_MAPI_ANSWER");
    const std::string_view word = WordOfCall(list ? list : "success", call);
    if (word == "success") {
        return Mapi::SuccessSuccess;
    }
    if (word == "abort") {
        return Mapi::ErrorUserAbort;
    }
    if (word == "crash") {
        return std::nullopt;
    }
    std::uint32_t code = 0;
    const char* const end = word.data() + word.size();
    if (word.empty() || std::from_chars(word.data(), end, code).ptr != end) {
        std::fprintf(stderr, "CORVANE_MAPI_ANSWER: no such answer: %s\n", std::string(word).c_str());
        std::abort();
    }
    return code;
}

void Crash() {
    // Not a constant: a compiler that sees the null puts another instruction in place of the access.
    static volatile std::uintptr_t address = 0;
    *reinterpret_cast<volatile int*>(address) = 0; // NOLINT(*-no-int-to-ptr,*.NullDereference)
}
