#include "mailsystem/DesktopEntry.h"

#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <sys/stat.h>

namespace MailSystem {

namespace {

// A folder or file that another user owns (the superuser excepted) or that any user may write.
bool IsForeign(const std::filesystem::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) != 0 || (status.st_uid != 0 && status.st_uid != geteuid()) ||
           (status.st_mode & S_IWOTH) != 0;
}

bool TakesOperands(std::string_view line) {
    for (std::size_t i = line.find('%'); i < line.size() - 1; i = line.find('%', i + 2)) {
        if (std::string_view("uUfF").find(line[i + 1]) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

std::string UriOf(const std::string& path) {
    return GlibText(g_filename_to_uri(path.c_str(), nullptr, nullptr)).get();
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::Find(const std::string& id) {
    ObjectPointer<GDesktopAppInfo> info(g_desktop_app_info_new(id.c_str()));
    if (!info) {
        return {};
    }
    return DesktopEntry(std::move(info), id);
}

std::string DesktopEntry::DefaultFor(const char* mediaType) {
    if (GlibText(g_find_program_in_path("xdg-mime"))) {
        return OutputOf({"xdg-mime", "query", "default", mediaType});
    }
    const ObjectPointer<GAppInfo> entry(g_app_info_get_default_for_type(mediaType, FALSE));
    return entry ? g_app_info_get_id(entry.get()) : "";
}

std::vector<std::string> DesktopEntry::IdsFor(const char* mediaType) {
    // By the entries themselves: the index of media types is missing where nobody has made it.
    std::vector<std::string> ids;
    GList* const all = g_app_info_get_all();
    for (const GList* place = all; place; place = place->next) {
        auto* const entry = static_cast<GAppInfo*>(place->data);
        const char** const types = g_app_info_get_supported_types(entry);
        if (types && g_strv_contains(types, mediaType)) {
            ids.emplace_back(g_app_info_get_id(entry));
        }
    }
    g_list_free_full(all, &g_object_unref);
    return ids;
}

CommandWords DesktopEntry::Command(const Operands& operands) const {
    RequireTrust();
    const char* const line = g_app_info_get_commandline(reinterpret_cast<GAppInfo*>(info.get()));
    char** parsed = nullptr;
    if (!line || !g_shell_parse_argv(line, nullptr, &parsed, nullptr)) {
        throw std::runtime_error("the command line of " + id + " cannot be read");
    }
    const std::unique_ptr<char*, Releaser<&g_strfreev>> owner(parsed);
    CommandWords words;
    for (char** word = parsed; *word; ++word) {
        Expand(*word, words, operands);
    }
    if (!TakesOperands(line)) {
        Expand("%f", words, operands);
    }
    return words;
}

void DesktopEntry::RequireTrust() const {
    const char* const name = g_desktop_app_info_get_filename(info.get());
    const std::filesystem::path file = name ? name : "";
    if (!name || IsForeign(file) || IsForeign(file.parent_path())) {
        throw std::runtime_error("others may write " + file.string());
    }
}

CommandWords DesktopEntry::Values(char code, const Operands& operands) const {
    auto* const application = reinterpret_cast<GAppInfo*>(info.get());
    switch (code) {
    case 'u':
    case 'U':
        return operands.file.empty() ? operands.words : CommandWords{UriOf(operands.file)};
    case 'f':
    case 'F':
        return operands.file.empty() ? operands.words : CommandWords{operands.file};
    case 'c':
        return {g_app_info_get_name(application)};
    case 'k':
        return {g_desktop_app_info_get_filename(info.get())};
    case '%':
        return {"%"};
    case 'i':
        return {};
    default:
        throw std::runtime_error("the command line of " + id + " has an unknown field code");
    }
}

void DesktopEntry::Expand(std::string_view word, CommandWords& words, const Operands& operands) const {
    if (word.size() == 2 && word[0] == '%') {
        const CommandWords values = Values(word[1], operands);
        words.insert(words.end(), values.begin(), values.end());
        return;
    }
    std::string expanded;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '%') {
            expanded += word[i];
            continue;
        }
        const CommandWords values = Values(++i < word.size() ? word[i] : '\0', operands);
        if (values.size() > 1) {
            throw std::runtime_error("the command line of " + id + " has room for one word alone");
        }
        expanded += values.empty() ? "" : values.front();
    }
    words.push_back(std::move(expanded));
}

} // namespace MailSystem
