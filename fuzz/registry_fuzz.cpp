// The reader of registry files, and what a change leaves of a file.
#include "fuzz/target.h"
#include "platform/inc/registry.h"
#include "tests/support/registrychange.h"

using namespace Platform;

void RunInput(const std::string& bytes) {
    constexpr std::size_t most = 4; // keys that are tried
    const RegistryContent content(bytes);
    std::vector<std::vector<std::u16string>> paths{{u"HKEY_CURRENT_USER", u"New"}};
    std::set<std::u16string> names{u"", u"; \"x\" = [y]\r\n"};
    for (const auto& [path, values] : content.keys) {
        for (const auto& [name, value] : values) {
            names.insert(name);
        }
        if (paths.size() < most) {
            paths.push_back(path);
        }
    }
    std::u16string text = u"x\"\\;";
    text += bytes.size() % 3 == 0 ? u"\n" : u"";                     // which quotes don't say
    text += bytes.size() % 3 == 1 ? std::u16string(1, 0xD800) : u""; // which no UTF-8 says
    const RegistryValue value{RegSz, BytesOf({text.c_str(), text.size() + 1})};
    for (const auto& path : paths) {
        for (auto name = names.begin(); name != names.end() && std::distance(names.begin(), name) < 4; ++name) {
            Require(ChangesThatAlone(bytes, path, *name, value));
        }
    }
}
