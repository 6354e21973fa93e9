// Where drafts are kept, and how a file gets there: whole or not at all, and never over another.
#pragma once

#include "platform/linux/descriptor.h"
#include <string>
#include <string_view>
#include <sys/types.h>

namespace MailSystem {

constexpr mode_t FolderMode = 0700; // what a message says is for the user alone
constexpr mode_t FileMode = 0600;

/// The folder of the drafts, which is made, for the user alone, when it is missing. Raises MailFailure.
///
///   XDG_DATA_HOME absolute           $XDG_DATA_HOME/corvane/drafts
///   unset, empty or relative         ~/.local/share/corvane/drafts
std::string DraftFolder();

/// Makes a folder with those on the way to it, for the user alone; one that is there is fine. Raises MailFailure.
void MakeFolder(const std::string& path);

/// A new hidden folder among the drafts: for what is gone before the draft is seen. Raises MailFailure.
std::string MakeHiddenFolder(const std::string& draftFolder);

/// Removes a folder with all that is in it, or as much as can be: what stays goes with the old copies.
void RemoveFolder(const std::string& path) noexcept;

/// Removes from a folder what is older than thirty days: copies that clients were handed (ClientFiles), and what a
/// killed process has left. Drafts stay, and so does what cannot be removed. Raises std::filesystem::filesystem_error
/// when the folder cannot be read.
void RemoveOldCopies(const std::string& folder);

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
    Platform::Descriptor file;
    bool kept = false;
};

} // namespace MailSystem
