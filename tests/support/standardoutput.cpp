#include "tests/support/standardoutput.h"

#include "platform/inc/console.h"
#include "platform/inc/files.h"
#include <array>

using namespace Platform;

CStandardOutput::CStandardOutput(EOutput kind, std::string_view content) : former(GetStdHandle(StdOutputHandle)) {
    if (kind == EOutput::File) {
        folder = std::make_unique<CTestFolder>();
        writing = CreateFile(folder->Write(u"output", content).Text(), GenericRead | GenericWrite, FileShareRead,
                             nullptr, OpenExisting, FileAttributeNormal, nullptr);
        std::int64_t position = 0;
        SetFilePointerEx(writing, 0, position, FileEnd);
    } else if (kind != EOutput::Missing) {
        std::tie(reading, writing) = OpenPipe(kind == EOutput::Terminal);
    }
    if (kind == EOutput::BrokenPipe) {
        CloseHandle(std::exchange(reading, nullptr));
    }
    SetStdHandle(StdOutputHandle, writing);
}

std::string CStandardOutput::Finish() {
    SetStdHandle(StdOutputHandle, former);
    CloseHandle(std::exchange(writing, nullptr));
    std::string all = folder ? folder->Content(u"output") : "";
    std::array<char, 4096> piece{};
    // A terminal whose other end is closed ends in an error.
    for (std::uint32_t count = 0; ReadFile(reading, piece.data(), piece.size(), count) && count > 0;) {
        all.append(piece.data(), count);
    }
    CloseHandle(std::exchange(reading, nullptr));
    return all;
}
