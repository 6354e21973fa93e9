// Something else in the place of the standard output, for tests of what is written.
#pragma once

#include <memory>
#include <string>
#include <string_view>

enum class EOutput { File, Pipe, BrokenPipe, Terminal, NullDevice, Missing };

/// Takes the place of the process's standard output until it is finished or destroyed. The test framework's own output
/// must not fall in between.
class CStandardOutput {
public:
    static const bool HasTerminals; // a console of its own needs a display on Windows

    /// A file holds `content` already and is written behind it.
    explicit CStandardOutput(EOutput kind, std::string_view content = {});
    ~CStandardOutput();
    CStandardOutput(const CStandardOutput&) = delete;
    CStandardOutput& operator=(const CStandardOutput&) = delete;

    /// Called once. Puts the old output back and returns what came: all bytes of the file or the pipe (64 KB at most),
    /// the bytes of the terminal.
    std::string Finish();

private:
    struct CState;
    std::unique_ptr<CState> state; // null when finished
};
