// UTF-8 to UTF-16 and back, 1 MiB of text, against the peers found at configure time: into the caller's buffer, where
// ICU is the peer, and into a string of its own as callers of FromNarrow and ToNarrow have it, where Qt is.
#include "foundation/inc/unicodestring.h"
#include "platform/inc/text.h"

#include <benchmark/benchmark.h>
#include <random>
#include <string>
#include <vector>
#ifdef BENCH_ICU
#include <unicode/ustring.h>
#endif
#ifdef BENCH_QT
#include <QString>
#endif

namespace {

constexpr std::size_t TextSize = std::size_t{1} << 20;

// The words of a text come in no order that a processor could learn.
std::string Utf8Sample(std::int64_t which) {
    static const std::vector<std::string> latin = {"the", "message", "was",   "handed", "over",       "to",
                                                   "a",   "program", "Grüße", "of",     "attachments"};
    static const std::vector<std::string> cyrillic = {"и",         "ждёт", "сообщение", "передано", "почтовой",
                                                      "программе", "в",    "на",        "Иван",     "отправки"};
    std::mt19937 random(2026);
    std::string text;
    while (text.size() < TextSize) {
        const bool fromLatin = which == 0 ? random() % 2 == 0 : which == 1;
        const std::vector<std::string>& words = fromLatin ? latin : cyrillic;
        const std::string& word = words[random() % words.size()];
        if (which != 1 || word != "Grüße") {
            text += word + (random() % 8 == 0 ? ", " : " ");
        }
    }
    return text;
}

std::int32_t Size(const std::string& text) {
    return static_cast<std::int32_t>(text.size());
}

std::u16string Utf16Sample(std::int64_t which) {
    const std::string text = Utf8Sample(which);
    std::u16string wide(text.size(), u'\0');
    wide.resize(static_cast<std::size_t>(
        Platform::MultiByteToWideChar(Platform::CodePageUtf8, 0, text.data(), Size(text), wide.data(), Size(text))));
    return wide;
}

// What a conversion of `bytes` bytes of UTF-8 writes is read by nobody; the barrier keeps it from being left out.
void Report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void DecodeOurs(benchmark::State& state) {
    const std::string text = Utf8Sample(state.range(0));
    std::u16string out(Utf16Sample(state.range(0)).size(), u'\0');
    for (auto _ : state) {
        std::int32_t size = Platform::MultiByteToWideChar(Platform::CodePageUtf8, 0, text.data(), Size(text),
                                                          out.data(), static_cast<std::int32_t>(out.size()));
        benchmark::DoNotOptimize(size);
        benchmark::ClobberMemory();
    }
    Report(state, text.size());
}

void DecodeOursSizeOnly(benchmark::State& state) {
    const std::string text = Utf8Sample(state.range(0));
    for (auto _ : state) {
        std::int32_t size =
            Platform::MultiByteToWideChar(Platform::CodePageUtf8, 0, text.data(), Size(text), nullptr, 0);
        benchmark::DoNotOptimize(size);
    }
    Report(state, text.size());
}

void EncodeOurs(benchmark::State& state) {
    const std::u16string text = Utf16Sample(state.range(0));
    std::string out(Utf8Sample(state.range(0)).size(), '\0');
    for (auto _ : state) {
        std::int32_t size = Platform::WideCharToMultiByte(
            Platform::CodePageUtf8, 0, text.data(), static_cast<std::int32_t>(text.size()), out.data(), Size(out));
        benchmark::DoNotOptimize(size);
        benchmark::ClobberMemory();
    }
    Report(state, out.size());
}

void EncodeOursSizeOnly(benchmark::State& state) {
    const std::u16string text = Utf16Sample(state.range(0));
    for (auto _ : state) {
        std::int32_t size = Platform::WideCharToMultiByte(Platform::CodePageUtf8, 0, text.data(),
                                                          static_cast<std::int32_t>(text.size()), nullptr, 0);
        benchmark::DoNotOptimize(size);
    }
    Report(state, Utf8Sample(state.range(0)).size());
}

#ifdef BENCH_ICU
void DecodeIcu(benchmark::State& state) {
    const std::string text = Utf8Sample(state.range(0));
    std::u16string out(text.size(), u'\0');
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t size = 0;
        u_strFromUTF8WithSub(out.data(), Size(text), &size, text.data(), Size(text), 0xFFFD, nullptr, &error);
        benchmark::DoNotOptimize(size);
        benchmark::ClobberMemory();
    }
    Report(state, text.size());
}

void EncodeIcu(benchmark::State& state) {
    const std::u16string text = Utf16Sample(state.range(0));
    std::string out(text.size() * 3, '\0');
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t size = 0;
        u_strToUTF8WithSub(out.data(), Size(out), &size, text.data(), static_cast<std::int32_t>(text.size()), 0xFFFD,
                           nullptr, &error);
        benchmark::DoNotOptimize(size);
        benchmark::ClobberMemory();
    }
    Report(state, Utf8Sample(state.range(0)).size());
}
#endif

// A string of its own each time, also for Qt, which has no conversion into a buffer.
void FromNarrowOurs(benchmark::State& state) {
    const std::string text = Utf8Sample(state.range(0));
    for (auto _ : state) {
        const auto out = Tsx::CUnicodeString::FromNarrow(text.data(), Size(text), Platform::CodePageUtf8);
        std::int32_t size = out.Length();
        benchmark::DoNotOptimize(size);
    }
    Report(state, text.size());
}

void ToNarrowOurs(benchmark::State& state) {
    const std::u16string wide = Utf16Sample(state.range(0));
    const Tsx::CUnicodeString text(wide.data(), static_cast<std::int32_t>(wide.size()));
    for (auto _ : state) {
        const Tsx::CString out = text.ToNarrow(Platform::CodePageUtf8);
        std::int32_t size = out.Length();
        benchmark::DoNotOptimize(size);
    }
    Report(state, Utf8Sample(state.range(0)).size());
}

#ifdef BENCH_QT
void FromUtf8Qt(benchmark::State& state) {
    const std::string text = Utf8Sample(state.range(0));
    for (auto _ : state) {
        const QString out = QString::fromUtf8(text.data(), Size(text));
        std::int32_t size = out.size();
        benchmark::DoNotOptimize(size);
    }
    Report(state, text.size());
}

void ToUtf8Qt(benchmark::State& state) {
    const std::u16string wide = Utf16Sample(state.range(0));
    const QString text = QString::fromUtf16(wide.data(), static_cast<int>(wide.size()));
    for (auto _ : state) {
        const QByteArray out = text.toUtf8();
        std::int32_t size = out.size();
        benchmark::DoNotOptimize(size);
    }
    Report(state, Utf8Sample(state.range(0)).size());
}
#endif

void EachSample(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("mixed0_latin1_cyrillic2")->Arg(0)->Arg(1)->Arg(2)->Repetitions(9)->ReportAggregatesOnly();
}

} // namespace

BENCHMARK(DecodeOurs)->Apply(EachSample);
BENCHMARK(EncodeOurs)->Apply(EachSample);
#ifdef BENCH_ICU
BENCHMARK(DecodeIcu)->Apply(EachSample);
BENCHMARK(EncodeIcu)->Apply(EachSample);
#endif
BENCHMARK(FromNarrowOurs)->Apply(EachSample);
BENCHMARK(ToNarrowOurs)->Apply(EachSample);
#ifdef BENCH_QT
BENCHMARK(FromUtf8Qt)->Apply(EachSample);
BENCHMARK(ToUtf8Qt)->Apply(EachSample);
#endif
BENCHMARK(DecodeOursSizeOnly)->Apply(EachSample);
BENCHMARK(EncodeOursSizeOnly)->Apply(EachSample);
