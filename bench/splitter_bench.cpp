// Splitting of a long command line, against the reading of the same words through a standard stream; and of a response
// file with a million words, whose peak in memory stands beside the time.
#include "foundation/inc/commandlinefo.h"

#include <array>
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

std::u16string Line(std::int64_t words) {
    std::u16string line;
    for (std::int64_t i = 0; i < words; ++i) {
        line += u"-attachment:folder/name ";
    }
    return line;
}

void SplitCommandLine(benchmark::State& state) {
    const std::u16string line = Line(state.range(0));
    const Tsx::CUnicodeString text(line.c_str());
    for (auto _ : state) {
        Tsx::CArray<Tsx::CUnicodeString> tokens;
        Tsx::SplitCommandLine(tokens, text);
        benchmark::DoNotOptimize(tokens.Size());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size() * sizeof(char16_t)));
}

void StandardStream(benchmark::State& state) {
    const std::u16string wide = Line(state.range(0));
    const std::string line(wide.begin(), wide.end());
    for (auto _ : state) {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        benchmark::DoNotOptimize(words.size());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(wide.size() * sizeof(char16_t)));
}

/// The most bytes that an action adds to this process's memory, in a process of its own.
template <class TAction>
std::int64_t PeakOf(TAction action) {
    const auto mostSoFar = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    int ends[2];
    if (pipe(ends) != 0) {
        return 0;
    }
    std::int64_t peak = 0;
    if (fork() == 0) {
        const std::int64_t before = mostSoFar();
        action();
        peak = (mostSoFar() - before) * 1024;
        _exit(write(ends[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
    }
    wait(nullptr);
    if (read(ends[0], &peak, sizeof peak) != sizeof peak) {
        peak = 0;
    }
    close(ends[0]);
    close(ends[1]);
    return peak;
}

enum EWords { Positional, LongPositional, OneOption, OptionsInTurn, DifferentOptions };

std::string Word(EWords words, int i) {
    const std::string number = std::to_string(1000000 + i);
    switch (words) {
    case Positional:
        return "p" + number;
    case LongPositional:
        return "folder/with/some/more/folders/inside/" + number + ".txt";
    case OneOption:
        return "-attachment:folder/" + number;
    case OptionsInTurn:
        return std::string(i % 2 == 0 ? "-attachment:" : "-recipient:") + number;
    default:
        return "-" + number + ":value";
    }
}

/// A response file of a million words, gone at the end.
class CResponseFile {
public:
    explicit CResponseFile(EWords words)
        : path((std::filesystem::temp_directory_path() / ("split" + std::to_string(getpid()))).string()) {
        std::string text;
        for (int i = 0; i < 1000000; ++i) {
            text += Word(words, i) + "\n";
        }
        std::ofstream(path) << text;
    }
    ~CResponseFile() { std::filesystem::remove(path); }
    CResponseFile(const CResponseFile&) = delete;
    CResponseFile& operator=(const CResponseFile&) = delete;

    void Split() const {
        Tsx::CArray<Tsx::CUnicodeString> tokens;
        Tsx::SplitCommandLine(tokens, Tsx::CUnicodeString(("@" + path).c_str(), Tsx::AnsiCodePage));
        benchmark::DoNotOptimize(tokens.Size());
    }
    std::int64_t TextBytes() const {
        return static_cast<std::int64_t>(std::filesystem::file_size(path) * sizeof(char16_t));
    }

private:
    const std::string path;
};

/// The peak of each kind of words, all told before this process has split one: its pools would keep what the first
/// took.
double PeakOfText(EWords words) {
    static const auto peaks = [] {
        std::array<double, DifferentOptions + 1> all{};
        for (const EWords each : {Positional, LongPositional, OneOption, OptionsInTurn, DifferentOptions}) {
            const CResponseFile file(each);
            all[each] = static_cast<double>(PeakOf([&] { file.Split(); })) / static_cast<double>(file.TextBytes());
        }
        return all;
    }();
    return peaks[words];
}

void ResponseFile(benchmark::State& state, EWords words) {
    const double peak = PeakOfText(words);
    const CResponseFile file(words);
    for (auto _ : state) {
        file.Split();
    }
    state.SetBytesProcessed(state.iterations() * file.TextBytes());
    state.counters["peak/text"] = peak;
}

} // namespace

BENCHMARK_CAPTURE(ResponseFile, positional, Positional)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, longPositional, LongPositional)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, oneOption, OneOption)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, optionsInTurn, OptionsInTurn)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, differentOptions, DifferentOptions)->Unit(benchmark::kMillisecond);
BENCHMARK(SplitCommandLine)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(StandardStream)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
