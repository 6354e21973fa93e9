#include "platform/linux/searchfolders.h"

#include "platform/linux/nativetext.h"
#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace Platform {

namespace {

// The system has resolved the link already.
std::string ReadProgramLink() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

std::string ProgramFolder() {
    const std::string& program = ProgramFile();
    return program.substr(0, program.find_last_of('/') + 1);
}

} // namespace

std::string Resolve(const char* native) {
    std::array<char, PATH_MAX> buffer{};
    return realpath(native, buffer.data()) ? std::string(buffer.data()) : std::string();
}

const std::string& ProgramFile() {
    // Never destroyed: a library may be loaded by a static object's end.
    static const std::string& file = *new std::string(ReadProgramLink());
    return file;
}

std::string SystemFolder() {
    return ProgramFolder() + PLATFORM_MODULE_FOLDER;
}

std::vector<std::string> SearchFolders() {
    std::vector<std::string> folders{ProgramFolder(), SystemFolder(), "."};
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        folders.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return folders;
}

std::vector<std::u16string> CandidateNames(std::u16string_view name) {
    std::vector<std::u16string> names{std::u16string(name)};
    constexpr std::u16string_view ending = u".dll";
    if (name.size() > ending.size() && NamesEqual(name.substr(name.size() - ending.size()), ending)) {
        names.push_back(std::u16string(name.substr(0, name.size() - ending.size())) + u".so");
    }
    return names;
}

bool IsPlainName(std::u16string_view name) {
    return name.find_first_of(u"\\/:") == std::u16string_view::npos;
}

} // namespace Platform
