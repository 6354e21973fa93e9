// The event log on syslog, down to what the system's own functions are called with: this program brings stand-ins for
// them.
#include "platform/inc/eventlog.h"

#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/registrykey.h"
#include "platform/inc/faults.h"
#include "platform/inc/files.h"
#include "platform/inc/lasterror.h"
#include "tests/support/text.h"
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <syslog.h>
#include <thread>
#include <unistd.h>

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
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    written += identity + " " + std::to_string(level) + " " + text.data() + "\n";
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

namespace {

class EventLog : public testing::Test {
protected:
    std::string registry = (std::filesystem::temp_directory_path() / "eventlog-XXXXXX").string();

    void SetUp() override {
        written.clear();
        ASSERT_NE(mkdtemp(registry.data()), nullptr);
        setenv("TESSARIX_REGISTRY", registry.c_str(), 1);
        SetApplicationName(u"Application");
    }
    void TearDown() override {
        Platform::DisarmFaults();
        SetApplicationName(u"");
        std::filesystem::remove_all(registry);
    }
};

} // namespace

TEST_F(EventLog, AnEventIsALineOfSyslog) {
    Platform::Handle source = Platform::RegisterEventSource(nullptr, u"S\u00F6urce");
    ASSERT_TRUE(source);
    const char16_t* const strings[] = {u"title", u"100 %s\ndone"};
    for (const std::uint16_t type : std::to_array<std::uint16_t>({1, 2, 4, 8})) {
        EXPECT_TRUE(Platform::ReportEvent(source, type, 0, 1, 2, strings));
    }
    EXPECT_EQ(written, "S\xC3\xB6urce 8 3 title: 100 %s\ndone\nS\xC3\xB6urce 8 4 title: 100 %s\ndone\n"
                       "S\xC3\xB6urce 8 6 title: 100 %s\ndone\nS\xC3\xB6urce 8 6 title: 100 %s\ndone\n");
    const auto reportMany = [&] {
        for (int i = 0; i < 50 && !mixed; ++i) {
            Platform::ReportEvent(source, 1, 0, 1, 2, strings);
        }
    };
    std::thread other(reportMany);
    reportMany();
    other.join();
    EXPECT_FALSE(mixed) << "one thread at a time";
    EXPECT_TRUE(Platform::DeregisterEventSource(source));
    EXPECT_FALSE(Platform::ReportEvent(nullptr, 1, 0, 1, 2, strings));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorInvalidHandle);
    EXPECT_FALSE(Platform::RegisterEventSource(u"\\\\elsewhere", u"x"));
}

TEST_F(EventLog, TheHandlerWritesAndRegisters) {
    CEventLogMessageHandler handler;
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x104), 7);
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x13), 6);
    CLastErrorException exception(5);
    handler.ShowException(&exception);
    CUserException user;
    handler.ShowException(&user);
    CEventLogMessageHandler named(u"Other");
    named.ShowException(&exception);
    EXPECT_EQ(written, "Application 8 6 title: text\nApplication 8 3 title: text\n"
                       "Application 8 3 Application: Access is denied.\r\n\n"
                       "Application 8 3 Other: Access is denied.\r\n\n");
    CRegistryKey key;
    ASSERT_TRUE(key.Open(Platform::RootKey(Platform::HkeyLocalMachine),
                         u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\Application", RK_Read));
    const CUnicodeString program = FileSystem::GetProgramPath();
    const CUnicodeString folder = program.Left(program.FindLast(u'\\') + 1);
    EXPECT_EQ(key.GetStringValue(u"EventMessageFile", u""), folder + u"TsxEventSrc.dll");
    EXPECT_EQ(key.GetValueSize(u"EventMessageFile"), (folder.Length() + 16) * 2) << "with its terminator";
}

TEST_F(EventLog, TheHandlerIsSilentAboutFailures) {
    SKIP_WITHOUT_FAULTS();
    struct Row {
        const char* function;
        std::int32_t calls;
        const char* written;
    };
    constexpr const char* both = "Application 8 6 title: text\nApplication 8 6 title: more\n";
    constexpr Row rows[] = {{"RegisterEventSource", 1, ""},
                            {"ReportEvent", 2, ""},
                            {"DeregisterEventSource", 1, both},
                            {"RegCreateKeyEx", 1, both},
                            {"RegSetValueEx", 1, both}};
    for (const Row& row : rows) {
        written.clear();
        Platform::ArmFault(row.function, 1, 5, Platform::FaultMode::FromThenOn);
        {
            CEventLogMessageHandler handler;
            EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0), 1) << row.function;
            EXPECT_EQ(handler.ShowMessageBox(nullptr, u"more", u"title", 0), 1) << row.function;
        }
        EXPECT_EQ(Platform::FaultCallsSeen(), row.calls) << row.function;
        EXPECT_EQ(written, row.written) << row.function;
    }
}
