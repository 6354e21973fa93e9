#include "tests/support/standardoutput.h"

#include <utility>
#include <windows.h>

namespace {

HANDLE OpenTemporaryFile(std::string_view content) {
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    ::GetTempPathW(MAX_PATH, folder);
    ::GetTempFileNameW(folder, L"out", 0, path);
    HANDLE file = ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    DWORD written = 0;
    ::WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
    return file;
}

HANDLE OpenExisting(const wchar_t* name) {
    return ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                         0, nullptr);
}

std::string ReadRest(HANDLE file) {
    std::string all;
    char piece[4096];
    DWORD count = 0;
    while (::ReadFile(file, piece, sizeof(piece), &count, nullptr) && count > 0) {
        all.append(piece, count);
    }
    return all;
}

} // namespace

struct CStandardOutput::CState {
    EOutput kind;
    HANDLE kept = ::GetStdHandle(STD_OUTPUT_HANDLE);
    HANDLE writing = nullptr;
    HANDLE reading = nullptr; // of a pipe

    CState(EOutput outputKind, std::string_view content) : kind(outputKind) {
        switch (kind) {
        case EOutput::File:
            writing = OpenTemporaryFile(content);
            break;
        case EOutput::Pipe:
            ::CreatePipe(&reading, &writing, nullptr, 0x10000);
            break;
        case EOutput::BrokenPipe:
            ::CreatePipe(&reading, &writing, nullptr, 0x10000);
            Close(reading);
            break;
        case EOutput::NullDevice:
            writing = OpenExisting(L"NUL");
            break;
        case EOutput::Terminal: // would need a display
        case EOutput::Missing:
            break;
        }
        ::SetStdHandle(STD_OUTPUT_HANDLE, writing);
    }
    ~CState() {
        ::SetStdHandle(STD_OUTPUT_HANDLE, kept);
        Close(writing);
        Close(reading);
    }
    CState(const CState&) = delete;
    CState& operator=(const CState&) = delete;

    std::string Read() {
        switch (kind) {
        case EOutput::File:
            ::SetFilePointer(writing, 0, nullptr, FILE_BEGIN);
            return ReadRest(writing);
        case EOutput::Pipe:
            Close(writing);
            return ReadRest(reading);
        default:
            return {};
        }
    }

    static void Close(HANDLE& handle) {
        if (handle) {
            ::CloseHandle(std::exchange(handle, nullptr));
        }
    }
};

const bool CStandardOutput::HasTerminals = false;

CStandardOutput::CStandardOutput(EOutput kind, std::string_view content) : state(new CState(kind, content)) {}

CStandardOutput::~CStandardOutput() = default;

std::string CStandardOutput::Finish() {
    return std::unique_ptr<CState>(std::move(state))->Read();
}
