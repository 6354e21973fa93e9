// The strings and the version record of one module, in the form that this layer serves. No part of the layer itself:
// compiled into each module that has resources, with what the linker on Windows would be given. RESOURCE_MESSAGES names
// a file of rows MESSAGE(name, text), whose strings are numbered from RESOURCE_FIRST_MESSAGE on, RESOURCE_VERSION one
// of macros with the values of the record, and RESOURCE_ICON, if defined, is the name of an icon.
#include "platform/linux/modules/moduleresources.h"
#include "platform/linux/modules/versionblock.h"
#include RESOURCE_VERSION
#include <iterator>
#include <span>

namespace {

constexpr std::uint32_t RowsAbove = __COUNTER__ + 1;
constexpr Platform::ModuleString Strings[] = {
#define MESSAGE(name, text) {RESOURCE_FIRST_MESSAGE + __COUNTER__ - RowsAbove, u"" text},
#include RESOURCE_MESSAGES
#undef MESSAGE
};

#ifdef RESOURCE_ICON
// What the module's script on Windows has an icon for.
constexpr const char16_t* IconNames[] = {u"" RESOURCE_ICON};
constexpr std::span<const char16_t* const> Icons = IconNames;
#else
constexpr std::span<const char16_t* const> Icons;
#endif

constexpr Platform::VersionString VersionStrings[] = {
    {u"CompanyName", u"" RESOURCE_COMPANY_NAME},       {u"FileDescription", u"" RESOURCE_FILE_DESCRIPTION},
    {u"FileVersion", u"" RESOURCE_FILE_VERSION},       {u"InternalName", u"" RESOURCE_INTERNAL_NAME},
    {u"LegalCopyright", u"" RESOURCE_LEGAL_COPYRIGHT}, {u"OriginalFilename", u"" RESOURCE_ORIGINAL_FILENAME},
    {u"ProductVersion", u"" RESOURCE_PRODUCT_VERSION},
};

constexpr std::uint32_t Joined(std::uint32_t high, std::uint32_t low) {
    return high << 16 | low;
}

constexpr std::uint32_t VersionMS = Joined(RESOURCE_FILE_VERSION_MAJOR, RESOURCE_FILE_VERSION_MINOR);
constexpr std::uint32_t VersionLS = Joined(RESOURCE_FILE_VERSION_PATCH, RESOURCE_FILE_VERSION_BUILD);

constexpr Platform::FixedFileInfo Fixed{
    .dwSignature = 0xFEEF04BD,
    .dwStrucVersion = 0x00010000,
    .dwFileVersionMS = VersionMS,
    .dwFileVersionLS = VersionLS,
    .dwProductVersionMS = VersionMS,
    .dwProductVersionLS = VersionLS,
    .dwFileFlagsMask = 0x3F, // VS_FFI_FILEFLAGSMASK
    .dwFileFlags = 0,
    .dwFileOS = 0x00040004, // VOS_NT_WINDOWS32
    .dwFileType = RESOURCE_FILE_TYPE,
    .dwFileSubtype = 0,
    .dwFileDateMS = 0,
    .dwFileDateLS = 0,
};

constexpr std::uint32_t Translation = Joined(0x0409, 1200); // English (United States), UTF-16

alignas(4) __attribute__((section(TESSARIX_VERSION_SECTION), used)) constexpr auto VersionRecord =
    Platform::VersionBlockBuilder<1024>().Build(Fixed, Translation, u"040904b0", VersionStrings);

} // namespace

extern "C" PLATFORM_EXPORT const Platform::ModuleResources TessarixModuleResources;
const Platform::ModuleResources TessarixModuleResources{
    std::size(Strings), Strings, Icons.size(), Icons.data(), VersionRecord.size(), VersionRecord.data()};
