#include "platform/inc/resources.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/searchfolders.h"
#include "platform/linux/modules/loadedmodules.h"
#include "platform/linux/modules/moduleresources.h"
#include "platform/linux/modules/versionblock.h"
#include "platform/linux/text/loadfailure.h"
#include "platform/linux/text/nativetext.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Platform {

namespace {

bool ReadAt(const Descriptor& file, std::uint64_t offset, void* buffer, std::size_t size) {
    const ssize_t count = pread(file.Get(), buffer, size, static_cast<off_t>(offset));
    return count >= 0 && static_cast<std::size_t>(count) == size;
}

// None, with the last error set, on failure. A pipe, which would be waited for, has no resources.
Descriptor OpenRegular(const std::string& native) {
    Descriptor file(open(native.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        return FailFromErrno<Descriptor>();
    }
    return S_ISREG(status.st_mode) ? std::move(file) : Fail<Descriptor>(ErrorResourceDataNotFound);
}

// The section headers of an ELF file of this machine; empty for any other file.
std::vector<Elf64_Shdr> ReadSectionHeaders(const Descriptor& file, std::size_t& nameSection) {
    Elf64_Ehdr header{};
    if (!ReadAt(file, 0, &header, sizeof(header)) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_shentsize != sizeof(Elf64_Shdr) ||
        header.e_shstrndx >= header.e_shnum) {
        return {};
    }
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    if (!ReadAt(file, header.e_shoff, sections.data(), sections.size() * sizeof(Elf64_Shdr))) {
        return {};
    }
    nameSection = header.e_shstrndx;
    return sections;
}

// Reads the version section of the module at `path`. False with the last error set if it has none.
bool ReadVersionSection(const char16_t* path, std::vector<std::byte>& block) {
    std::string native;
    if (!MapPath(path, native)) {
        return false;
    }
    const Descriptor file = OpenRegular(native);
    if (!file) {
        return false;
    }
    std::size_t nameSection = 0;
    const std::vector<Elf64_Shdr> sections = ReadSectionHeaders(file, nameSection);
    constexpr std::uint64_t mostBytes = 0xFFFF; // a version block's own length has 16 bits
    for (const Elf64_Shdr& section : sections) {
        char name[sizeof(TESSARIX_VERSION_SECTION)] = {};
        if (section.sh_type == SHT_PROGBITS && section.sh_size <= mostBytes &&
            ReadAt(file, sections[nameSection].sh_offset + section.sh_name, name, sizeof(name)) &&
            std::memcmp(name, TESSARIX_VERSION_SECTION, sizeof(name)) == 0) {
            block.resize(section.sh_size);
            if (ReadAt(file, section.sh_offset, block.data(), block.size())) {
                return true;
            }
            break;
        }
    }
    return Fail(ErrorResourceDataNotFound);
}

// The resources of a loaded module; null with the last error set if it has none, or is gone.
const ModuleResources* ResourcesOf(Module module) {
    if (!IsLoaded(module)) {
        SetModuleError(ErrorModuleNotFound);
        return nullptr;
    }
    const auto* resources = static_cast<const ModuleResources*>(dlsym(module, ModuleResourcesSymbol));
    if (!resources) {
        SetLastError(ErrorResourceDataNotFound);
    }
    return resources;
}

// The program's own record is asked for several times in each run, and stands in memory.
bool ReadVersionBlock(const char16_t* path, std::vector<std::byte>& block) {
    const ModuleResources* own = path == WindowsPath(ProgramFile()) ? ResourcesOf(nullptr) : nullptr;
    if (!own || !own->version) {
        return ReadVersionSection(path, block);
    }
    block.assign(own->version, own->version + own->versionSize);
    return true;
}

} // namespace

bool FindResource(Module module, const char16_t* name, std::uint32_t type) {
    PLATFORM_FAULT(FindResource, false);
    const ModuleResources* resources = ResourcesOf(module);
    if (!resources) {
        return false;
    }
    if (type != RtGroupIcon || resources->iconCount == 0) {
        return Fail(ErrorResourceTypeNotFound);
    }
    const std::span<const char16_t* const> icons(resources->icons, resources->iconCount);
    return std::any_of(icons.begin(), icons.end(), [name](const char16_t* icon) { return NamesEqual(icon, name); }) ||
           Fail(ErrorResourceNameNotFound);
}

std::int32_t LoadString(Module module, std::uint32_t id, char16_t* buffer, std::int32_t size) {
    PLATFORM_FAULT(LoadString, 0);
    const ModuleResources* resources = ResourcesOf(module);
    if (!resources) {
        return 0;
    }
    if (size <= 0) {
        return Fail(ErrorInvalidParameter, 0);
    }
    const ModuleString* end = resources->strings + resources->stringCount;
    const ModuleString* found =
        std::lower_bound(resources->strings, end, id,
                         [](const ModuleString& string, std::uint32_t wanted) { return string.id < wanted; });
    if (found == end || found->id != id) {
        return Fail(ErrorResourceNameNotFound, 0);
    }
    const std::u16string_view text = found->text;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    *std::copy_n(text.begin(), length, buffer) = u'\0';
    return static_cast<std::int32_t>(length);
}

std::uint32_t GetFileVersionInfoSize(const char16_t* path) {
    PLATFORM_FAULT(GetFileVersionInfoSize, 0);
    std::vector<std::byte> block;
    return ReadVersionBlock(path, block) ? static_cast<std::uint32_t>(block.size()) : 0;
}

bool GetFileVersionInfo(const char16_t* path, std::uint32_t size, void* block) {
    PLATFORM_FAULT(GetFileVersionInfo, false);
    std::vector<std::byte> bytes;
    if (!ReadVersionBlock(path, bytes)) {
        return false;
    }
    std::copy_n(bytes.begin(), std::min<std::size_t>(size, bytes.size()), static_cast<std::byte*>(block));
    return true;
}

bool VerQueryValue(const void* block, std::uint32_t size, const char16_t* subBlock, const void*& value,
                   std::uint32_t& length) {
    PLATFORM_FAULT(VerQueryValue, false);
    const std::span<const std::byte> bytes(static_cast<const std::byte*>(block), block ? size : 0);
    return QueryVersionBlock(bytes, subBlock, value, length) || Fail(ErrorResourceTypeNotFound);
}

} // namespace Platform
