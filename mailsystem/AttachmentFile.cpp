#include "mailsystem/AttachmentFile.h"

#include "mailsystem/HeaderText.h"
#include "mailsystem/MailFailure.h"
#include "mailsystem/Owners.h"
#include <array>
#include <fcntl.h>
#include <gio/gio.h>
#include <string_view>
#include <sys/stat.h>

namespace MailSystem {

namespace {

constexpr const char* UnknownType = "application/octet-stream";

std::string GuessType(const std::string& name, std::span<const unsigned char> head) {
    // For an empty file the name alone decides: there is a media type for empty files, which would win otherwise.
    const GlibText type(g_content_type_guess(name.c_str(), head.empty() ? nullptr : head.data(), head.size(), nullptr));
    const GlibText mime(type ? g_content_type_get_mime_type(type.get()) : nullptr);
    const std::string_view found = mime ? mime.get() : UnknownType;
    const bool changeable =
        found.starts_with("message/") || found.starts_with("multipart/") || found.starts_with("text/");
    return std::string(changeable || found.find('/') == std::string_view::npos ? UnknownType : found);
}

// The extension that tells the type is that of the file itself; the shown name may have any. Without one, as in the
// files of AttachmentSpool, it is that of the shown name.
std::string TypeName(const Attachment& attachment) {
    const std::string own = LastComponent(attachment.path);
    return own.find('.') == std::string::npos ? attachment.ShownName() : own;
}

} // namespace

std::string LastComponent(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1); // npos + 1 is 0: the whole path
}

std::string Attachment::ShownName() const {
    return OneLine(LastComponent(name.empty() ? path : name));
}

std::size_t AttachmentReader::Read(std::span<unsigned char> buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count =
            Platform::Retry([&] { return read(file.Get(), buffer.data() + filled, buffer.size() - filled); });
        if (count < 0) {
            throw AttachmentFailure(path, errno);
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

AttachmentFile::AttachmentFile(Attachment source) : attachment(std::move(source)) {
    std::array<unsigned char, 4096> head{};
    const std::size_t count = Open().Read(head);
    mediaType = GuessType(OneLine(TypeName(attachment)), std::span(head).first(count));
}

AttachmentReader AttachmentFile::Open() const {
    // O_NONBLOCK: a pipe that has taken the place of a file is to be refused, and not to be waited for.
    Platform::Descriptor file(open(attachment.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        throw AttachmentFailure(attachment.path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw AttachmentFailure(attachment.path, S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    }
    return {attachment.path, std::move(file)};
}

} // namespace MailSystem
