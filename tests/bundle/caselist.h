// The runs of the bundle, as the file with all of them describes them; bundle.py has that file's format.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What is expected of a text.
struct Expectation {
    bool isPattern = false; // in the dialect of std::regex
    std::string text;

    bool IsMetBy(const std::string& found) const;
};

/// What is expected of a run; nothing where it doesn't matter.
struct Answer {
    std::optional<std::uint32_t> code;
    std::optional<Expectation> output, transcript;
};

struct TestFile {
    std::wstring name;
    std::string content;
    std::size_t times = 1;
};

using Values = std::vector<std::pair<std::wstring, std::wstring>>;

struct TestCase {
    std::string name;
    std::wstring program, line;
    std::uint32_t limit = 0;           // seconds
    std::string client;                // "simple", "extended" or none
    Values user, machine, environment; // settings of the foundation, environment variables
    std::vector<TestFile> files;
    Answer expected, underWine; // what Wine answers instead
    std::string skippedUnderWine;
    std::string skipped; // the reason; empty: it is to be run
};

struct CaseList {
    std::string version; // of the program
    std::vector<TestCase> cases;
};

/// Reads the file; `folder` is put in the place of `{bundle}`.
CaseList ReadCases(const std::wstring& path, const std::string& folder);
