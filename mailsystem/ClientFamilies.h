// The mail clients that are known, and how each comes to show a draft for editing. A new one is a row of the table.
#pragma once

#include "mailsystem/ClientWords.h"
#include <string_view>

namespace MailSystem {

struct ClientFamily {
    const char* name;     // what CORVANE_MAIL_CLIENT says; empty for the last row
    const char* marks[2]; // in the id of the desktop entry, in lower case
    /// Makes the words; null for a client that opens the draft itself.
    CommandWords (*words)(const Draft&, ClientFiles&);
    bool takesAttachments; // if not, xdg-open may get the words, which are then MailtoWords
    bool byHand;           // nothing is started: it needs a terminal, or doesn't survive being started
    const char* openDraft; // the command line that opens a draft's file by hand; null if there is none
};

/// The family of a desktop entry by its id; for an unknown one the last row, which takes a mailto: address alone.
const ClientFamily& FamilyOf(const std::string& entryId);

/// The family of that name; null if there is none.
const ClientFamily* FamilyNamed(std::string_view name);

/// Whether the client is handed the draft's file and no words.
inline bool OpensDrafts(const ClientFamily& family) {
    return !family.words && !family.byHand;
}

} // namespace MailSystem
