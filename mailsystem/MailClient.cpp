#include "mailsystem/MailClient.h"

#include "mailsystem/ClientFamilies.h"
#include "mailsystem/DesktopEntry.h"
#include "mailsystem/MailFailure.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace MailSystem {

namespace {

constexpr std::chrono::seconds AnswerTime{5};
constexpr const char* MailtoType = "x-scheme-handler/mailto";
constexpr const char* MessageType = "message/rfc822";
constexpr std::string_view SnapEntry = "thunderbird_thunderbird.desktop";

std::string WantedClient() {
    const char* const wanted = std::getenv("CORVANE_MAIL_CLIENT");
    return wanted ? wanted : "";
}

// As one word of a shell's line. Nothing here takes memory: there may be none left.
void PrintQuoted(const std::string& path) {
    std::fputc('\'', stderr);
    for (const char c : path) {
        c == '\'' ? std::fputs("'\\''", stderr) : std::fputc(c, stderr);
    }
    std::fputc('\'', stderr);
}

void SayHowToOpen(const char* command, const std::string& draftPath) {
    std::fprintf(stderr, "To open the draft: %s ", command);
    PrintQuoted(draftPath);
    std::fputc('\n', stderr);
}

void SayNotStarted(const char* reason, const std::string& draftPath) {
    std::fprintf(stderr, "Mail client not started: %s\n", reason);
    SayHowToOpen("thunderbird", draftPath);
    SayHowToOpen("mutt -H", draftPath);
    std::fputs("To set a mail client: xdg-mime default ENTRY.desktop x-scheme-handler/mailto\n", stderr);
}

DesktopEntry Required(const std::string& id) {
    std::optional<DesktopEntry> entry = DesktopEntry::Find(id);
    return entry ? std::move(*entry)
                 : throw std::runtime_error(id + " cannot be used: it or its program is missing, or damaged");
}

DesktopEntry InstalledOf(const ClientFamily& family) {
    for (const char* type : {MailtoType, MessageType}) {
        for (const std::string& id : DesktopEntry::IdsFor(type)) {
            if (&FamilyOf(id) == &family) {
                return Required(id);
            }
        }
    }
    throw std::runtime_error(std::string("no entry of ") + family.name + " is installed");
}

DesktopEntry Default() {
    const std::string id = DesktopEntry::DefaultFor(MailtoType);
    return !id.empty() ? Required(id) : throw std::runtime_error("none is set for mailto: addresses");
}

void Start(const CommandWords& command) {
    if (std::any_of(command.begin(), command.end(), [](const auto& word) { return word.size() > LongestWord; })) {
        throw std::runtime_error("the message is too long for its command line");
    }
    StartDetached(command);
}

// A client in a snap cannot read hidden folders in the user's home, such as that of the drafts, but one of its own.
std::string SnapFolder() {
    return std::string(g_get_home_dir()) + "/snap/thunderbird/common/corvane";
}

void OpenDraft(const DesktopEntry& client, const std::string& draftPath) {
    std::string path = draftPath;
    if (client.Id() == SnapEntry) {
        path = SnapFolder() + "/" + LastComponent(draftPath.substr(0, draftPath.find_last_of('.'))) + ".copy.eml";
        MakeFolder(SnapFolder());
        LinkOrCopy(draftPath, path);
    }
    Start(client.Command({{}, path}));
}

// Starts the command that `commandOf` makes of the family's words for the draft.
template <class TCommand>
void OpenWords(const ClientFamily& family, const Draft& draft, const std::string& draftPath, TCommand commandOf) {
    ClientFiles files(draftPath);
    if (family.takesAttachments) {
        for (const Attachment& attachment : draft.attachments) {
            files.Add(attachment);
        }
    } else if (!draft.attachments.empty()) {
        std::fputs("The mail client gets the message without attachments: they are in the draft\n", stderr);
    }
    Start(commandOf(family.words(draft, files)));
    files.Keep();
}

void OpenInClient(const DesktopEntry& client, const ClientFamily& family, const Draft& draft,
                  const std::string& draftPath) {
    OpenWords(family, draft, draftPath, [&client](const CommandWords& words) { return client.Command({words, ""}); });
}

// An unknown client is handed a mailto: address, through xdg-open if it is the desktop's default. A draft with
// attachments goes to the default program for message files instead, if that is a client that opens drafts.
void OpenInUnknown(const DesktopEntry& client, const ClientFamily& family, const Draft& draft,
                   const std::string& draftPath) {
    const std::string reader = draft.attachments.empty() ? "" : DesktopEntry::DefaultFor(MessageType);
    if (OpensDrafts(FamilyOf(reader))) {
        OpenDraft(Required(reader), draftPath);
    } else if (!WantedClient().empty()) {
        OpenInClient(client, family, draft, draftPath);
    } else {
        OpenWords(family, draft, draftPath, [](CommandWords words) {
            words.insert(words.begin(), "xdg-open");
            return words;
        });
    }
}

void Open(const Draft& draft, const std::string& draftPath) {
    const std::string wanted = WantedClient();
    const ClientFamily* named = wanted.empty() ? nullptr : FamilyNamed(wanted);
    if (named && named->openDraft && named->byHand) {
        SayHowToOpen(named->openDraft, draftPath);
        return;
    }
    const DesktopEntry client = named ? InstalledOf(*named) : wanted.empty() ? Default() : Required(wanted);
    const ClientFamily& family = FamilyOf(client.Id());
    if (family.byHand) {
        family.openDraft ? SayHowToOpen(family.openDraft, draftPath)
                         : SayNotStarted((client.Id() + " cannot be handed a message").c_str(), draftPath);
    } else if (OpensDrafts(family)) {
        OpenDraft(client, draftPath);
    } else if (family.words == &MailtoWords) {
        OpenInUnknown(client, family, draft, draftPath);
    } else {
        OpenInClient(client, family, draft, draftPath);
    }
}

void RemoveAllOldCopies(const std::string& draftPath) {
    for (const std::string& folder : {draftPath.substr(0, draftPath.find_last_of('/')), SnapFolder()}) {
        try {
            RemoveOldCopies(folder);
        } catch (const std::exception&) {
            // the folder is missing or cannot be read: the copies stay
        }
    }
}

void OpenOrSayWhyNot(const Draft& draft, const std::string& draftPath) {
    try {
        Open(draft, draftPath);
    } catch (const std::exception& failure) {
        SayNotStarted(ReasonOf(failure), draftPath);
    }
    RemoveAllOldCopies(draftPath);
}

} // namespace

// In a process apart: the desktop's folders and programs may hang, and GLib ends a process whose memory is exhausted.
void OpenInMailClient(const Draft& draft, const std::string& draftPath) noexcept {
    const char* const wanted = std::getenv("CORVANE_MAIL_CLIENT");
    if (wanted && std::string_view(wanted) == "draft") {
        return;
    }
    switch (DoApart([&] { OpenOrSayWhyNot(draft, draftPath); }, AnswerTime)) {
    case EWorkEnd::Done:
        break;
    case EWorkEnd::Broken:
        SayNotStarted("there is no memory or no process left for it", draftPath);
        break;
    case EWorkEnd::TimedOut:
        SayNotStarted("the desktop does not answer", draftPath);
        break;
    }
}

} // namespace MailSystem
