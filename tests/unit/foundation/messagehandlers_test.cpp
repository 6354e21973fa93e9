#include "foundation/inc/messagehandlers.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/lineends.h"
#include "foundation/inc/messagenames.h"
#include "platform/inc/faults.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/text.h"
#include "tests/support/boxes.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/standardoutput.h"
#include <atomic>
#include <tuple>

using namespace Tsx;

namespace {

std::int32_t Show(CMessageHandler& handler, const char16_t* text, std::uint32_t style = 0) {
    return handler.ShowMessageBox(nullptr, text, u"title", style);
}

} // namespace

TEST(MessageHandlers, ButtonsAndEventTypesOfAStyle) {
    // Each row: the buttons of the style, the type of event without an icon, the button by each of the three defaults.
    constexpr std::int32_t rows[][5] = {{0, 4, 1, 1, 1}, {1, 2, 1, 2, 1}, {4, 4, 6, 7, 6}, {3, 4, 6, 7, 2},
                                        {5, 1, 4, 2, 4}, {2, 1, 3, 4, 5}, {6, 4, 3, 3, 3}, {15, 4, 3, 3, 3}};
    for (const auto& [buttons, type, first, second, third] : rows) {
        const auto style = static_cast<std::uint32_t>(buttons);
        EXPECT_EQ(GetDefaultButton(style | 0x51030), first) << style;
        EXPECT_EQ(GetDefaultButton(style | 0x100), second) << style;
        EXPECT_EQ(GetDefaultButton(style | 0x200), third) << style;
        EXPECT_EQ(GetEventType(style | 0x51000), type) << style;
    }
    for (const auto& [icon, ofIcon] : {std::pair(0x15U, 1), {0x25U, 4}, {0x30U, 2}, {0x45U, 4}}) {
        EXPECT_EQ(GetEventType(icon), ofIcon) << icon;
    }
}

TEST(MessageHandlers, ABoxHasAnIconAndItsPlace) {
    CMessageBoxHandler handler;
    auto* owner = reinterpret_cast<Platform::Window>(&handler);
    BoxAnswer = Platform::IdCancel;
    ShownBoxes.clear();
    for (const std::uint32_t style : {0U, 1U, 3U, 4U, 2U, 0x10U, 0x80U, 0x1134U, 0x200U}) {
        EXPECT_EQ(Show(handler, u"text", style), Platform::IdCancel) << std::hex << style;
    }
    for (const bool visible : {false, true}) {
        PopupIsVisible = visible;
        handler.ShowMessageBox(owner, u"text", u"title", 0);
    }
    EXPECT_EQ(ShownBoxes, "title: text 52030\ntitle: text 52031\ntitle: text 52033\ntitle: text 52034\n"
                          "title: text 52002\ntitle: text 52010\ntitle: text 52080\ntitle: text 53134\n"
                          "title: text 52230\ntitle: text 52030\ntitle: text 30\n");
    BoxAnswer = 0; // no box came up
    EXPECT_EQ(Show(handler, u"text", 0x104), Platform::IdNo);
    ShownBoxes.clear();
    for (const std::uint32_t style : {0x1U, 0x1033U}) { // on Linux no module has icons
        handler.ShowMessageWithIcon(nullptr, u"text", u"title", style, HAS_TEST_ICON ? u"TESTICON" : nullptr);
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { handler.ShowMessageWithIcon(nullptr, u"x", u"t", 0, u"NoSuchIcon"); }));
    EXPECT_EQ(ShownBoxes, HAS_TEST_ICON ? "title: text 52081 (TESTICON)\ntitle: text 53083 (TESTICON)\n"
                                        : "title: text 52031\ntitle: text 53033\n");
}

TEST(MessageHandlers, WhatAHandlerCannotShowGoesToTheLastResort) {
    struct CRaisingHandler : CMessageHandler {
        std::int32_t ShowMessageBox(Platform::Window, const char16_t*, const char16_t*, std::uint32_t) override {
            GenerateUserException();
        }
    } handler;
    const CMessageHandlerScope scope(&handler);
    ShownBoxes.clear();
    EXPECT_FALSE(RunAndShowFailure([] { GenerateCheckException(ERR_BAD_ARCHIVE, u"x", u""); }));
    EXPECT_FALSE(RunAndShowFailure([] { throw std::bad_alloc(); }));
    Platform::ArmFault("allocation", 1, 8, Platform::FaultMode::FromThenOn);
    EXPECT_FALSE(RunAndShowFailure(&GenerateMemoryException));
    Platform::DisarmFaults();
    EXPECT_EQ(ShownBoxes, "Tessarix: x is corrupted. 1010\n"
                          "Tessarix: Not enough memory! 1010\nTessarix: Not enough memory! 1010\n");
}

TEST(MessageHandlers, LineEnds) {
    for (const auto& [text, repaired] :
         {std::pair(u"a\n\nb", u"a\r\n\r\nb"), {u"a\r\n", u"a\r\n"}, {u"\ra\r\r\n\n", u"\ra\r\r\n\r\n"}, {u"", u""}}) {
        EXPECT_EQ(WithCarriageReturns(text), repaired) << Readable(text);
    }
}

TEST(MessageHandlers, TheConsoleHandlerWritesForWhatTheOutputIs) {
    const std::string ansi = Platform::GetACP() == Platform::CodePageUtf8 ? "\xC3\xA4" : "\xE4";
    const std::string lines = ansi + "\r\n\r\n";
    const std::string wideLines{"\xE4\0\r\0\n\0\r\0\n\0", 10};
    using TRow = std::tuple<const char*, EOutput, std::string, std::string>; // with what is there, and what is written
    for (const auto& [name, kind, before, written] : {TRow{"new file", EOutput::File, "", lines},
                                                      {"UTF-16 file", EOutput::File, {"\xFF\xFEx\0", 4}, wideLines},
                                                      {"file too short for a mark", EOutput::File, "\xFF", lines},
                                                      {"mark in the other order", EOutput::File, "\xFE\xFF", lines},
                                                      {"pipe", EOutput::Pipe, "", lines},
                                                      {"pipe without a reader", EOutput::BrokenPipe, "", ""},
                                                      {"terminal", EOutput::Terminal, "", "\xC3\xA4\r\n\r\n"},
                                                      {"no output", EOutput::Missing, "", ""}}) {
        if (kind != EOutput::Terminal || CStandardOutput::HasTerminals) {
            CStandardOutput output(kind, before);
            CConsoleMessageHandler handler;
            const std::int32_t answer = Show(handler, u"\u00E4", 0x104);
            Show(handler, u"");
            EXPECT_EQ(output.Finish(), before + written) << name;
            EXPECT_EQ(answer, 7) << name;
        }
    }
}

TEST(MessageHandlers, ThreadsThatWriteAtOnceWriteBehindWhatIsThere) {
    // Whoever is the first looks for a mark, and moves the file's position meanwhile.
    for (int round = 0; round < 100; ++round) {
        CStandardOutput output(EOutput::File, "\xFF\xFE");
        CConsoleMessageHandler handler;
        OnThreads(3, [&](int) { Show(handler, u"a"); });
        const std::string line{"a\0\r\0\n\0", 6};
        ASSERT_EQ(output.Finish(), "\xFF\xFE" + line + line + line);
    }
}

TEST(MessageHandlers, ShowTheTextsOfThreadsOneByOne) {
    struct COverlapHandler : CMessageHandler {
        std::atomic<int> inside = 0, shown = 0, overlaps = 0, strangers = 0;
        std::int32_t ShowMessageBox(Platform::Window, const char16_t*, const char16_t* title, std::uint32_t) override {
            overlaps += inside++;
            std::this_thread::yield();
            const std::u16string_view name(title);
            strangers += name.find_first_not_of(name[0]) != std::u16string_view::npos || name.size() < 100;
            ++shown;
            return --inside;
        }
    } handler;
    const CMessageHandlerScope scope(&handler);
    const auto nameIt = [](int i) { SetApplicationName(std::u16string(5000, u"ab"[i % 2]).c_str()); };
    nameIt(0);
    OnThreads(3, [&](int thread) {
        for (int i = 0; thread == 0 ? handler.shown < 600 : i < 300; ++i) {
            thread == 0 ? nameIt(i) : static_cast<void>(DisplayMessage(u"text", 0));
        }
    });
    SetApplicationName(u"");
    EXPECT_EQ(handler.overlaps, 0);
    EXPECT_EQ(handler.strangers, 0) << "a title that was being changed";
}

TEST(MessageHandlers, ScopesNest) {
    CRecordingHandler outer;
    CRecordingHandler inner;
    CRecordingHandler own;
    {
        const CMessageHandlerScope outerScope(&outer);
        {
            const CMessageHandlerScope ownScope(&own, true);
            const CMessageHandlerScope innerScope(&inner);
            EXPECT_EQ(GetCurrentMessageHandler(), &own) << "the thread's comes first";
            OnThreads(1, [&](int) { EXPECT_EQ(GetCurrentMessageHandler(), &inner) << "another thread"; });
        }
        auto first = std::make_unique<CMessageHandlerScope>(&inner);
        const CMessageHandlerScope second(&own);
        first.reset(); // finds another one than its own: swallowed
        EXPECT_EQ(GetCurrentMessageHandler(), &outer);
    }
    EXPECT_EQ(GetCurrentMessageHandler(), GetDefaultMessageHandler());
}

TEST(MessageHandlers, TextsAndExceptionsReachTheHandlerUnderTheApplicationsName) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    EXPECT_EQ(DisplayMessage(u"text", 0x104), 7);
    SetApplicationName(u"Name");
    RunAndShowFailure([] { GenerateCheckException(ERR_BAD_ARCHIVE, u"x", u""); });
    RunAndShowFailure([] { throw new CInternalError(InternalAssert, u"file", 1, 0); });
    RunAndShowFailure(&GenerateUserException);
    SetApplicationName(u"");
    EXPECT_EQ(handler.boxes[0] + handler.boxes[1] + handler.boxes.back(),
              u"Tessarix: text 104Name: x is corrupted. 0Name: Internal Program Error:\nfile, 1. 1010");
    EXPECT_EQ(handler.boxes.size(), 3U);
}
