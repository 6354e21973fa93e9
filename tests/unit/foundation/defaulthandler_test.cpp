// Which handler is the default one, and what remains when it is gone. Built into several programs, each with another
// version record, for a process chooses once:
//
//   defaulthandler_RECORD EXPECTED OUTPUT    EXPECTED: EVENTLOG, MESSAGEBOX or CONSOLE; OUTPUT: pipe or missing
#include "foundation/inc/messagehandlers.h"
#include "tests/support/boxes.h"
#include "tests/support/standardoutput.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace Tsx;

namespace {

std::string NameOf(CMessageHandler* handler) {
    return handler == InvalidMessageHandler()                ? "invalid "
           : dynamic_cast<CEventLogMessageHandler*>(handler) ? "EVENTLOG "
           : dynamic_cast<CMessageBoxHandler*>(handler)      ? "MESSAGEBOX "
           : dynamic_cast<CConsoleMessageHandler*>(handler)  ? "CONSOLE "
                                                             : "another ";
}

} // namespace

int main(int, char** arguments) {
    const std::string wanted = arguments[1];
    CStandardOutput output(arguments[2] == std::string("pipe") ? EOutput::Pipe : EOutput::Missing);
    CMessageHandler* handler = GetDefaultMessageHandler();
    output.Finish();
    std::string found = NameOf(handler) + NameOf(GetCurrentMessageHandler());
    handler->~CMessageHandler();
    found += NameOf(GetDefaultMessageHandler());
    CLastErrorException exception(5);
    DisplayException(&exception);
    SetApplicationName(u"Application");
    DisplayMessage(u"text", 0x10);
    const bool same = found + ShownBoxes == wanted + " " + wanted + " invalid Tessarix: text 10\n";
    std::fprintf(stderr, "%s%s", found.c_str(), ShownBoxes.c_str());
    std::_Exit(same ? 0 : 1); // the static handler must not be destroyed once more
}
