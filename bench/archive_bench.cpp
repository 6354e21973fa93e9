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

template <std::int32_t Size>
struct CPiece {
    char bytes[static_cast<std::size_t>(Size)];
};

void Report(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * TotalBytes);
}

template <std::int32_t Size>
void ArchiveWrite(benchmark::State& state) {
    CFixedFile file;
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        Tsx::CArchive archive(&file, Tsx::AD_Store);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            benchmark::DoNotOptimize(piece);
            archive.Write(&piece, Size);
        }
        archive.Close();
    }
    Report(state);
}

template <std::int32_t Size, auto WriteTo>
void StreamWrite(benchmark::State& state) {
    CFixedFile file;
    char buffer[4096];
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        std::FILE* stream = OpenStream(file, "w", buffer);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            benchmark::DoNotOptimize(piece);
            WriteTo(&piece, 1, Size, stream);
        }
        std::fclose(stream);
    }
    Report(state);
}

template <std::int32_t Size>
void ArchiveRead(benchmark::State& state) {
    CFixedFile file;
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        Tsx::CArchive archive(&file, Tsx::AD_Load);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            archive.Read(&piece, Size);
            benchmark::DoNotOptimize(piece);
        }
    }
    Report(state);
}

template <std::int32_t Size, auto ReadFrom>
void StreamRead(benchmark::State& state) {
    CFixedFile file;
    char buffer[4096];
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        std::FILE* stream = OpenStream(file, "r", buffer);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            benchmark::DoNotOptimize(ReadFrom(&piece, 1, Size, stream));
            benchmark::DoNotOptimize(piece);
        }
        std::fclose(stream);
    }
    Report(state);
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
void QtBufferedWrite(benchmark::State& state) {
    CFixedFile file;
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        CQtDevice device(file);
        device.open(QIODevice::WriteOnly);
        QDataStream stream(&device);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            benchmark::DoNotOptimize(piece);
            stream.writeRawData(piece.bytes, Size);
        }
    }
    Report(state);
}

template <std::int32_t Size>
void QtBufferedRead(benchmark::State& state) {
    CFixedFile file;
    CPiece<Size> piece{};
    for (auto _ : state) {
        file.position = 0;
        CQtDevice device(file);
        device.open(QIODevice::ReadOnly);
        QDataStream stream(&device);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            stream.readRawData(piece.bytes, Size);
            benchmark::DoNotOptimize(piece);
        }
    }
    Report(state);
}

template <std::int32_t Size>
void QtUnbufferedWrite(benchmark::State& state) {
    QByteArray bytes;
    bytes.reserve(static_cast<int>(TotalBytes));
    CPiece<Size> piece{};
    for (auto _ : state) {
        bytes.resize(0);
        QBuffer device(&bytes);
        device.open(QIODevice::WriteOnly);
        QDataStream stream(&device);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            benchmark::DoNotOptimize(piece);
            stream.writeRawData(piece.bytes, Size);
        }
    }
    Report(state);
}

template <std::int32_t Size>
void QtUnbufferedRead(benchmark::State& state) {
    QByteArray bytes(static_cast<int>(TotalBytes), 'x');
    CPiece<Size> piece{};
    for (auto _ : state) {
        QBuffer device(&bytes);
        device.open(QIODevice::ReadOnly);
        QDataStream stream(&device);
        for (std::int64_t done = 0; done < TotalBytes; done += Size) {
            stream.readRawData(piece.bytes, Size);
            benchmark::DoNotOptimize(piece);
        }
    }
    Report(state);
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
