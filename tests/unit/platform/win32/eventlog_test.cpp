// The event log handler where the system has an event log.
#include "foundation/inc/filesystem.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/registrykey.h"
#include "tests/support/text.h"

using namespace Tsx;

TEST(EventLog, TheHandlerWritesAndRegisters) {
    constexpr const char16_t* path = u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\CorvaneTest";
    CRegistryKey key;
    ASSERT_TRUE(key.Open(Platform::RootKey(Platform::HkeyLocalMachine), path, RK_Write));
    key.SetStringValue(u"EventMessageFile", u"x", 4); // what an earlier run left must not count
    SetApplicationName(u"CorvaneTest");
    CEventLogMessageHandler handler;
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x104), 7);
    SetApplicationName(u"");
    const CUnicodeString program = FileSystem::GetProgramPath();
    const CUnicodeString folder = program.Left(program.FindLast(u'\\') + 1);
    EXPECT_EQ(key.GetStringValue(u"EventMessageFile", u""), folder + u"TsxEventSrc.dll");
}
