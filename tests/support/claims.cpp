#include "tests/support/claims.h"

#include "platform/inc/modules.h"
#include <cstdio>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace {

enum class ESystem { Linux, Windows, Wine };

ESystem System() {
    static const ESystem system = [] {
        const Platform::Module library = Platform::LoadLibraryEx(u"ntdll.dll", 0);
        return !library                                                           ? ESystem::Linux
               : Platform::GetProcAddress(library, "wine_get_version") != nullptr ? ESystem::Wine
                                                                                  : ESystem::Windows;
    }();
    return system;
}

void Tell(std::string_view row, const std::string& answer) {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("claim: %s.%s, %.*s: %s\n", test->test_suite_name(), test->name(), static_cast<int>(row.size()),
                row.data(), answer.c_str());
    std::fflush(stdout); // the next row may end the process
}

// A failed comparison in one line.
std::string InShort(const testing::TestPartResult& failure) {
    static const std::regex values("[\\s\\S]*Which is: (.*)\n[\\s\\S]*Which is: ([^\n]*)[\\s\\S]*");
    static const std::regex blanks("\\s+");
    const std::string message = failure.message();
    return std::regex_replace(std::regex_replace(message, values, "answered $1, claimed $2"), blanks, " ");
}

} // namespace

void Claim(Wine wine, std::string_view row, const std::function<void()>& checks) {
    if (wine == Wine::AsWindows || System() == ESystem::Linux) {
        checks();
        return;
    }
    if (!Applies(wine) && wine == Wine::Ends) {
        Tell(row, "not asked, for this system would end the process");
        return;
    }
    testing::TestPartResultArray failures;
    {
        const testing::ScopedFakeTestPartResultReporter interception(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        checks();
    }
    std::string answer;
    for (int i = 0; i < failures.size(); ++i) {
        answer += (i > 0 ? "; " : "") + InShort(failures.GetTestPartResult(i));
        if (Applies(wine)) {
            ADD_FAILURE() << failures.GetTestPartResult(i).message();
        }
    }
    Tell(row, failures.size() > 0 ? answer : "as claimed");
}

bool Applies(Wine wine) {
    return wine == Wine::AsWindows || System() != ESystem::Wine;
}
