// The archive in pieces of a fixed size, against the C library's streams, locked and unlocked, and Qt's: what is
// measured is the way of a piece to and from the buffer, of 4096 bytes over the same memory. The C library's and Qt's
// streams read ahead by their own rules. Qt's bare stream over its own byte array stands beside them: it has no buffer,
// so that each byte is copied once and not twice.
#include "foundation/inc/archive.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>
#include <vector>

#ifdef BENCH_QT
#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#endif

namespace {

constexpr std::int64_t TotalBytes = std::int64_t{1} << 20; // fits the processor's cache with room to spare

/// A file over fixed memory.
class CFixedFile : public Tsx::CBaseFile {
public:
    std::vector<char> bytes = std::vector<char>(TotalBytes, 'x');
    std::int64_t position = 0;

    std::int32_t Copy(char* to, const char* from, std::int64_t count) {
        count = std::min(count, TotalBytes - position);
        std::memcpy(to, from, static_cast<std::size_t>(count));
        position += count;
        return static_cast<std::int32_t>(count);
    }
    Tsx::CUnicodeString GetFileName() const override { return u"fixed"; }
    std::int32_t Read(void* buffer, std::int32_t count) override {
        return Copy(static_cast<char*>(buffer), bytes.data() + position, count);
    }
    void Write(const void* buffer, std::int32_t count) override {
        Copy(bytes.data() + position, static_cast<const char*>(buffer), count);
    }
    std::int64_t GetPosition() const override { return position; }
    std::int64_t Seek(std::int64_t offset, std::uint32_t) override { return position += offset; }
    void SetLength(std::int64_t) override {}
    std::int64_t GetLength() const override { return TotalBytes; }
    void Abort() override {}
    void Flush() override {}
    void Close() override {}
};

/// A stream of the C library over such a file.
std::FILE* OpenStream(CFixedFile& file, const char* mode, char* buffer) {
    cookie_io_functions_t functions{};
    functions.read = [](void* cookie, char* to, std::size_t count) -> ssize_t {
        return static_cast<CFixedFile*>(cookie)->Read(to, static_cast<std::int32_t>(count));
    };
    functions.write = [](void* cookie, const char* from, std::size_t count) -> ssize_t {
        static_cast<CFixedFile*>(cookie)->Write(from, static_cast<std::int32_t>(count));
        return static_cast<ssize_t>(count);
    };
    std::FILE* stream = fopencookie(&file, mode, functions);
    std::setvbuf(stream, buffer, _IOFBF, 4096);
    return stream;
}

/// A run hands the whole over in pieces of that size; `transfer` writes one, or reads into it.
template <std::int32_t Size, class TTransfer>
void InPieces(TTransfer transfer) {
    char piece[static_cast<std::size_t>(Size)] = {};
    for (std::int64_t done = 0; done < TotalBytes; done += Size) {
        benchmark::DoNotOptimize(piece);
        transfer(piece);
        benchmark::DoNotOptimize(piece);
    }
}

/// Measures runs, each from the file's beginning.
template <class TRun>
void Measure(benchmark::State& state, TRun run) {
    CFixedFile file;
    for (auto _ : state) {
        file.position = 0;
        run(file);
    }
    state.SetBytesProcessed(state.iterations() * TotalBytes);
}

template <std::int32_t Size>
void ArchiveWrite(benchmark::State& state) {
    Measure(state, [](CFixedFile& file) {
        Tsx::CArchive archive(&file, Tsx::AD_Store);
        InPieces<Size>([&](char* piece) { archive.Write(piece, Size); });
        archive.Close();
    });
}

template <std::int32_t Size>
void ArchiveRead(benchmark::State& state) {
    Measure(state, [](CFixedFile& file) {
        Tsx::CArchive archive(&file, Tsx::AD_Load);
        InPieces<Size>([&](char* piece) { archive.Read(piece, Size); });
    });
}

template <std::int32_t Size, auto Transfer>
void MeasureStream(benchmark::State& state, const char* mode) {
    char buffer[4096];
    Measure(state, [&](CFixedFile& file) {
        std::FILE* stream = OpenStream(file, mode, buffer);
        InPieces<Size>([&](char* piece) { benchmark::DoNotOptimize(Transfer(piece, 1, Size, stream)); });
        std::fclose(stream);
    });
}

template <std::int32_t Size, auto WriteTo>
void StreamWrite(benchmark::State& state) {
    MeasureStream<Size, WriteTo>(state, "w");
}

template <std::int32_t Size, auto ReadFrom>
void StreamRead(benchmark::State& state) {
    MeasureStream<Size, ReadFrom>(state, "r");
}

#ifdef BENCH_QT
/// The same file for Qt, written through a buffer like the archive's. Qt buffers by itself what it reads.
class CQtDevice : public QIODevice {
public:
    explicit CQtDevice(CFixedFile& target) : file(target) {}
    ~CQtDevice() override { Flush(); }
    CQtDevice(const CQtDevice&) = delete;
    CQtDevice& operator=(const CQtDevice&) = delete;

protected:
    qint64 readData(char* to, qint64 count) override { return file.Read(to, static_cast<std::int32_t>(count)); }
    qint64 writeData(const char* from, qint64 count) override {
        if (filled + count > BufferSize) {
            Flush();
        }
        std::memcpy(buffer + filled, from, static_cast<std::size_t>(count)); // no piece is larger than the buffer
        filled += count;
        return count;
    }

private:
    static constexpr qint64 BufferSize = 4096;
    CFixedFile& file;
    char buffer[BufferSize];
    qint64 filled = 0;

    void Flush() {
        file.Write(buffer, static_cast<std::int32_t>(filled));
        filled = 0;
    }
};

template <std::int32_t Size>
void WriteByQt(QIODevice& device) {
    device.open(QIODevice::WriteOnly);
    QDataStream stream(&device);
    InPieces<Size>([&](char* piece) { stream.writeRawData(piece, Size); });
}

template <std::int32_t Size>
void ReadByQt(QIODevice& device) {
    device.open(QIODevice::ReadOnly);
    QDataStream stream(&device);
    InPieces<Size>([&](char* piece) { stream.readRawData(piece, Size); });
}

template <std::int32_t Size>
void QtBufferedWrite(benchmark::State& state) {
    Measure(state, [](CFixedFile& file) {
        CQtDevice device(file);
        WriteByQt<Size>(device);
    });
}

template <std::int32_t Size>
void QtBufferedRead(benchmark::State& state) {
    Measure(state, [](CFixedFile& file) {
        CQtDevice device(file);
        ReadByQt<Size>(device);
    });
}

// Qt's own device over bytes in memory, which copies each byte once.
template <std::int32_t Size>
void QtUnbufferedWrite(benchmark::State& state) {
    QByteArray bytes;
    bytes.reserve(static_cast<int>(TotalBytes));
    Measure(state, [&](CFixedFile&) {
        bytes.resize(0);
        QBuffer device(&bytes);
        WriteByQt<Size>(device);
    });
}

template <std::int32_t Size>
void QtUnbufferedRead(benchmark::State& state) {
    QByteArray bytes(static_cast<int>(TotalBytes), 'x');
    Measure(state, [&](CFixedFile&) {
        QBuffer device(&bytes);
        ReadByQt<Size>(device);
    });
}
#endif

} // namespace

#define BENCH_PIECES(...) BENCHMARK(__VA_ARGS__)->Repetitions(9)->ReportAggregatesOnly();
#ifdef BENCH_QT
#define BENCH_PIECES_QT(size)                                                                                          \
    BENCH_PIECES(QtBufferedWrite<size>)                                                                                \
    BENCH_PIECES(QtUnbufferedWrite<size>)                                                                              \
    BENCH_PIECES(QtBufferedRead<size>)                                                                                 \
    BENCH_PIECES(QtUnbufferedRead<size>)
#else
#define BENCH_PIECES_QT(size)
#endif
#define BENCH_SIZE(size)                                                                                               \
    BENCH_PIECES(ArchiveWrite<size>)                                                                                   \
    BENCH_PIECES(StreamWrite<size, &std::fwrite>)                                                                      \
    BENCH_PIECES(StreamWrite<size, &fwrite_unlocked>)                                                                  \
    BENCH_PIECES(ArchiveRead<size>)                                                                                    \
    BENCH_PIECES(StreamRead<size, &std::fread>)                                                                        \
    BENCH_PIECES(StreamRead<size, &fread_unlocked>)                                                                    \
    BENCH_PIECES_QT(size)

BENCH_SIZE(1)
BENCH_SIZE(16)
BENCH_SIZE(1024)
