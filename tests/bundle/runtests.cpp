// runtests [PART]: runs the bundle that this program lies in, or the runs whose names have that part, and writes what
// came of it into results.txt beside itself. Nothing else need be installed. Ends with 1 if a run failed.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/bundle/machinechanges.h" // last, for windows.h

namespace {

namespace fs = std::filesystem;

/// What came of a run, by the keys of what is expected.
using Answers = std::map<std::wstring, std::string>;

constexpr std::wstring_view Folder = L"{bundle}"; // stands for the bundle's in the lists
std::atomic<bool> interrupted = false;            // by Control-C: the machine is restored first

std::string Utf8(const std::wstring& text) {
    const std::u8string bytes = fs::path(text).u8string();
    return {bytes.begin(), bytes.end()};
}

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

std::string SystemText() {
    const auto told = [](const char* name) {
        char text[100] = {};
        DWORD size = sizeof(text);
        RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name, RRF_RT_REG_SZ,
                     nullptr, text, &size);
        return std::string(text);
    };
    return told("ProductName") + (IsWine() ? " as Wine shows it" : "") + ", build " + told("CurrentBuild") +
           ", code pages " + std::to_string(GetACP()) + " and " + std::to_string(GetOEMCP());
}

// A file's content; empty if it can't be read.
std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}
std::wstring ReadText(const std::filesystem::path& path) {
    const std::string bytes = ReadBytes(path);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::wstring ValueOf(const TestCase& row, const std::wstring& key) {
    const auto found = row.find(key);
    return found == row.end() ? std::wstring() : found->second;
}

// The list's fields have the form "KEY VALUE", and a character between them that no text has.
std::vector<TestCase> ReadCases(const fs::path& bundle) {
    const fs::path file = bundle / (IsWine() ? "cases-wine.txt" : "cases.txt");
    std::vector<TestCase> rows;
    std::wistringstream fields(ReadText(file));
    for (std::wstring field; std::getline(fields, field, L'\uE000');) {
        for (std::size_t at = 0; (at = field.find(Folder)) != std::wstring::npos;) {
            field.replace(at, Folder.size(), bundle.wstring());
        }
        const std::size_t blank = field.find(L' ');
        if (field.starts_with(L"case ")) {
            rows.emplace_back();
        }
        rows.back().emplace(field.substr(0, blank), field.substr(blank + 1));
    }
    return rows;
}

// Where the answers are otherwise than the row says.
std::string Difference(const TestCase& row, const Answers& answers) {
    std::string all;
    for (const auto& [key, found] : answers) {
        const std::string pattern = Utf8(ValueOf(row, key + L"~"));
        const std::string wanted = Utf8(ValueOf(row, key));
        const bool fits =
            !pattern.empty() ? std::regex_match(found, std::regex(pattern)) : found == wanted || !row.contains(key);
        if (!fits) {
            all.append(Utf8(key)).append(": answered \"").append(found).append("\", claimed \"");
            all.append(pattern).append(wanted).append("\"; ");
        }
    }
    return all;
}

// Reads a pipe until its last writer is gone.
void ReadAll(HANDLE pipe, std::string& content) {
    char piece[0x10000];
    for (DWORD count = 0; ReadFile(pipe, piece, sizeof(piece), &count, nullptr) && count > 0;) {
        content.append(piece, count);
    }
    CloseHandle(pipe);
}

// With exactly the row's command line; standard input is empty, errors go where ours go, and no fault shows a box.
Answers RunProgram(const TestCase& row, const fs::path& program, const fs::path& folder) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    Answers answers{{L"code", "none, not started"}, {L"output", ""}};
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    HANDLE reading = nullptr;
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    CreatePipe(&reading, &start.hStdOutput, &inherited, 0);
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    start.hStdInput = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr);
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring line = ValueOf(row, L"line");
    PROCESS_INFORMATION process{};
    const bool started = CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        folder.c_str(), &start, &process);
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdInput);
    std::thread reader([&] { ReadAll(reading, answers[L"output"]); });
    if (started) {
        const auto limit = static_cast<DWORD>(std::stoul(ValueOf(row, L"limit")));
        const bool ended = WaitForSingleObject(process.hProcess, limit * 1000) == WAIT_OBJECT_0;
        DWORD code = 0;
        GetExitCodeProcess(process.hProcess, &code);
        answers[L"code"] = ended ? std::to_string(code) : "none in time";
        TerminateProcess(process.hProcess, code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    reader.join();
    return answers;
}

class CTestRun {
public:
    explicit CTestRun(fs::path bundleFolder)
        : bundle(std::move(bundleFolder)),
          work(fs::temp_directory_path() / ("corvane tests " + std::to_string(GetCurrentProcessId()))),
          results(bundle / "results.txt", std::ios::binary) {}
    ~CTestRun() {
        std::error_code ignored;
        fs::remove_all(work, ignored);
    }

    /// Whether nothing failed.
    bool Run(const std::wstring& part) {
        Tell("corvane " VERSION " on " + SystemText());
        for (const TestCase& row : ReadCases(bundle)) {
            const std::wstring name = ValueOf(row, L"case");
            const std::wstring reason = interrupted               ? L"interrupted"
                                        : row.contains(L"skip")   ? ValueOf(row, L"skip")
                                        : row.contains(L"client") ? machine.WhyNot()
                                                                  : L"";
            if (name.find(part) == std::wstring::npos) {
                continue;
            }
            if (reason.empty()) {
                Prepare(row);
                Judge(row, Execute(row));
            } else {
                ++notRun;
                Tell("not run  " + Utf8(name) + ": " + Utf8(reason));
            }
        }
        Tell("\r\n" + std::to_string(passed) + " passed, " + std::to_string(failed) + " failed, " +
             std::to_string(notRun) + " not run");
        return failed == 0 && passed > 0 && !interrupted;
    }

private:
    void Tell(const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        results << line << "\r\n" << std::flush;
    }

    void Prepare(const TestCase& row) {
        fs::remove_all(work);
        fs::create_directories(work / "folder");
        if (row.contains(L"files")) {
            fs::copy(bundle / "files" / ValueOf(row, L"files"), work / "folder", fs::copy_options::recursive);
        }
        if (const std::wstring client = ValueOf(row, L"client"); !client.empty()) {
            const fs::path libraries = bundle / "tests" / "mapilibrary";
            machine.RegisterClient((libraries / "recordinglibrary.dll").wstring(),
                                   client == L"extended" ? (libraries / "extendedlibrary.dll").wstring() : L"");
        }
        if (machine.WhyNot().empty()) {
            machine.SetSettings(row);
        }
    }

    Answers Execute(const TestCase& row) const {
        // What is set for the user's own runs, or was for the last one, must not reach this.
        for (const char* name : {"TESSARIX_REGISTRY", "CORVANE_MAPI_SCRIPT", "CORVANE_MAPI_STORES"}) {
            SetEnvironmentVariableA(name, nullptr);
        }
        SetEnvironmentVariableW(L"CORVANE_TRANSCRIPT", (work / "transcript").c_str());
        const auto [first, last] = row.equal_range(L"env");
        for (auto at = first; at != last; ++at) {
            const std::size_t sign = at->second.find(L'=');
            SetEnvironmentVariableW(at->second.substr(0, sign).c_str(), at->second.c_str() + sign + 1);
        }
        const fs::path program = bundle / ValueOf(row, L"program");
        const fs::path log = program.parent_path() / "TessarixLog.txt";
        fs::remove(log);
        Answers answers = RunProgram(row, program, work / "folder");
        answers[L"transcript"] = ReadBytes(work / "transcript");
        answers[L"log"] = ReadBytes(log);
        return answers;
    }

    void Judge(const TestCase& row, const Answers& answers) {
        const std::string name = Utf8(ValueOf(row, L"case"));
        const std::string problems = Difference(row, answers);
        ++(problems.empty() ? passed : failed);
        Tell((problems.empty() ? "passed   " + name : "FAILED   " + name + ": " + problems));
        if (!problems.empty() && !row.contains(L"output")) {
            Tell(answers.at(L"output"));
        }
    }

    const fs::path bundle;
    const fs::path work; // everything that is made on the way
    CMachineChanges machine;
    std::ofstream results;
    int passed = 0, failed = 0, notRun = 0;
};

} // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    wchar_t program[1000] = {};
    GetModuleFileNameW(nullptr, program, 1000);
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return interrupted = true; }, TRUE);
    try {
        return CTestRun(fs::path(program).parent_path()).Run(count > 1 ? arguments[1] : L"") ? 0 : 1;
    } catch (const std::exception& failure) { // caught, so that the machine is restored
        std::fprintf(stderr, "runtests: %s\n", failure.what());
        return 2;
    }
}
