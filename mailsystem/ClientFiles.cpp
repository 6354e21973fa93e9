#include "mailsystem/ClientFiles.h"

#include "mailsystem/DraftFolder.h"
#include "mailsystem/MailFailure.h"
#include "platform/linux/files/transfer.h"
#include <climits>
#include <fcntl.h>

namespace MailSystem {

namespace {

Platform::Descriptor NewFile(const std::string& path) {
    Platform::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode));
    if (!file) {
        throw StorageFailure("cannot make", path, errno);
    }
    return file;
}

// A name that a file may have. Of one that is too long the extension stays, by which a reader knows what the file is.
std::string FileName(const Attachment& attachment) {
    std::string name = attachment.ShownName();
    if (name.empty() || name == "." || name == "..") {
        return "attachment";
    }
    if (name.size() > NAME_MAX) {
        const std::size_t dot = name.find_last_of('.');
        const std::string extension = dot != std::string::npos && name.size() - dot <= 16 ? name.substr(dot) : "";
        std::size_t stem = NAME_MAX - extension.size();
        while (stem > 0 && (static_cast<unsigned char>(name[stem]) & 0xC0) == 0x80) {
            --stem; // no half of a character
        }
        name = name.substr(0, stem) + extension;
    }
    return name;
}

} // namespace

void LinkOrCopy(const std::string& source, const std::string& path) {
    if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return;
    }
    Platform::Descriptor file = NewFile(path);
    const AttachmentReader reader = AttachmentFile({source, ""}).Open();
    if (!Platform::CopyContent(reader.Get(), file.Get()) || !file.Close()) {
        const int error = errno;
        static_cast<void>(unlink(path.c_str()));
        throw StorageFailure("cannot write to", path, error);
    }
}

ClientFiles::ClientFiles(const std::string& draftPath)
    : folder(draftPath.substr(0, draftPath.find_last_of('.')) + ".files") {}

ClientFiles::~ClientFiles() {
    if (!kept) {
        RemoveFolder(folder);
    }
}

void ClientFiles::Add(const Attachment& attachment) {
    const std::string own = folder + "/" + std::to_string(attachments.size() + 1);
    MakeFolder(own);
    std::string path = own + "/" + FileName(attachment);
    LinkOrCopy(attachment.path, path);
    attachments.push_back(std::move(path));
}

std::string ClientFiles::AddText(const char* name, std::string_view text) {
    MakeFolder(folder);
    std::string path = folder + "/" + name;
    Platform::Descriptor file = NewFile(path);
    if (Platform::WriteWhole(file.Get(), text.data(), text.size()) < text.size() || !file.Close()) {
        throw StorageFailure("cannot write to", path, errno);
    }
    return path;
}

} // namespace MailSystem
