// runtests [PART]: runs the bundle that this program lies in, or the runs whose names have that part, and writes what
// came of it into results.txt beside itself. Nothing else need be installed. Ends with 1 if a run failed.
#include "tests/bundle/caselist.h"
#include "tests/bundle/childprocess.h"
#include "tests/bundle/machinechanges.h"
#include "tests/bundle/text.h"
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

namespace fs = std::filesystem;

std::atomic<bool> interrupted = false; // by Control-C: the machine is restored first

constexpr std::string_view ClaimMark = "claim: "; // what a test program's line begins with

// Of the whole run; empty on Windows.
std::string WineVersion() {
    const FARPROC version = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return version ? reinterpret_cast<const char* (*)()>(reinterpret_cast<void*>(version))() : "";
}

std::string SystemText() {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    const FARPROC ask = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    reinterpret_cast<LONG(WINAPI*)(OSVERSIONINFOW*)>(reinterpret_cast<void*>(ask))(&version);
    std::ostringstream text;
    text << "Windows " << version.dwMajorVersion << '.' << version.dwMinorVersion << '.' << version.dwBuildNumber;
    if (const std::string wine = WineVersion(); !wine.empty()) {
        text << " as Wine " << wine << " shows it";
    }
    text << ", code pages " << GetACP() << " and " << GetOEMCP() << ", language " << std::hex
         << GetUserDefaultUILanguage();
    return text.str();
}

// A text in one line of the results.
std::string Shown(const std::string& text) {
    constexpr std::size_t most = 2000;
    std::string line = Replaced(Replaced(Replaced(text, "\\", "\\\\"), "\r", "\\r"), "\n", "\\n");
    return line.size() <= most ? '"' + line + '"'
                               : '"' + line.substr(0, most) + "\"... of " + std::to_string(text.size()) + " bytes";
}

struct Found {
    RunResult run;
    std::string transcript;
};

void Compare(std::vector<std::string>& problems, const char* what, const std::optional<Expectation>& wanted,
             const std::string& found) {
    if (wanted && !wanted->IsMetBy(found)) {
        problems.push_back(std::string(what) + ": answered " + Shown(found) + ", claimed " +
                           (wanted->isPattern ? "a text like " : "") + Shown(wanted->text));
    }
}

// Where the run was otherwise than the answer says.
std::vector<std::string> Differences(const Answer& answer, const Found& found) {
    std::vector<std::string> problems;
    if (!found.run.started || found.run.late) {
        problems.emplace_back(found.run.late ? "ended when its time was up" : "could not be started");
    }
    if (answer.code && *answer.code != found.run.code) {
        problems.push_back("exit code: answered " + std::to_string(found.run.code) + ", claimed " +
                           std::to_string(*answer.code));
    }
    Compare(problems, "output", answer.output, found.run.output);
    Compare(problems, "transcript", answer.transcript, found.transcript);
    return problems;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : "; ") + text;
    }
    return all;
}

class CTestRun {
public:
    CTestRun(fs::path bundleFolder, CaseList list);
    ~CTestRun();
    CTestRun(const CTestRun&) = delete;
    CTestRun& operator=(const CTestRun&) = delete;

    /// Whether nothing failed.
    bool Run(const std::string& part);

private:
    std::string WhyNotRun(const TestCase& row) const;
    void Prepare(const TestCase& row);
    Found Execute(const TestCase& row);
    void Judge(const TestCase& row, const Found& found);
    void Tell(const std::string& line);
    void Summarise();

    const fs::path bundle;
    const CaseList list;
    const bool isWine = !WineVersion().empty();
    const fs::path work; // everything that is made on the way
    CMachineChanges machine;
    std::ofstream results;
    std::vector<std::string> claims;
    int passed = 0, failed = 0, notRun = 0;
    std::string client; // that is registered
};

CTestRun::CTestRun(fs::path bundleFolder, CaseList caseList)
    : bundle(std::move(bundleFolder)), list(std::move(caseList)),
      work(fs::temp_directory_path() / ("corvane tests " + std::to_string(GetCurrentProcessId()))),
      machine((bundle / "to-restore.txt").wstring()), results(bundle / "results.txt", std::ios::binary) {
    Tell("corvane " + list.version + " on " + SystemText());
    // What is set for the user's own runs must not reach these.
    for (const char* name :
         {"TESSARIX_REGISTRY", "CORVANE_MAPI_ANSWER", "CORVANE_MAPI_SCRIPT", "CORVANE_MAPI_STORES"}) {
        SetEnvironmentVariableA(name, nullptr);
    }
}

CTestRun::~CTestRun() {
    std::error_code ignored;
    fs::remove_all(work, ignored);
}

void CTestRun::Tell(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    results << line << "\r\n" << std::flush;
}

std::string CTestRun::WhyNotRun(const TestCase& row) const {
    if (!row.skipped.empty() || (isWine && !row.skippedUnderWine.empty())) {
        return row.skipped + row.skippedUnderWine;
    }
    const bool needsSettings = row.program.ends_with(L"lifeprobe.exe");
    return !row.client.empty() ? machine.WhyNoClient() : needsSettings ? machine.WhyNoSettings() : "";
}

void CTestRun::Prepare(const TestCase& row) {
    fs::remove_all(work);
    fs::create_directories(work / "folder");
    std::ofstream(work / "transcript", std::ios::binary).flush();
    for (const TestFile& file : row.files) {
        const fs::path path = work / "folder" / file.name;
        fs::create_directories(path.parent_path());
        std::ofstream stream(path, std::ios::binary);
        for (std::size_t i = 0; i < file.times; ++i) {
            stream << file.content;
        }
    }
    if (!row.client.empty() && row.client != client) {
        client = row.client;
        const fs::path libraries = bundle / "tests" / "mapilibrary";
        machine.RegisterClient((libraries / "recordinglibrary.dll").wstring(),
                               client == "extended" ? (libraries / "extendedlibrary.dll").wstring() : L"");
    }
    if (machine.WhyNoSettings().empty()) {
        machine.SetSettings(row.user, row.machine);
    }
}

Found CTestRun::Execute(const TestCase& row) {
    Prepare(row);
    Values variables = row.environment;
    variables.emplace_back(L"CORVANE_TRANSCRIPT", (work / "transcript").wstring());
    for (const auto& [name, value] : variables) {
        SetEnvironmentVariableW(name.c_str(), value.c_str());
    }
    const std::wstring program = (bundle / row.program).wstring();
    Found found{RunProgram(program, row.line, (work / "folder").wstring(), row.limit), {}};
    for (const auto& [name, value] : variables) {
        SetEnvironmentVariableW(name.c_str(), nullptr);
    }
    found.transcript = ReadWhole((work / "transcript").wstring());
    return found;
}

void CTestRun::Judge(const TestCase& row, const Found& found) {
    const Answer& other = row.underWine;
    const std::vector<std::string> asWindows = Differences(row.expected, found);
    std::vector<std::string> problems = asWindows;
    if (other.code || other.output || other.transcript) {
        claims.push_back(row.name + ": " + (asWindows.empty() ? "as claimed" : Joined(asWindows)));
        if (isWine) {
            problems = Differences({other.code ? other.code : row.expected.code,
                                    other.output ? other.output : row.expected.output,
                                    other.transcript ? other.transcript : row.expected.transcript},
                                   found);
        }
    }
    std::istringstream lines(found.run.output);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(ClaimMark)) {
            claims.push_back(Replaced(line.substr(ClaimMark.size()), "\r", ""));
        }
    }
    ++(problems.empty() ? passed : failed);
    Tell((problems.empty() ? "passed   " : "FAILED   ") + row.name);
    for (const std::string& problem : problems) {
        Tell("         " + problem);
    }
    if (!problems.empty() && !row.expected.output) {
        Tell(found.run.output + found.run.errors);
    }
}

void CTestRun::Summarise() {
    Tell("");
    Tell("What we claim of Windows, having seen Wine answer otherwise, and what this system answered:");
    for (const std::string& claim : claims) {
        Tell("claim    " + claim);
    }
    Tell("");
    Tell(std::to_string(passed) + " passed, " + std::to_string(failed) + " failed, " + std::to_string(notRun) +
         " not run, " + std::to_string(claims.size()) + " claims asked");
}

bool CTestRun::Run(const std::string& part) {
    for (const TestCase& row : list.cases) {
        if (interrupted) {
            Tell("interrupted");
            break;
        }
        if (row.name.find(part) == std::string::npos) {
            continue;
        }
        if (const std::string reason = WhyNotRun(row); !reason.empty()) {
            ++notRun;
            Tell("not run  " + row.name + ": " + reason);
        } else {
            Judge(row, Execute(row));
        }
    }
    Summarise();
    return failed == 0 && passed > 0 && !interrupted;
}

} // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    wchar_t program[1000] = {};
    GetModuleFileNameW(nullptr, program, 1000);
    const fs::path bundle = fs::path(program).parent_path();
    CaseList list = ReadCases((bundle / "cases.txt").wstring(), Narrow(bundle.wstring()));
    if (list.cases.empty()) {
        std::fprintf(stderr, "runtests: cases.txt, which belongs beside this program, is missing\n");
        return 2;
    }
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return interrupted = true; }, TRUE);
    try {
        return CTestRun(bundle, std::move(list)).Run(count > 1 ? Narrow(arguments[1]) : "") ? 0 : 1;
    } catch (const std::exception& failure) { // caught, so that the machine is restored
        std::fprintf(stderr, "runtests: %s\n", failure.what());
        return 2;
    }
}
