// The language that Outlook was installed with. One registry value names the subkey and the value that hold it.
#include "mapi/ProviderSearch.h"

#include <optional>

namespace Mapi {

namespace {

/// One value that names the place, and the order in which the two keys are searched for that place.
struct CAttempt {
    const char16_t* value;
    std::uint32_t root;
    bool policyFirst;
};

// AS DESIGNED: the order of the keys differs between the roots, and the last attempt repeats the one before it.
constexpr CAttempt Attempts[] = {
    {u"MSIApplicationLCID", Platform::HkeyCurrentUser, true},   {u"MSIOfficeLCID", Platform::HkeyCurrentUser, true},
    {u"MSIApplicationLCID", Platform::HkeyLocalMachine, false}, {u"MSIOfficeLCID", Platform::HkeyLocalMachine, false},
    {u"MSIOfficeLCID", Platform::HkeyLocalMachine, false},
};

std::optional<std::uint32_t> ReadNumber(const CSearchKey& key, const char16_t* name) {
    std::uint32_t number = 0;
    std::uint32_t size = sizeof(number);
    std::uint32_t type = 0;
    const std::uint32_t result = Platform::RegQueryValueEx(key.Handle(), name, &type, &number, &size);
    if (result != Platform::ErrorSuccess || type != Platform::RegDword) {
        return std::nullopt;
    }
    return number;
}

// AS DESIGNED: both keys are under HKEY_CURRENT_USER, also for a client entry under HKEY_LOCAL_MACHINE.
std::optional<std::uint32_t> TryAttempt(const CAttempt& attempt, const CSearchKey& policy, const CSearchKey& software) {
    const CSearchKey client(attempt.root, u"Software\\Clients\\Mail\\Microsoft Outlook");
    if (!client) {
        return std::nullopt;
    }
    const CSearchValue<1060> place(client, attempt.value);
    if (place.type != Platform::RegMultiSz) {
        return std::nullopt;
    }
    const char16_t* const path = place.text;
    const char16_t* const name = path + std::u16string_view(path).size() + 1;
    const CSearchKey first((attempt.policyFirst ? policy : software).Handle(), path);
    const CSearchKey second((attempt.policyFirst ? software : policy).Handle(), path);
    const std::optional<std::uint32_t> number = ReadNumber(first, name);
    return number ? number : ReadNumber(second, name);
}

} // namespace

std::uint32_t ReadOutlookLcid() {
    const CSearchKey policy(Platform::HkeyCurrentUser, u"Software\\Policy");
    const CSearchKey software(Platform::HkeyCurrentUser, u"Software");
    if (!policy && !software) {
        return 0;
    }
    for (const CAttempt& attempt : Attempts) {
        if (const std::optional<std::uint32_t> language = TryAttempt(attempt, policy, software)) {
            return *language;
        }
    }
    return 0;
}

} // namespace Mapi
