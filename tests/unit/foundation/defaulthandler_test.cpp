// Which handler is the default one, and what remains when it is gone. Built into several programs, each with another
// version record, for a process chooses once:
//
//   defaulthandler_RECORD EXPECTED OUTPUT    EXPECTED: EVENTLOG, MESSAGEBOX or CONSOLE; OUTPUT: pipe or missing
#include "foundation/inc/messagehandlers.h"
#include "tests/support/boxes.h"
#include "tests/support/standardoutput.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

using namespace Tsx;

namespace {

std::string_view NameOf(CMessageHandler* handler) {
    return dynamic_cast<CEventLogMessageHandler*>(handler)  ? "EVENTLOG"
           : dynamic_cast<CMessageBoxHandler*>(handler)     ? "MESSAGEBOX"
           : dynamic_cast<CConsoleMessageHandler*>(handler) ? "CONSOLE"
                                                            : "another";
}

bool failed = false;

void Check(std::string_view wanted, std::string_view found) {
    if (wanted != found) {
        std::fprintf(stderr, "'%s', expected '%s'\n", found.data(), wanted.data());
        failed = true;
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        return 2;
    }
    CStandardOutput output(arguments[2] == std::string_view("pipe") ? EOutput::Pipe : EOutput::Missing);
    CMessageHandler* handler = GetDefaultMessageHandler();
    output.Finish();
    Check(arguments[1], NameOf(handler));
    Check(arguments[1], NameOf(GetCurrentMessageHandler()));

    handler->~CMessageHandler();
    Check("invalid", GetDefaultMessageHandler() == InvalidMessageHandler() ? "invalid" : "another");
    CLastErrorException exception(5);
    DisplayException(&exception);
    SetApplicationName(u"Application");
    DisplayMessage(u"text", 0x10);
    Check("Tessarix: text 10\n", ShownBoxes);
    std::_Exit(failed ? 1 : 0); // the static handler must not be destroyed once more
}
