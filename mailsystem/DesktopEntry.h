// What the desktop knows of an installed program: its entry, and the command line that the entry starts it by.
#pragma once

#include "mailsystem/Owners.h"
#include "mailsystem/ProgramStart.h"
#include <gio/gdesktopappinfo.h>
#include <optional>

namespace MailSystem {

/// What the user's program is handed: its own words, or the draft's file.
struct Operands {
    CommandWords words; // none with a file
    std::string file;   // an absolute path
};

class DesktopEntry {
public:
    /// The entry of that id, such as "thunderbird.desktop". None when there is no such entry, or its program is not
    /// installed.
    static std::optional<DesktopEntry> Find(const std::string& id);
    /// The id of the entry that `xdg-mime` names for a media type, or GIO where there is no such program; empty for
    /// none.
    static std::string DefaultFor(const char* mediaType);
    /// The ids of all entries that declare the media type, in no order.
    static std::vector<std::string> IdsFor(const char* mediaType);

    const std::string& Id() const { return id; }

    /// The words of the entry's command line, with the operands in the place of its field code for files and addresses,
    /// or behind it if it has none.
    ///
    ///   %u %U                the words, or the file as a URI
    ///   %f %F, and no code   the words, or the file's path
    ///   %c %k %i %%          the entry's name, its path, nothing, a percent sign
    ///
    /// Raises std::runtime_error for any other code, for quotes that don't match, for several operands inside one word,
    /// and for an entry that someone other than the user and the superuser may have written.
    CommandWords Command(const Operands& operands) const;

private:
    ObjectPointer<GDesktopAppInfo> info;
    std::string id;

    DesktopEntry(ObjectPointer<GDesktopAppInfo> entry, std::string entryId)
        : info(std::move(entry)), id(std::move(entryId)) {}
    void RequireTrust() const;
    CommandWords Values(char code, const Operands& operands) const;
    void Expand(std::string_view word, CommandWords& words, const Operands& operands) const;
};

} // namespace MailSystem
