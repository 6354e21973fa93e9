// The event log on syslog, down to what the system's own functions are called with: this program brings stand-ins for
// them.
#include "platform/inc/eventlog.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/registrykey.h"
#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <syslog.h>

using namespace Tsx;

namespace {

std::string written; // "identity facility level text" in lines
std::string identity;
std::atomic<int> opened{0};
std::atomic<bool> mixed{false};

} // namespace

// A second identity before the first one's line is out is what the lock is against; it is only counted.
extern "C" void openlog(const char* name, int options, int facility) {
    mixed = mixed || ++opened > 1;
    std::this_thread::yield();
    if (mixed) {
        return;
    }
    identity = std::string(name) + (options == LOG_PID ? " " : " without a process id ") + std::to_string(facility);
}
extern "C" void closelog() {
    --opened;
    identity.clear();
}
__attribute__((format(printf, 2, 0))) static void Write(int level, const char* format, va_list arguments) {
    char text[512] = {};
    std::vsnprintf(text, sizeof(text), format, arguments);
    written += identity + " " + std::to_string(level) + " " + text + "\n";
}
extern "C" __attribute__((format(printf, 2, 3))) void syslog(int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Write(level, format, arguments);
    va_end(arguments);
}
// What a build with checked calls calls in its place.
extern "C" __attribute__((format(printf, 3, 4))) void __syslog_chk(int level, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Write(level, format, arguments);
    va_end(arguments);
}

class EventLog : public testing::Test {
protected:
    const CTestFolder registry;

    EventLog() {
        written.clear();
        setenv("TESSARIX_REGISTRY", registry.Place().c_str(), 1);
        SetApplicationName(u"Application");
    }
    ~EventLog() override {
        Platform::DisarmFaults();
        SetApplicationName(u"");
    }
};

TEST_F(EventLog, AnEventIsALineOfSyslog) {
    Platform::Handle source = Platform::RegisterEventSource(nullptr, u"S\u00F6urce");
    ASSERT_TRUE(source);
    const char16_t* const strings[] = {u"title", u"100 %s\ndone"};
    for (const std::uint16_t type : std::initializer_list<std::uint16_t>{1, 2, 4, 8}) {
        EXPECT_TRUE(Platform::ReportEvent(source, type, 0, 1, 2, strings));
    }
    EXPECT_EQ(written, "S\xC3\xB6urce 8 3 title: 100 %s\ndone\nS\xC3\xB6urce 8 4 title: 100 %s\ndone\n"
                       "S\xC3\xB6urce 8 6 title: 100 %s\ndone\nS\xC3\xB6urce 8 6 title: 100 %s\ndone\n");
    OnThreads(2, [&](int) {
        for (int i = 0; i < 50 && !mixed; ++i) {
            Platform::ReportEvent(source, 1, 0, 1, 2, strings);
        }
    });
    EXPECT_TRUE(!mixed && Platform::DeregisterEventSource(source)) << "one thread at a time";
    EXPECT_FALSE(Platform::ReportEvent(nullptr, 1, 0, 1, 2, strings));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorInvalidHandle);
    EXPECT_FALSE(Platform::RegisterEventSource(u"\\\\elsewhere", u"x"));
}

TEST_F(EventLog, TheHandlerWritesAndRegisters) {
    CEventLogMessageHandler handler;
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x104), 7);
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x13), 6);
    CLastErrorException exception(5);
    CUserException user;
    handler.ShowException(&exception);
    handler.ShowException(&user);
    CEventLogMessageHandler(u"Other").ShowException(&exception);
    EXPECT_EQ(written, "Application 8 6 title: text\nApplication 8 3 title: text\n"
                       "Application 8 3 Application: Access is denied.\r\n\n"
                       "Application 8 3 Other: Access is denied.\r\n\n");
    CRegistryKey key;
    ASSERT_TRUE(key.Open(Platform::RootKey(Platform::HkeyLocalMachine),
                         u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\Application", RK_Read));
    const CUnicodeString library = FileSystem::GetPath(FileSystem::GetProgramPath()) + u"TsxEventSrc.dll";
    EXPECT_EQ(key.GetStringValue(u"EventMessageFile", u""), library);
    EXPECT_EQ(key.GetValueSize(u"EventMessageFile"), (library.Length() + 1) * 2) << "with its terminator";
}

TEST_F(EventLog, TheHandlerIsSilentAboutFailures) {
    SKIP_WITHOUT_FAULTS();
    constexpr const char* line = "Application 8 6 title: text\n";
    for (const auto& [function, expected] : {std::pair{"RegisterEventSource", ""},
                                             {"ReportEvent", ""},
                                             {"DeregisterEventSource", line},
                                             {"RegCreateKeyEx", line},
                                             {"RegSetValueEx", line}}) {
        written.clear();
        Platform::ArmFault(function, 1, 5, Platform::FaultMode::FromThenOn);
        EXPECT_EQ(CEventLogMessageHandler().ShowMessageBox(nullptr, u"text", u"title", 0), 1) << function;
        EXPECT_EQ(Platform::FaultCallsSeen(), 1) << function;
        EXPECT_EQ(written, expected) << function;
    }
}
