#include "mailsystem/AttachmentFile.h"

#include "mailsystem/HeaderText.h"
#include "mailsystem/MailFailure.h"
#include <array>
#include <fcntl.h>
#include <gio/gio.h>
#include <string_view>
#include <sys/stat.h>

namespace MailSystem {

namespace {

constexpr const char* UnknownType = "application/octet-stream";

std::string GuessType(const std::string& name, std::span<const unsigned char> head) {
    // Without bytes the name alone decides: an empty file would else have a type of its own.
    const GlibText type(g_content_type_guess(name.c_str(), head.empty() ? nullptr : head.data(), head.size(), nullptr));
    const GlibText mime(type ? g_content_type_get_mime_type(type.get()) : nullptr);
    const std::string_view found = mime ? mime.get() : UnknownType;
    const bool composite = found.starts_with("message/") || found.starts_with("multipart/");
    return std::string(composite || found.find('/') == std::string_view::npos ? UnknownType : found);
}

} // namespace

AttachmentFile::AttachmentFile(std::string nativePath) : path(std::move(nativePath)) {
    std::array<unsigned char, 4096> head{};
    const std::size_t count = Read(Open(), head);
    mediaType = GuessType(Name(), std::span(head).first(count));
}

std::string AttachmentFile::Name() const {
    return OneLine(std::string_view(path).substr(path.find_last_of('/') + 1));
}

Descriptor AttachmentFile::Open() const {
    // O_NONBLOCK: a pipe without a writer is to be refused, and not to be waited for.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        throw AttachmentFailure(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw AttachmentFailure(path, S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    }
    return file;
}

std::size_t AttachmentFile::Read(const Descriptor& file, std::span<unsigned char> buffer) const {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = read(file.Get(), buffer.data() + filled, buffer.size() - filled);
        if (count == 0) {
            break;
        }
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            throw AttachmentFailure(path, errno);
        }
    }
    return filled;
}

} // namespace MailSystem
