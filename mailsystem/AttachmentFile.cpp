#include "mailsystem/AttachmentFile.h"

#include "mailsystem/HeaderText.h"
#include "mailsystem/MailFailure.h"
#include "platform/linux/files/transfer.h"
#include <array>
#include <fcntl.h>
#include <gio/gio.h>
#include <map>
#include <mutex>
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

// Whatever the path is like, it is not the name that the reader sees that tells what the file is.
std::string TypeName(const Attachment& attachment) {
    return attachment.bytes ? attachment.ShownName() : attachment.path.substr(attachment.path.find_last_of('/') + 1);
}

std::shared_ptr<const std::string> ReadToTheEnd(const Attachment& attachment) {
    // With waiting for somebody who writes, as every program here waits for him.
    Descriptor file(open(attachment.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.IsOpen()) {
        throw AttachmentFailure(attachment.path, errno);
    }
    AttachmentReader reader(attachment, std::move(file));
    const auto content = std::make_shared<std::string>();
    std::array<unsigned char, 65536> piece{};
    while (const std::size_t count = reader.Read(piece)) {
        if (content->size() + count > Platform::LargestWithoutLength) {
            throw AttachmentFailure(attachment.path, EFBIG);
        }
        content->append(reinterpret_cast<const char*>(piece.data()), count);
    }
    return content;
}

} // namespace

void ReadWhatHasNoLength(Attachment& attachment) {
    struct stat status {};
    if (attachment.bytes || stat(attachment.path.c_str(), &status) != 0 || S_ISREG(status.st_mode) ||
        S_ISDIR(status.st_mode)) {
        return;
    }
    static std::mutex lock;
    static std::map<std::pair<dev_t, ino_t>, std::shared_ptr<const std::string>> contents;
    const std::scoped_lock guard(lock);
    std::shared_ptr<const std::string>& content = contents[{status.st_dev, status.st_ino}];
    if (!content) {
        content = ReadToTheEnd(attachment);
    }
    attachment.bytes = content;
}

std::string Attachment::ShownName() const {
    const std::string_view whole = name.empty() ? path : name;
    return OneLine(whole.substr(whole.find_last_of('/') + 1)); // npos + 1 is 0: the whole name
}

std::size_t AttachmentReader::Read(std::span<unsigned char> buffer) {
    if (attachment.bytes) {
        const std::size_t count =
            attachment.bytes->copy(reinterpret_cast<char*>(buffer.data()), buffer.size(), position);
        position += count;
        return count;
    }
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = read(file.Get(), buffer.data() + filled, buffer.size() - filled);
        if (count == 0) {
            break;
        }
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            throw AttachmentFailure(attachment.path, errno);
        }
    }
    return filled;
}

AttachmentFile::AttachmentFile(Attachment source) : attachment(std::move(source)) {
    std::array<unsigned char, 4096> head{};
    const std::size_t count = Open().Read(head);
    mediaType = GuessType(OneLine(TypeName(attachment)), std::span(head).first(count));
}

AttachmentReader AttachmentFile::Open() const {
    if (attachment.bytes) {
        return {attachment, Descriptor(-1)};
    }
    // O_NONBLOCK: a pipe that has taken the place of a file is to be refused, and not to be waited for.
    Descriptor file(open(attachment.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        throw AttachmentFailure(attachment.path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw AttachmentFailure(attachment.path, S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
    }
    return {attachment, std::move(file)};
}

} // namespace MailSystem
