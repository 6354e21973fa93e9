#include "tests/support/standardoutput.h"

#include <utility>
#include <windows.h>

struct CStandardOutput::CState {
    HANDLE kept = ::GetStdHandle(STD_OUTPUT_HANDLE);
    HANDLE writing = nullptr;
    HANDLE reading = nullptr;

    CState(EOutput kind, std::string_view content) {
        wchar_t path[MAX_PATH] = L"NUL";
        if (kind == EOutput::File) {
            wchar_t folder[MAX_PATH] = {};
            ::GetTempPathW(MAX_PATH, folder);
            ::GetTempFileNameW(folder, L"out", 0, path);
        }
        if (kind == EOutput::File || kind == EOutput::NullDevice) {
            writing = ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, kind == EOutput::File ? FILE_FLAG_DELETE_ON_CLOSE : 0, nullptr);
        }
        if (kind == EOutput::File) {
            DWORD written = 0;
            ::WriteFile(writing, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
            ::DuplicateHandle(::GetCurrentProcess(), writing, ::GetCurrentProcess(), &reading, 0, FALSE,
                              DUPLICATE_SAME_ACCESS);
        } else if (kind == EOutput::Pipe || kind == EOutput::BrokenPipe) {
            ::CreatePipe(&reading, &writing, nullptr, 0x10000);
        }
        if (kind == EOutput::BrokenPipe) {
            Close(reading);
        }
        ::SetStdHandle(STD_OUTPUT_HANDLE, writing); // none for a terminal, which would need a display
    }
    ~CState() {
        ::SetStdHandle(STD_OUTPUT_HANDLE, kept);
        Close(writing);
        Close(reading);
    }
    CState(const CState&) = delete;
    CState& operator=(const CState&) = delete;

    std::string Read() {
        Close(writing);
        ::SetFilePointer(reading, 0, nullptr, FILE_BEGIN);
        std::string all;
        char piece[4096];
        DWORD count = 0;
        while (::ReadFile(reading, piece, sizeof(piece), &count, nullptr) && count > 0) {
            all.append(piece, count);
        }
        return all;
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
