#include "tests/support/standardoutput.h"

#include <utility>
#include <windows.h>

namespace {

std::string Utf8(const wchar_t* text, int length) {
    std::string bytes(static_cast<std::size_t>(length) * 3, 0);
    const int count =
        ::WideCharToMultiByte(CP_UTF8, 0, text, length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

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

/// The lines above the cursor.
std::string ReadScreen(HANDLE console) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    ::GetConsoleScreenBufferInfo(console, &info);
    std::string all;
    for (SHORT row = 0; row < info.dwCursorPosition.Y; ++row) {
        std::wstring line(static_cast<std::size_t>(info.dwSize.X), L' ');
        DWORD count = 0;
        ::ReadConsoleOutputCharacterW(console, line.data(), static_cast<DWORD>(line.size()), {0, row}, &count);
        line.resize(line.find_last_not_of(L' ') + 1);
        all += Utf8(line.data(), static_cast<int>(line.size())) + "\r\n";
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
        case EOutput::Terminal:
            ::FreeConsole();
            ::AllocConsole();
            writing = OpenExisting(L"CONOUT$");
            break;
        case EOutput::NullDevice:
            writing = OpenExisting(L"NUL");
            break;
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
        case EOutput::Terminal:
            return ReadScreen(writing);
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

CStandardOutput::CStandardOutput(EOutput kind, std::string_view content) : state(new CState(kind, content)) {}

CStandardOutput::~CStandardOutput() = default;

std::string CStandardOutput::Finish() {
    return std::unique_ptr<CState>(std::move(state))->Read();
}

namespace {

constexpr int IconControl = 1088;
constexpr int TextControl = 0xFFFF;

thread_local std::string shownBoxes;
thread_local HWND openBox = nullptr;

std::string TextOf(HWND window) {
    wchar_t text[512] = {};
    return Utf8(text, ::GetWindowTextW(window, text, 512));
}

std::string IconOf(HWND box) {
    const auto icon = ::SendMessageW(::GetDlgItem(box, IconControl), STM_GETICON, 0, 0);
    const auto is = [&](LPCTSTR name) {
        return icon == reinterpret_cast<LRESULT>(::LoadIcon(nullptr, name));
    };
    return icon == 0 ? "" : is(IDI_EXCLAMATION) ? " [!]" : is(IDI_HAND) ? " [x]" : " [own]";
}

// The box is complete when its message loop runs.
void CALLBACK AnswerBox(HWND, UINT, UINT_PTR timer, DWORD) {
    ::KillTimer(nullptr, timer);
    HWND box = std::exchange(openBox, nullptr);
    shownBoxes += TextOf(box) + ": " + TextOf(::GetDlgItem(box, TextControl)) + IconOf(box) + "\n";
    ::SendMessageW(box, WM_COMMAND, LOWORD(::GetDlgCtrlID(::GetFocus())), 0);
}

LRESULT CALLBACK WatchWindows(int code, WPARAM window, LPARAM parameter) {
    wchar_t name[16] = {};
    if (code == HCBT_ACTIVATE && ::GetClassNameW(reinterpret_cast<HWND>(window), name, 16) > 0 &&
        std::wstring_view(name) == L"#32770") {
        openBox = reinterpret_cast<HWND>(window);
        ::SetTimer(nullptr, 0, 1, AnswerBox);
    }
    return ::CallNextHookEx(nullptr, code, window, parameter);
}

} // namespace

struct CBoxWatch::CState {
    HHOOK hook = ::SetWindowsHookExW(WH_CBT, WatchWindows, nullptr, ::GetCurrentThreadId());

    CState() { shownBoxes.clear(); }
    ~CState() { ::UnhookWindowsHookEx(hook); }
    CState(const CState&) = delete;
    CState& operator=(const CState&) = delete;
};

const bool CBoxWatch::SeesIcons = true;

CBoxWatch::CBoxWatch() : state(new CState) {}

CBoxWatch::~CBoxWatch() = default;

std::string CBoxWatch::Finish() {
    state.reset();
    return std::move(shownBoxes);
}
