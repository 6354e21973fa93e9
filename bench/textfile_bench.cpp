// Reading of a whole text file of 16 MiB, against the peers that read its bytes and convert them. All go through the
// system's page cache.
#include "foundation/inc/textstream.h"
#include "platform/inc/text.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <iconv.h>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>
#ifdef BENCH_ICU
#include <unicode/ustring.h>
#endif
#ifdef BENCH_QT
#include <QFile>
#include <QString>
#endif

namespace {

constexpr std::size_t FileSize = std::size_t{16} << 20;

enum ESample : std::int64_t { Latin, Cyrillic, Utf16 };

std::string Content(std::int64_t sample) {
    static const std::vector<std::string> latin = {"the ", "message ", "was ", "handed ", "over\r\n", "to ", "Grüße "};
    static const std::vector<std::string> cyrillic = {"сообщение ", "передано ", "в ", "ждёт\r\n", "программе "};
    const std::vector<std::string>& words = sample == Cyrillic ? cyrillic : latin;
    std::mt19937 random(7);
    std::string text = "\xEF\xBB\xBF";
    while (text.size() < FileSize) {
        text += words[random() % words.size()];
    }
    if (sample == Utf16) {
        const Tsx::CUnicodeString wide(text.c_str(), Platform::CodePageUtf8);
        text.assign(reinterpret_cast<const char*>(wide.Text()), static_cast<std::size_t>(wide.Length()) * 2);
    }
    return text;
}

/// The file of a sample, made at its first use and gone at the end of the process.
class CSampleFile {
public:
    explicit CSampleFile(std::int64_t sample)
        : path(std::filesystem::temp_directory_path() /
               ("text" + std::to_string(getpid()) + "." + std::to_string(sample))) {
        std::ofstream(path, std::ios::binary) << Content(sample);
    }
    ~CSampleFile() { std::filesystem::remove(path); }
    const std::filesystem::path path;

    static const std::string& Of(const benchmark::State& state) {
        static const CSampleFile files[] = {CSampleFile(Latin), CSampleFile(Cyrillic), CSampleFile(Utf16)};
        return files[state.range(0)].path.native();
    }
};

struct CBytes {
    std::unique_ptr<char[]> bytes;
    std::size_t count;
};

/// What every peer has to do first.
CBytes ReadBytes(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    const std::size_t size = std::filesystem::file_size(path);
    CBytes content{std::unique_ptr<char[]>(new char[size]), size};
    content.count = std::fread(content.bytes.get(), 1, size, file);
    std::fclose(file);
    return content;
}

void Report(benchmark::State& state) {
    const std::uintmax_t size = std::filesystem::file_size(CSampleFile::Of(state));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void ReadOurs(benchmark::State& state) {
    const Tsx::CUnicodeString path(CSampleFile::Of(state).c_str(), Tsx::AnsiCodePage);
    for (auto _ : state) {
        const Tsx::CUnicodeString text = Tsx::ReadTextFile(path);
        benchmark::DoNotOptimize(text.Text());
    }
    Report(state);
}

void ReadBytesOnly(benchmark::State& state) {
    for (auto _ : state) {
        const CBytes content = ReadBytes(CSampleFile::Of(state));
        benchmark::DoNotOptimize(content.bytes.get());
    }
    Report(state);
}

// Our own converter after the bytes, into a buffer that is large enough at once.
void ReadAndConvert(benchmark::State& state) {
    for (auto _ : state) {
        const CBytes content = ReadBytes(CSampleFile::Of(state));
        const auto size = static_cast<std::int32_t>(content.count);
        std::unique_ptr<char16_t[]> text(new char16_t[content.count]);
        benchmark::DoNotOptimize(
            Platform::MultiByteToWideChar(Platform::CodePageUtf8, 0, content.bytes.get(), size, text.get(), size));
        benchmark::DoNotOptimize(text.get());
    }
    Report(state);
}

void ReadIconv(benchmark::State& state) {
    const iconv_t converter = iconv_open("UTF-16LE", state.range(0) == Utf16 ? "UTF-16" : "UTF-8");
    for (auto _ : state) {
        CBytes content = ReadBytes(CSampleFile::Of(state));
        std::unique_ptr<char16_t[]> text(new char16_t[content.count]);
        char* in = content.bytes.get();
        auto* out = reinterpret_cast<char*>(text.get());
        std::size_t outLeft = content.count * sizeof(char16_t);
        benchmark::DoNotOptimize(iconv(converter, &in, &content.count, &out, &outLeft));
        benchmark::DoNotOptimize(text.get());
    }
    iconv_close(converter);
    Report(state);
}

#ifdef BENCH_ICU
void ReadIcu(benchmark::State& state) {
    for (auto _ : state) {
        const CBytes content = ReadBytes(CSampleFile::Of(state));
        std::unique_ptr<char16_t[]> text(new char16_t[content.count]);
        const auto size = static_cast<std::int32_t>(content.count);
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t length = 0;
        u_strFromUTF8WithSub(text.get(), size, &length, content.bytes.get(), size, 0xFFFD, nullptr, &error);
        benchmark::DoNotOptimize(text.get());
    }
    Report(state);
}
#endif

#ifdef BENCH_QT
void ReadQt(benchmark::State& state) {
    for (auto _ : state) {
        QFile file(QString::fromUtf8(CSampleFile::Of(state).c_str()));
        file.open(QIODevice::ReadOnly);
        const QString text = QString::fromUtf8(file.readAll());
        benchmark::DoNotOptimize(text.utf16());
    }
    Report(state);
}
#endif

void Utf8Samples(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("latin0_cyrillic1_utf16_2")->Arg(Latin)->Arg(Cyrillic);
    benchmark->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMillisecond);
}
void AllSamples(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(Utf16)->Apply(Utf8Samples);
}

} // namespace

BENCHMARK(ReadOurs)->Apply(AllSamples);
BENCHMARK(ReadBytesOnly)->Apply(AllSamples);
BENCHMARK(ReadAndConvert)->Apply(Utf8Samples);
BENCHMARK(ReadIconv)->Apply(AllSamples);
#ifdef BENCH_ICU
BENCHMARK(ReadIcu)->Apply(Utf8Samples);
#endif
#ifdef BENCH_QT
BENCHMARK(ReadQt)->Apply(Utf8Samples);
#endif
