// Where drafts are kept, and how a file gets there: whole or not at all, and never over another.
#pragma once

#include "mailsystem/Owners.h"
#include <string>
#include <string_view>

namespace MailSystem {

/// The folder of the drafts, which is made, for the user alone, when it is missing. Raises MailFailure.
///
///   XDG_DATA_HOME absolute           $XDG_DATA_HOME/corvane/drafts
///   unset, empty or relative         ~/.local/share/corvane/drafts
std::string DraftFolder();

/// A draft that is being written, under a hidden name until it is kept; gone with the object otherwise.
class DraftFile {
public:
    /// Raises MailFailure when no file can be made in the folder.
    explicit DraftFile(const std::string& draftFolder);
    ~DraftFile();
    DraftFile(const DraftFile&) = delete;
    DraftFile& operator=(const DraftFile&) = delete;

    /// Raises MailFailure; a part may be written then.
    void Write(std::string_view bytes);

    /// Brings the file to the disk and then under its name, which is made of the time, the process and a number;
    /// returns its path. Nothing may be written later. Raises MailFailure.
    std::string Keep();

private:
    std::string folder;
    std::string name; // of the draft, unless another has it by then
    std::string temporaryPath;
    Descriptor file;
    bool kept = false;
};

} // namespace MailSystem
