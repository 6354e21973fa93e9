#include "mailsystem/ClientFamilies.h"

#include <algorithm>
#include <iterator>

namespace MailSystem {

namespace {

// The first row with a mark that the id contains counts. Every row was tried with the real mail client (./dev clients).
constexpr ClientFamily Families[] = {
    {"thunderbird", {"thunderbird", "betterbird"}, nullptr, true, false, "thunderbird"},
    {"evolution", {"evolution"}, &MailtoWithAttachments, true, false, nullptr},
    {"geary", {"geary"}, &MailtoWithAttachments, true, false, nullptr},
    {"kmail", {"kmail"}, &ComposerOptions, true, false, nullptr},
    {"claws", {"claws"}, &ComposeWithFiles, true, false, nullptr},
    {"sylpheed", {"sylpheed"}, &ComposeWithFiles, true, false, nullptr},
    {"neomutt", {"neomutt"}, nullptr, true, true, "neomutt -H"},
    {"mutt", {"mutt"}, nullptr, true, true, "mutt -H"},
    {"balsa", {"balsa"}, nullptr, false, true, nullptr}, // no command line is known that works
    {"", {""}, &MailtoWords, false, false, nullptr},
};

bool HasMark(const ClientFamily& family, std::string_view id) {
    return std::any_of(std::begin(family.marks), std::end(family.marks),
                       [id](const char* mark) { return mark && id.find(mark) != std::string_view::npos; });
}

} // namespace

const ClientFamily& FamilyOf(const std::string& entryId) {
    const GlibText id(g_ascii_strdown(entryId.c_str(), -1));
    for (const ClientFamily& family : Families) {
        if (HasMark(family, id.get())) {
            return family;
        }
    }
    return *std::rbegin(Families);
}

const ClientFamily* FamilyNamed(std::string_view name) {
    for (const ClientFamily& family : Families) {
        if (name == family.name) {
            return &family;
        }
    }
    return nullptr;
}

} // namespace MailSystem
