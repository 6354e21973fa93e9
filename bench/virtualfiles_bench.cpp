// The file system in memory: bytes against memcpy, into a region of the same size that is mapped whole and through
// views like its own; names against the standard library's hash map; and two files that are large. memcpy is no file
// system: it says how much of a row is the copying.
#include "foundation/inc/file.h"
#include "foundation/inc/virtualfilesystem.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

using namespace Tsx;

namespace {

constexpr std::int64_t FileBytes = 64 << 20;
constexpr std::uint32_t ReadMode = OM_Read | OM_ShareDenyWrite;
constexpr std::uint32_t WriteMode = OM_ReadWrite | OM_ShareExclusive | OM_Create;

CUnicodeString Path(const std::string& name) {
    return CVirtualFileSystem::GetRootName() + CUnicodeString(name.c_str(), AnsiCodePage);
}

CFileSystemBase& System() {
    return FileSystem::GetFileSystem(CVirtualFileSystem::GetRootName());
}

/// A memory file, mapped whole.
class CRegion {
public:
    CRegion() : descriptor(memfd_create("peer", MFD_CLOEXEC)) {
        if (ftruncate(descriptor, FileBytes) != 0) {
            std::abort();
        }
        Map();
    }
    ~CRegion() {
        Unmap();
        close(descriptor);
    }
    CRegion(const CRegion&) = delete;
    CRegion& operator=(const CRegion&) = delete;

    void Map() { bytes = MapView(0, FileBytes); }
    char* MapView(std::int64_t start, std::int64_t size) const {
        return static_cast<char*>(
            mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, start));
    }
    void Unmap() const { munmap(bytes, FileBytes); }

    char* bytes = nullptr;

private:
    int descriptor;
};

void WritePieces(benchmark::State& state) {
    const std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        CFile file;
        file.Open(Path("written"), WriteMode);
        for (std::int64_t done = 0; done < FileBytes; done += state.range(0)) {
            file.Write(piece.data(), static_cast<std::int32_t>(piece.size()));
        }
        file.Close();
        System().DeleteFile(Path("written"));
    }
    state.SetBytesProcessed(state.iterations() * FileBytes);
}

void CopyIntoRegion(benchmark::State& state) {
    const std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        const CRegion region;
        for (std::int64_t done = 0; done < FileBytes; done += state.range(0)) {
            std::memcpy(region.bytes + done, piece.data(), piece.size());
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * FileBytes);
}

void ReadPieces(benchmark::State& state) {
    std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    CFile file;
    file.Open(Path("read"), WriteMode);
    for (std::int64_t done = 0; done < FileBytes; done += state.range(0)) {
        file.Write(piece.data(), static_cast<std::int32_t>(piece.size()));
    }
    file.Close();
    for (auto _ : state) {
        file.Open(Path("read"), ReadMode);
        while (file.Read(piece.data(), static_cast<std::int32_t>(piece.size())) > 0) {
            benchmark::ClobberMemory();
        }
        file.Close();
    }
    System().DeleteFile(Path("read"));
    state.SetBytesProcessed(state.iterations() * FileBytes);
}

void CopyFromRegion(benchmark::State& state) {
    std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    CRegion region;
    std::memset(region.bytes, 'x', FileBytes);
    for (auto _ : state) {
        region.Unmap();
        region.Map();
        for (std::int64_t done = 0; done < FileBytes; done += state.range(0)) {
            std::memcpy(piece.data(), region.bytes + done, piece.size());
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(state.iterations() * FileBytes);
}

/// The region through views of 64 KiB, of which ten stay mapped, as files in memory are read. What ReadPieces takes
/// beyond this is its own; what this takes beyond CopyFromRegion is the mapping.
void CopyFromViews(benchmark::State& state) {
    constexpr std::int64_t viewBytes = 65536;
    constexpr std::int64_t mostViews = 10;
    std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    CRegion region;
    std::memset(region.bytes, 'x', FileBytes);
    for (auto _ : state) {
        std::vector<char*> views(mostViews, nullptr);
        for (std::int64_t start = 0; start < FileBytes; start += viewBytes) {
            char*& view = views[static_cast<std::size_t>(start / viewBytes % mostViews)];
            if (view) {
                munmap(view, viewBytes);
            }
            view = region.MapView(start, viewBytes);
            for (std::int64_t done = 0; done < viewBytes; done += state.range(0)) {
                std::memcpy(piece.data(), view + done, piece.size());
                benchmark::ClobberMemory();
            }
        }
        for (char* view : views) {
            munmap(view, viewBytes);
        }
    }
    state.SetBytesProcessed(state.iterations() * FileBytes);
}

/// Empty files in one directory, gone at the end.
class CFullDirectory {
public:
    explicit CFullDirectory(std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i) {
            paths.push_back(Path("full\\file number " + std::to_string(i) + ".txt"));
            CFile().Open(paths.back(), WriteMode);
        }
    }
    ~CFullDirectory() { System().DeleteTree(CVirtualFileSystem::GetRootName(), true); }
    CFullDirectory(const CFullDirectory&) = delete;
    CFullDirectory& operator=(const CFullDirectory&) = delete;

    std::vector<CUnicodeString> paths;
};

void OpenOneOf(benchmark::State& state) {
    const CFullDirectory directory(state.range(0));
    std::size_t next = 0;
    for (auto _ : state) {
        next = (next + 7919) % directory.paths.size();
        CFile().Open(directory.paths[next], ReadMode);
    }
}

void OpenBelowLevels(benchmark::State& state) {
    std::string name = "f";
    for (std::int64_t level = 1; level < state.range(0); ++level) {
        name.insert(0, "folder\\");
    }
    CFile().Open(Path(name), WriteMode);
    for (auto _ : state) {
        CFile().Open(Path(name), ReadMode);
    }
    System().DeleteTree(CVirtualFileSystem::GetRootName(), true);
}

void ListDirectory(benchmark::State& state) {
    const CFullDirectory directory(state.range(0));
    for (auto _ : state) {
        CArray<CFileStatus> found;
        System().FindFiles(Path("full"), found, u"*");
        benchmark::DoNotOptimize(found.Data());
    }
}

struct CHash {
    std::size_t operator()(const CUnicodeString& text) const { return std::hash<std::u16string_view>()(text.View()); }
};

void WalkUnorderedMap(benchmark::State& state) {
    const CFullDirectory directory(state.range(0));
    std::unordered_map<CUnicodeString, CFileStatus, CHash> map;
    for (const CUnicodeString& path : directory.paths) {
        CFileStatus& status = map[FileSystem::GetNameAndExt(path)];
        status.FullName = path;
    }
    for (auto _ : state) {
        std::vector<CFileStatus> found;
        for (const auto& [name, status] : map) {
            found.push_back(status);
            found.back().Name = FileSystem::GetNameAndExt(status.FullName);
        }
        benchmark::DoNotOptimize(found.data());
    }
}

double ResidentMegabytes() {
    std::ifstream status("/proc/self/statm");
    std::int64_t all = 0;
    std::int64_t resident = 0;
    status >> all >> resident;
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / (1 << 20);
}

/// 4 KiB every 16 MiB of 8 GiB, written and read back.
void SparseFile(benchmark::State& state) {
    constexpr std::int64_t length = std::int64_t{8} << 30;
    constexpr std::int64_t step = 16 << 20;
    std::vector<char> piece(4096);
    double most = 0;
    for (auto _ : state) {
        CFile file;
        file.Open(Path("sparse"), WriteMode);
        for (std::int64_t at = 0; at < length; at += step) {
            std::memset(piece.data(), static_cast<int>(at / step % 127 + 1), piece.size());
            file.Seek(at, SeekFromStart);
            file.Write(piece.data(), 4096);
            most = std::max(most, ResidentMegabytes());
        }
        for (std::int64_t at = 0; at < length; at += step) {
            file.Seek(at, SeekFromStart);
            if (file.Read(piece.data(), 4096) != 4096 || piece[4095] != static_cast<char>(at / step % 127 + 1)) {
                state.SkipWithError("other bytes than were written");
            }
            most = std::max(most, ResidentMegabytes());
        }
        file.Close();
        System().DeleteFile(Path("sparse"));
    }
    state.counters["resident_MiB"] = most;
}

/// 2 GiB in pieces of 64 KiB, written and read back.
void LongFile(benchmark::State& state) {
    constexpr std::int64_t length = std::int64_t{2} << 30;
    std::vector<char> piece(65536, 'x');
    double most = 0;
    for (auto _ : state) {
        CFile file;
        file.Open(Path("long"), WriteMode);
        for (std::int64_t at = 0; at < length; at += 65536) {
            file.Write(piece.data(), 65536);
        }
        most = std::max(most, ResidentMegabytes());
        file.Seek(0, SeekFromStart);
        while (file.Read(piece.data(), 65536) > 0) {
            benchmark::ClobberMemory();
        }
        most = std::max(most, ResidentMegabytes());
        file.Close();
        System().DeleteFile(Path("long"));
    }
    state.counters["resident_MiB"] = most;
    state.SetBytesProcessed(state.iterations() * 2 * length);
}

} // namespace

BENCHMARK(WritePieces)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(CopyIntoRegion)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(ReadPieces)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(CopyFromRegion)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(CopyFromViews)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(OpenOneOf)->Arg(100)->Arg(100'000)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(OpenBelowLevels)->DenseRange(5, 40, 5)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(ListDirectory)->Arg(100'000)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(WalkUnorderedMap)->Arg(100'000)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(SparseFile)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(LongFile)->Unit(benchmark::kMillisecond)->Iterations(1);
