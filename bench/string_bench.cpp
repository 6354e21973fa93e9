// Strings and the pools behind them, against Qt's implicitly shared string, std::u16string and the C library's heap.
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/unicodestring.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <string>
#ifdef BENCH_QT
#include <QString>
#endif

namespace {

using Tsx::CUnicodeString;

// Keeps the compiler from seeing through a value, without touching it.
template <class T>
void Keep(T* pointer) {
    asm volatile("" : : "g"(pointer) : "memory");
}

// A string of each size class stays alive, as in any process: a pool whose last block goes starts over with clean
// pages.
const CUnicodeString* LiveStrings() {
    static const CUnicodeString strings[] = {CUnicodeString(u"123456789"), CUnicodeString(u"1234567890123456789012345"),
                                             CUnicodeString(u"12345678901234567890123456789012345678901234567890")};
    return strings;
}

const std::u16string& Source() {
    static const std::u16string text(200000, u'x');
    return text;
}

void CopyAndDrop(benchmark::State& state) {
    Keep(LiveStrings());
    const CUnicodeString original(Source().data(), 20);
    for (auto _ : state) {
        CUnicodeString copy(original);
        Keep(&copy);
    }
}

void CreateAndDrop(benchmark::State& state) {
    Keep(LiveStrings());
    const auto length = static_cast<std::int32_t>(state.range(0));
    for (auto _ : state) {
        CUnicodeString text(Source().data(), length);
        Keep(&text);
    }
}

void AppendOneByOne(benchmark::State& state) {
    Keep(LiveStrings());
    const auto length = static_cast<std::int32_t>(state.range(0));
    for (auto _ : state) {
        CUnicodeString text;
        for (std::int32_t i = 0; i < length; ++i) {
            text.Append(u'x');
        }
        Keep(&text);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void StandardAppendOneByOne(benchmark::State& state) {
    const auto length = static_cast<std::int32_t>(state.range(0));
    for (auto _ : state) {
        std::u16string text;
        for (std::int32_t i = 0; i < length; ++i) {
            text.push_back(u'x');
        }
        Keep(&text);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void PoolPair(benchmark::State& state) {
    Keep(LiveStrings());
    const auto size = static_cast<std::int32_t>(state.range(0));
    for (auto _ : state) {
        std::int32_t allocated = 0;
        void* block = Tsx::StringAllocator.Alloc(size, allocated);
        Keep(static_cast<char*>(block));
        Tsx::StringAllocator.Free(block, allocated);
    }
}

void LibraryPair(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void* block = std::malloc(size);
        Keep(static_cast<char*>(block));
        std::free(block);
    }
}

#ifdef BENCH_QT
void QtCopyAndDrop(benchmark::State& state) {
    const QString original(reinterpret_cast<const QChar*>(Source().data()), 20);
    for (auto _ : state) {
        QString copy(original);
        Keep(&copy);
    }
}

void QtCreateAndDrop(benchmark::State& state) {
    const auto length = static_cast<int>(state.range(0));
    for (auto _ : state) {
        QString text(reinterpret_cast<const QChar*>(Source().data()), length);
        Keep(&text);
    }
}

BENCHMARK(QtCopyAndDrop)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(QtCreateAndDrop)->Arg(9)->Arg(25)->Arg(57)->Repetitions(9)->ReportAggregatesOnly();
#endif

BENCHMARK(CopyAndDrop)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(CreateAndDrop)->Arg(9)->Arg(25)->Arg(57)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(AppendOneByOne)->Arg(64)->Arg(1000)->Arg(100000)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(StandardAppendOneByOne)->Arg(64)->Arg(1000)->Arg(100000)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(PoolPair)->Arg(32)->Arg(64)->Arg(128)->Arg(300)->Arg(1500)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(LibraryPair)->Arg(32)->Arg(64)->Arg(128)->Arg(300)->Arg(1500)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(PoolPair)->Arg(32)->Threads(2)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(LibraryPair)->Arg(32)->Threads(2)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
