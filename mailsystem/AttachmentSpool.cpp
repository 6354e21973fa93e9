#include "mailsystem/AttachmentSpool.h"

#include "mailsystem/DraftFolder.h"
#include "mailsystem/MailFailure.h"
#include "platform/linux/files/transfer.h"
#include <fcntl.h>
#include <sys/stat.h>

namespace MailSystem {

AttachmentSpool::~AttachmentSpool() {
    if (!folder.empty()) {
        RemoveFolder(folder);
    }
}

template <class TWrite>
std::string AttachmentSpool::NewFile(TWrite write) {
    if (folder.empty()) {
        folder = MakeHiddenFolder(DraftFolder());
    }
    std::string path = folder + "/" + std::to_string(++count);
    const Platform::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode));
    if (!file) {
        throw StorageFailure("cannot make a file in", folder, errno);
    }
    try {
        write(file.Get());
    } catch (...) {
        static_cast<void>(unlink(path.c_str()));
        throw;
    }
    return path;
}

std::string AttachmentSpool::Keep(std::string_view bytes) {
    return NewFile([&](int file) {
        if (Platform::WriteWhole(file, bytes.data(), bytes.size()) < bytes.size()) {
            throw StorageFailure("cannot write to", folder.substr(0, folder.find_last_of('/')), errno);
        }
    });
}

std::string AttachmentSpool::KeepIfWithoutLength(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
        return path;
    }
    // Waits for a writer to open the pipe too, as other programs do that are given one.
    const Platform::Descriptor source(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    return NewFile([&](int file) {
        if (!source || !Platform::CopyContent(source.Get(), file, Platform::LargestWithoutLength)) {
            throw AttachmentFailure(path, errno);
        }
    });
}

} // namespace MailSystem
