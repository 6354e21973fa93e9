#include "tests/support/folder.h"

#include "foundation/inc/filesystem.h"
#include "platform/inc/modules.h"
#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace {

constexpr char16_t Separator = std::filesystem::path::preferred_separator;

std::u16string WithSeparator(std::u16string text, char16_t from, char16_t to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

} // namespace

CTestFolder::CTestFolder()
    : place(std::filesystem::temp_directory_path() / ("tessarix-test-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(place);
    path = WithSeparator(place.u16string(), Separator, u'\\').c_str();
    Tsx::FileSystem::GetFullName(path);
}

CTestFolder::~CTestFolder() {
    std::error_code ignored;
    const std::filesystem::recursive_directory_iterator end;
    for (std::filesystem::recursive_directory_iterator entry(place, ignored); entry != end; entry.increment(ignored)) {
        std::filesystem::permissions(entry->path(), std::filesystem::perms::owner_all, ignored);
    }
    std::filesystem::remove_all(place, ignored);
}

std::filesystem::path CTestFolder::PlaceOf(const char16_t* name) const {
    return place / WithSeparator(name, u'\\', Separator);
}

Tsx::CUnicodeString CTestFolder::Write(const char16_t* name, std::string_view content) const {
    std::filesystem::create_directories(PlaceOf(name).parent_path());
    std::ofstream(PlaceOf(name), std::ios::binary) << content;
    return *this / name;
}

std::string CTestFolder::Content(const char16_t* name) const {
    std::ifstream file(PlaceOf(name), std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(missing)";
}

Tsx::CUnicodeString TestFile(std::u16string_view name) {
    std::array<char16_t, 1000> program{};
    Platform::GetModuleFileName(nullptr, program.data(), static_cast<std::uint32_t>(program.size()));
    std::u16string path = program.data();
    path.resize(path.rfind(u'\\') + 1);
    return WithSeparator(path.append(name), u'/', u'\\').c_str();
}

std::filesystem::path TestFilePlace(std::u16string_view name) {
    const std::u16string path = WithSeparator(TestFile(name).Text(), u'\\', Separator);
    const bool hasDrive = Separator == u'\\';
    return path.substr(hasDrive ? 0 : path.find(Separator));
}
