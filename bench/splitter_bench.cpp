// Splitting of a long command line, against the reading of the same words through a standard stream.
#include "foundation/inc/commandlinefo.h"

#include <benchmark/benchmark.h>
#include <sstream>
#include <string>
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

} // namespace

BENCHMARK(SplitCommandLine)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(StandardStream)->Arg(100)->Arg(10000)->Repetitions(5)->ReportAggregatesOnly();
