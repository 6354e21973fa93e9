// A program that is started with an exact command line, its output in pipes.
#pragma once

#include <cstdint>
#include <string>

struct RunResult {
    bool started = false;
    bool late = false; // it was ended when its time was up, with all that it had started
    std::uint32_t code = 0;
    std::string output, errors;
};

/// `line` is the whole command line; `limit` is in seconds. Standard input is empty, and no fault shows a box.
RunResult RunProgram(const std::wstring& program, std::wstring line, const std::wstring& folder, std::uint32_t limit);
