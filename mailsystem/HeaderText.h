// Text from outside made fit for header fields: nothing in it can end a field, begin another, or be decoded into what
// it was not. Encoding and folding are GMime's; what it takes over as it stands is handled here.
#pragma once

#include <string>
#include <string_view>

namespace MailSystem {

/// Valid UTF-8, with U+FFFD for what is malformed.
std::string ValidText(std::string_view text);

/// Valid UTF-8 in which each control character and each line or paragraph separator is a space.
std::string OneLine(std::string_view text);

/// One line that GMime encodes so that a reader sees this very text.
///
///   Grüße, Hello            as they are: GMime does the rest
///   =?utf-8?q?x?=           encoded here, for GMime and the reader would take it for encoded already
std::string FieldText(std::string_view text);

/// A display name in the syntax of header fields before they are encoded: in quotes only where it needs them, for some
/// mail clients take quotes around other letters than ASCII for part of the name.
///
///   Jürgen O'Neil           Jürgen O'Neil
///   Lee, Ann "Q"            "Lee, Ann \"Q\""
std::string PhraseSyntax(std::string_view text);

/// One address in the syntax of header fields, so that whatever it holds stays one address. Empty for no text. What is
/// no address is kept whole, as a quoted word without a domain: a mail client shows that, and doesn't send to it.
///
///   ann@example.org         ann@example.org
///   a lee@example.org       "a lee"@example.org
///   a@b, <c@d               "a@b, <c"@d
///   Ann Lee                 "Ann Lee": left to the mail client's address book
///   a@b:c, ann@, ""@x       "a@b:c", "ann@", "\"\"@x"
std::string AddressSyntax(std::string_view text);

} // namespace MailSystem
