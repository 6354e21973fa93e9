// The listing of a folder with 100,000 files, against the system's own calls that tell the same: readdir, and stat of
// each name.
#include "foundation/inc/filesystem.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int Files = 100000;

/// A folder of empty files, made at its first use and gone at the end of the process.
class CFullFolder {
public:
    CFullFolder() : path(std::filesystem::temp_directory_path() / ("findfiles" + std::to_string(getpid()))) {
        std::filesystem::create_directory(path);
        for (int i = 0; i < Files; ++i) {
            std::ofstream(path / ("file number " + std::to_string(i) + ".txt"));
        }
    }
    ~CFullFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    CFullFolder(const CFullFolder&) = delete;
    CFullFolder& operator=(const CFullFolder&) = delete;

    const std::filesystem::path path;
};

const std::filesystem::path& Folder() {
    static const CFullFolder folder;
    return folder.path;
}

void FindFiles(benchmark::State& state) {
    const Tsx::CUnicodeString folder(Folder().u16string().c_str());
    for (auto _ : state) {
        Tsx::CArray<Tsx::CFileStatus> found;
        Tsx::FileSystem::GetFileSystem(folder).FindFiles(folder, found, u"*");
        if (found.Size() != Files) {
            state.SkipWithError("not all files were found");
        }
        benchmark::DoNotOptimize(found.Data());
    }
}

void ReadDirAndStat(benchmark::State& state) {
    for (auto _ : state) {
        int count = 0;
        std::int64_t bytes = 0;
        DIR* listing = opendir(Folder().c_str());
        while (const dirent* entry = readdir(listing)) {
            struct stat status {};
            if (entry->d_name[0] != '.' && fstatat(dirfd(listing), entry->d_name, &status, 0) == 0) {
                ++count;
                bytes += status.st_size + status.st_mtim.tv_nsec;
            }
        }
        closedir(listing);
        if (count != Files) {
            state.SkipWithError("not all files were found");
        }
        benchmark::DoNotOptimize(bytes);
    }
}

} // namespace

BENCHMARK(FindFiles)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(ReadDirAndStat)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly();
