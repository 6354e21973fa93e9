#include "tests/bundle/childprocess.h"

#include <thread>
#include <utility>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

class COwnHandle {
public:
    explicit COwnHandle(HANDLE owned = nullptr) : handle(owned) {}
    ~COwnHandle() { Close(); }
    COwnHandle(const COwnHandle&) = delete;
    COwnHandle& operator=(const COwnHandle&) = delete;

    HANDLE Get() const { return handle; }
    HANDLE* Place() { return &handle; }
    void Close() {
        if (handle && handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
        handle = nullptr;
    }

private:
    HANDLE handle;
};

/// A stream of the child, read on a thread of its own until its last writer is gone.
class CCapturedStream {
public:
    CCapturedStream() {
        CreatePipe(reading.Place(), writing.Place(), nullptr, 0);
        SetHandleInformation(writing.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }
    HANDLE Writer() const { return writing.Get(); }
    void Start() {
        writing.Close();
        reader = std::thread([this] {
            char piece[0x10000];
            DWORD count = 0;
            while (ReadFile(reading.Get(), piece, sizeof(piece), &count, nullptr) && count > 0) {
                content.append(piece, count);
            }
        });
    }
    std::string Finish() {
        reader.join();
        return std::move(content);
    }

private:
    COwnHandle reading, writing;
    std::string content;
    std::thread reader;
};

HANDLE EmptyInput() {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    return CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr);
}

// What ends with its last handle ends whatever the child has left running.
HANDLE NewJob() {
    HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

} // namespace

RunResult RunProgram(const std::wstring& program, std::wstring line, const std::wstring& folder, std::uint32_t limit) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    RunResult result;
    const COwnHandle input(EmptyInput());
    CCapturedStream output;
    CCapturedStream errors;
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.Get();
    start.hStdOutput = output.Writer();
    start.hStdError = errors.Writer();
    PROCESS_INFORMATION process{};
    result.started = CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                                    folder.c_str(), &start, &process);
    output.Start();
    errors.Start();
    if (result.started) {
        const COwnHandle child(process.hProcess);
        const COwnHandle thread(process.hThread);
        COwnHandle job(NewJob());
        AssignProcessToJobObject(job.Get(), child.Get());
        ResumeThread(thread.Get());
        result.late = WaitForSingleObject(child.Get(), limit * 1000) != WAIT_OBJECT_0;
        if (result.late) {
            TerminateJobObject(job.Get(), 1);
            WaitForSingleObject(child.Get(), 5000);
        }
        DWORD code = 0;
        GetExitCodeProcess(child.Get(), &code);
        result.code = code;
    }
    result.output = output.Finish();
    result.errors = errors.Finish();
    return result;
}
