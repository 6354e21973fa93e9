#include "mailsystem/MailClientArguments.h"

#include "mailsystem/HeaderText.h"
#include <utility>

namespace MailSystem {

namespace {

// The unreserved characters of a URI stay, and those that the caller adds.
std::string Encoded(std::string_view text, std::string_view kept = {}) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (g_ascii_isalnum(c) || (c != '\0' && std::string_view("-._~").find(c) != std::string_view::npos) ||
            kept.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}

std::string QuotedName(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : OneLine(name)) {
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted + '"';
}

// As in a header field, before that is encoded: a mail client asks for readable text here.
std::string AddressList(const std::vector<Mailbox>& mailboxes) {
    std::string list;
    for (const Mailbox& mailbox : mailboxes) {
        const std::string address = AddressSyntax(mailbox.address);
        const std::string entry = address.empty()        ? AddressSyntax(mailbox.name)
                                  : mailbox.name.empty() ? address
                                                         : QuotedName(mailbox.name) + " <" + address + ">";
        list += list.empty() || entry.empty() ? entry : ", " + entry;
    }
    return list;
}

// The whole argument is decoded first and taken apart only then. A value ends at its quote when a comma or the end
// follows, so that one is taken which the value doesn't have at such a place. False when it has both.
bool AppendValue(std::string& line, const char* key, const std::string& value) {
    if (value.empty()) {
        return true;
    }
    const auto ends = [&value](char quote) {
        return value.find(std::string{quote, ','}) != std::string::npos || value.ends_with(quote);
    };
    const char quote = ends('\'') ? '"' : '\'';
    if (ends(quote)) {
        return false;
    }
    line += (line.empty() ? "" : ",") + std::string(key) + "=" + quote + Encoded(value) + quote;
    return true;
}

// The list is taken apart at its commas after the decoding, so that what is encoded in a URI is encoded once more.
std::string AttachmentValue(const AttachedFiles& files) {
    std::string list;
    for (const std::string& file : files) {
        list += (list.empty() ? "file://" : ",file://") + Encoded(Encoded(file, "/"), "/");
    }
    return list.empty() ? list : ",attachment='" + list + "'";
}

std::string MailtoUri(const Draft& draft) {
    std::string uri;
    const std::pair<const char*, std::string> fields[] = {
        {"cc", AddressList(draft.cc)},
        {"bcc", AddressList(draft.bcc)},
        {"subject", OneLine(draft.subject)},
        {"body", ValidText(draft.body)},
    };
    for (const auto& [key, value] : fields) {
        if (!value.empty()) {
            uri += (uri.empty() ? "?" : "&") + std::string(key) + "=" + Encoded(value);
        }
    }
    return "mailto:" + Encoded(AddressList(draft.to), "@,") + uri;
}

} // namespace

CommandWords ThunderbirdWords(const Draft& draft, const AttachedFiles& files) {
    std::string line;
    if (!AppendValue(line, "to", AddressList(draft.to)) || !AppendValue(line, "cc", AddressList(draft.cc)) ||
        !AppendValue(line, "bcc", AddressList(draft.bcc)) || !AppendValue(line, "subject", OneLine(draft.subject)) ||
        !AppendValue(line, "body", ValidText(draft.body))) {
        return {};
    }
    line += AttachmentValue(files);
    return {"thunderbird", "-compose", line.starts_with(',') ? line.substr(1) : line};
}

CommandWords ClawsWords(const Draft& draft, const AttachedFiles& files) {
    CommandWords words = {"claws-mail", "--compose", MailtoUri(draft)};
    if (!files.empty()) {
        words.emplace_back("--attach");
        words.insert(words.end(), files.begin(), files.end());
    }
    return words;
}

CommandWords EvolutionWords(const Draft& draft, const AttachedFiles& files) {
    std::string uri = MailtoUri(draft);
    for (const std::string& file : files) {
        uri += (uri.find('?') == std::string::npos ? "?attach=" : "&attach=") + Encoded(file, "/");
    }
    return {"evolution", uri};
}

} // namespace MailSystem
