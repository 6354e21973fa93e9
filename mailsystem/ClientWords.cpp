#include "mailsystem/ClientWords.h"

#include "mailsystem/HeaderText.h"
#include <cstring>
#include <utility>

namespace MailSystem {

namespace {

// The unreserved characters of a URI stay, and those that the caller adds.
std::string Encoded(const std::string& text, const char* kept = nullptr) {
    // By bytes, for a path need not be UTF-8.
    const auto* const bytes = reinterpret_cast<const guint8*>(text.data());
    return GlibText(g_uri_escape_bytes(bytes, text.size(), kept)).get();
}

// As in a header field, before that is encoded: a mail client asks for readable text here.
std::string AddressText(const Mailbox& mailbox) {
    const std::string address = AddressSyntax(mailbox.address);
    if (address.empty()) {
        return AddressSyntax(mailbox.name);
    }
    return mailbox.name.empty() ? address : PhraseSyntax(mailbox.name) + " <" + address + ">";
}

std::string AddressList(const std::vector<Mailbox>& mailboxes) {
    std::string list;
    for (const Mailbox& mailbox : mailboxes) {
        const std::string entry = AddressText(mailbox);
        list += (list.empty() || entry.empty() ? "" : ", ") + entry;
    }
    return list;
}

std::string MailtoUri(const Draft& draft, const std::vector<std::string>& attached) {
    std::vector<std::string> fields;
    const auto add = [&fields](const char* key, const std::string& encoded) {
        if (!encoded.empty()) {
            fields.push_back(std::string(key) + encoded);
        }
    };
    add("cc=", Encoded(AddressList(draft.cc)));
    add("bcc=", Encoded(AddressList(draft.bcc)));
    add("subject=", Encoded(OneLine(draft.subject)));
    add("body=", Encoded(ValidText(draft.body)));
    for (const std::string& path : attached) {
        add("attach=", Encoded(path, "/"));
    }
    std::string uri = "mailto:" + Encoded(AddressList(draft.to));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        uri += (i == 0 ? "?" : "&") + fields[i];
    }
    return uri;
}

} // namespace

CommandWords MailtoWords(const Draft& draft, ClientFiles&) {
    return {MailtoUri(draft, {})};
}

CommandWords MailtoWithAttachments(const Draft& draft, ClientFiles& files) {
    return {MailtoUri(draft, files.Attachments())};
}

CommandWords ComposeWithFiles(const Draft& draft, ClientFiles& files) {
    CommandWords words = {"--compose", MailtoUri(draft, {})};
    if (!files.Attachments().empty()) {
        words.emplace_back("--attach");
        words.insert(words.end(), files.Attachments().begin(), files.Attachments().end());
    }
    return words;
}

CommandWords ComposerOptions(const Draft& draft, ClientFiles& files) {
    CommandWords words = {"--composer"};
    const auto add = [&words](const char* option, const std::string& value) {
        if (!value.empty()) {
            words.push_back(option + value);
        }
    };
    add("--cc=", AddressList(draft.cc));
    add("--bcc=", AddressList(draft.bcc));
    add("--subject=", OneLine(draft.subject));
    const std::string body = ValidText(draft.body);
    const bool fits = std::strlen("--body=") + body.size() <= LongestWord;
    add(fits ? "--body=" : "--msg=", fits ? body : files.AddText("body", body));
    for (const std::string& path : files.Attachments()) {
        add("--attach=", path);
    }
    words.emplace_back("--");
    for (const Mailbox& mailbox : draft.to) {
        add("", AddressText(mailbox));
    }
    return words;
}

} // namespace MailSystem
