#include "mailsystem/MailClient.h"

#include "mailsystem/MailClientArguments.h"
#include "mailsystem/MailFailure.h"
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>

namespace MailSystem {

namespace {

struct KnownClient {
    const char* mark; // in the name of the client's desktop entry, in lower case
    const char* program;
    CommandWords (*makeWords)(const Draft&, const AttachedFiles&);
};

constexpr KnownClient KnownClients[] = {
    {"thunderbird", "thunderbird", &ThunderbirdWords},
    {"claws", "claws-mail", &ClawsWords},
    {"evolution", "evolution", &EvolutionWords},
};

const KnownClient* FindClient(const std::string& desktopEntry) {
    const GlibText lower(g_ascii_strdown(desktopEntry.c_str(), -1));
    for (const KnownClient& client : KnownClients) {
        if (std::string_view(lower.get()).find(client.mark) != std::string_view::npos &&
            IsProgramThere(client.program)) {
            return &client;
        }
    }
    return nullptr;
}

std::string HandlerOf(const char* type) {
    return OutputOf({"xdg-mime", "query", "default", type});
}

void MakeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        throw StorageFailure("cannot make the folder", path, errno);
    }
}

void Copy(const Attachment& attachment, const std::string& path) {
    const AttachmentFile source(attachment);
    AttachmentReader reader = source.Open();
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    std::array<unsigned char, 65536> bytes{};
    while (const std::size_t count = file.IsOpen() ? reader.Read(bytes) : 0) {
        for (std::size_t start = 0; start < count;) {
            const ssize_t written = write(file.Get(), &bytes[start], count - start);
            if (written < 0 && errno != EINTR) {
                throw StorageFailure("cannot write to", path, errno);
            }
            start += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
    }
    if (!file.IsOpen() || !file.Close()) {
        throw StorageFailure("cannot write to", path, errno);
    }
}

std::string FileName(const Attachment& attachment) {
    const std::string name = attachment.ShownName();
    return name.empty() || name == "." || name == ".." ? "attachment" : name;
}

// A file under the name that the reader is to see serves as it is; anything else is put down beside the draft, each in
// a folder of its own, so that two of one name stay apart.
AttachedFiles FilesOf(const Draft& draft, const std::string& draftPath) {
    const std::string folder = draftPath.substr(0, draftPath.find_last_of('.')) + ".files";
    AttachedFiles files;
    for (const Attachment& attachment : draft.attachments) {
        if (!attachment.bytes && attachment.path.starts_with('/') &&
            attachment.path.ends_with("/" + attachment.ShownName())) {
            files.push_back(attachment.path);
            continue;
        }
        const std::string own = folder + "/" + std::to_string(files.size() + 1);
        MakeFolder(folder);
        MakeFolder(own);
        files.push_back(own + "/" + FileName(attachment));
        Copy(attachment, files.back());
    }
    return files;
}

bool OpenInKnownClient(const KnownClient& client, const Draft& draft, const std::string& draftPath) {
    try {
        const CommandWords words = client.makeWords(draft, FilesOf(draft, draftPath));
        return !words.empty() && StartDetached(words);
    } catch (const MailFailure&) {
        return false; // the draft itself has all of it
    }
}

} // namespace

void OpenInMailClient(const Draft& draft, const std::string& draftPath) {
    const char* wanted = std::getenv("CORVANE_MAIL_CLIENT");
    if (wanted && std::string_view(wanted) == "draft") {
        return;
    }
    const KnownClient* client = FindClient(HandlerOf("x-scheme-handler/mailto"));
    if (client && OpenInKnownClient(*client, draft, draftPath)) {
        return;
    }
    if (!HandlerOf("message/rfc822").empty()) {
        static_cast<void>(StartDetached({"xdg-open", draftPath}));
    }
}

} // namespace MailSystem
