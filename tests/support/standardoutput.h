// Something else in the place of the standard output, and message boxes without a person: for tests of what is written
// and shown.
#pragma once

#include <memory>
#include <string>
#include <string_view>

enum class EOutput { File, Pipe, BrokenPipe, Terminal, NullDevice, Missing };

/// Takes the place of the process's standard output until it is finished or destroyed. The test framework's own output
/// must not fall in between.
class CStandardOutput {
public:
    /// A file holds `content` already and is written behind it.
    explicit CStandardOutput(EOutput kind, std::string_view content = {});
    ~CStandardOutput();
    CStandardOutput(const CStandardOutput&) = delete;
    CStandardOutput& operator=(const CStandardOutput&) = delete;

    /// Called once. Puts the old output back and returns what came: all bytes of the file or the pipe (64 KB at most),
    /// the terminal's lines in UTF-8.
    std::string Finish();

private:
    struct CState;
    std::unique_ptr<CState> state; // null when finished
};

/// Presses the default button of the message boxes that the calling thread shows, until it is finished or destroyed.
class CBoxWatch {
public:
    static const bool SeesIcons;

    CBoxWatch();
    ~CBoxWatch();
    CBoxWatch(const CBoxWatch&) = delete;
    CBoxWatch& operator=(const CBoxWatch&) = delete;

    /// What was shown, a line for each box: "title: text", and where icons are seen " [!]", " [x]" or " [own]" for an
    /// exclamation mark, a hand or another one.
    std::string Finish();

private:
    struct CState;
    std::unique_ptr<CState> state;
};
