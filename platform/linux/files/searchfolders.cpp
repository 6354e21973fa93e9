#include "platform/linux/files/searchfolders.h"

#include "platform/linux/files/paths.h"
#include "platform/linux/text/nativetext.h"
#include <array>
#include <climits>
#include <cstdlib>
#include <sys/auxv.h>
#include <unistd.h>

namespace Platform {

namespace {

// The system has resolved the link already. Where /proc is not mounted, the name counts that the program was started
// by.
std::string FindProgramFile() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the vector has numbers, and this one is an address
        return Resolve(reinterpret_cast<const char*>(getauxval(AT_EXECFN)));
    }
    return {buffer.data(), static_cast<std::size_t>(length)};
}

// With its closing separator; empty where a path in Windows syntax means another folder, one whose name ends in a dot
// or has a backslash.
std::string FindProgramFolder() {
    const std::string& program = ProgramFile();
    const std::string folder = program.substr(0, program.find_last_of('/') + 1);
    // Any name without letters: for the other spellings of one with letters the whole folder would be read.
    const std::string file = folder + "0";
    std::string meant;
    return MapPath(WideName(file), meant) && meant == file ? folder : std::string();
}

const std::string& ProgramFolder() {
    static const std::string& folder = *new std::string(FindProgramFolder());
    return folder;
}

} // namespace

std::string Resolve(const char* native) {
    std::array<char, PATH_MAX> buffer{};
    return realpath(native, buffer.data()) ? std::string(buffer.data()) : std::string();
}

const std::string& ProgramFile() {
    // Never destroyed: a library may be loaded by a static object's end.
    static const std::string& file = *new std::string(FindProgramFile());
    return file;
}

std::string SystemFolder() {
    return ProgramFolder().empty() ? std::string() : ProgramFolder() + PLATFORM_MODULE_FOLDER;
}

std::vector<std::u16string> SearchFolders() {
    if (ProgramFolder().empty()) {
        return {};
    }
    return {WideName(ProgramFolder()), WideName(SystemFolder())};
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
