// Splitting of a long command line, against the reading of the same words through a standard stream; and of a response
// file with a million words, whose peak in memory stands beside the time.
#include "foundation/inc/commandlinefo.h"

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

/// The most bytes that an action adds to this process's memory. In a process of its own, since the pools of this one
/// keep what earlier actions took; a filter that names one benchmark gives the truest figure.
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

void ResponseFile(benchmark::State& state, EWords words) {
    const std::string path = (std::filesystem::temp_directory_path() / ("split" + std::to_string(getpid()))).string();
    std::ofstream(path) << [words] {
        std::string text;
        for (int i = 0; i < 1000000; ++i) {
            text += Word(words, i) + "\n";
        }
        return text;
    }();
    const Tsx::CUnicodeString line(("@" + path).c_str(), Tsx::AnsiCodePage);
    const auto textBytes = static_cast<std::int64_t>(std::filesystem::file_size(path) * sizeof(char16_t));
    const auto split = [&line] {
        Tsx::CArray<Tsx::CUnicodeString> tokens;
        Tsx::SplitCommandLine(tokens, line);
        benchmark::DoNotOptimize(tokens.Size());
    };
    const std::int64_t peak = PeakOf(split);
    for (auto _ : state) {
        split();
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(state.iterations() * textBytes);
    state.counters["peak/text"] = static_cast<double>(peak) / static_cast<double>(textBytes);
}

} // namespace

BENCHMARK(SplitCommandLine)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(StandardStream)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK_CAPTURE(ResponseFile, positional, Positional)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, longPositional, LongPositional)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, oneOption, OneOption)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, optionsInTurn, OptionsInTurn)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResponseFile, differentOptions, DifferentOptions)->Unit(benchmark::kMillisecond);
