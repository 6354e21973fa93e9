// Starts a Windows program with a command line of exactly the characters wanted, which no shell and no argument list
// can give, and tells its whole exit code.
//
//   launcher PROGRAM LINE CODE    LINE: a file with the command line in UTF-16; CODE: the file for the exit code
//
// The program inherits standard handles, environment and current folder. The launcher's own exit code is 0 if the
// program was started and ended.
#include <cstdio>
#include <string>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

std::wstring ReadLine(const wchar_t* path) {
    std::FILE* file = _wfopen(path, L"rb");
    std::wstring line;
    wchar_t c = 0;
    while (file && std::fread(&c, sizeof(c), 1, file) == 1) {
        line += c;
    }
    if (file) {
        std::fclose(file);
    }
    return line;
}

bool WriteCode(const wchar_t* path, DWORD code) {
    std::FILE* file = _wfopen(path, L"wb");
    return file && std::fprintf(file, "%lu", code) > 0 && std::fclose(file) == 0;
}

} // namespace

extern "C" int wmain(int count, wchar_t** arguments) {
    if (count != 4) {
        return 2;
    }
    std::wstring line = ReadLine(arguments[2]); // the system may write into it
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(arguments[1], line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        std::fprintf(stderr, "launcher: error %lu\n", GetLastError());
        return 1;
    }
    DWORD code = 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    return GetExitCodeProcess(process.hProcess, &code) && WriteCode(arguments[3], code) ? 0 : 1;
}
