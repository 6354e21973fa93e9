// The mail command, which app/main.cpp runs: its options become one e-mail, which a MAPI library takes to the user's
// mail client.
#pragma once

#include "app/ConsoleApplication.h"
#include "foundation/inc/namedaddress.h"

extern Tsx::CMessageName ERR_NO_RECIPIENTS;
extern Tsx::CMessageName MSG_HELP;

class CCorvaneApplication : public Console::CConsoleApplication {
public:
    CCorvaneApplication() = default;
    ~CCorvaneApplication() override = default;

    /// Splits "Name <address>" at the last `<` in front of a closing `>`; both parts are trimmed. Any other text is all
    /// address, as it stands. An empty text is an assertion.
    ///
    ///   Ann Lee <ann>    name "Ann Lee", address "ann"
    ///   a <b> <c>        name "a <b>", address "c"
    ///   ann, Ann <ann    name "", address the whole text
    static void SplitAddress(const Tsx::CUnicodeString& text, Tsx::CUnicodeString& name, Tsx::CUnicodeString& address);

protected:
    Tsx::CUnicodeString Subject;
    Tsx::CUnicodeString Body;
    Tsx::CArray<CNamedAddress> Recipients;  // Address is the mail address; Name may be empty
    Tsx::CArray<CNamedAddress> Attachments; // Address is the path; Name is what the file is shown as, never empty

    /// Adds the check that there is a recipient.
    void ProcessArguments() override;
    /// The options subject, body, recipient and attachment; any other goes to the base class.
    void ProcessArgument(const Console::CConsoleArgument& argument) override;
    /// Delivers the message on one of the two routes. No result of the MAPI library changes the exit code.
    void Run() override;
    Tsx::CUnicodeString GetHelpText() override;

private:
    void AddAttachment(const Tsx::CUnicodeString& value);
    void RunExtendedRoute();
    void RunSimpleRoute();
};
