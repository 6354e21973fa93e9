// Something else in the place of the standard output, for tests of what is written.
#pragma once

#include "platform/inc/types.h"
#include "tests/support/folder.h"
#include <memory>
#include <string>
#include <string_view>
#include <utility>

enum class EOutput { File, Pipe, BrokenPipe, Terminal, Missing };

/// What is written to the second handle is read from the first. A terminal repairs no line ends.
std::pair<Platform::Handle, Platform::Handle> OpenPipe(bool isTerminal);

/// Takes the place of the standard output until it is finished or destroyed.
class CStandardOutput {
public:
    static const bool HasTerminals; // a console of its own needs a display on Windows

    /// A file holds `content` already and is written behind it.
    explicit CStandardOutput(EOutput kind, std::string_view content = {});
    ~CStandardOutput() { Finish(); }
    CStandardOutput(const CStandardOutput&) = delete;
    CStandardOutput& operator=(const CStandardOutput&) = delete;

    /// Puts the old output back and returns what came: all bytes of the file or the pipe (64 KB at most), the bytes of
    /// the terminal.
    std::string Finish();

private:
    std::unique_ptr<CTestFolder> folder; // for a file
    Platform::Handle former;
    Platform::Handle reading = nullptr, writing = nullptr;
};
