#include "foundation/inc/messagehandlers.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/lineends.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/threadobject.h"
#include "platform/inc/faults.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/text.h"
#include "tests/support/boxes.h"
#include "tests/support/recordinghandler.h"
#include "tests/support/standardoutput.h"
#include "tests/support/text.h"
#include <set>
#include <thread>
#include <vector>

using namespace Tsx;

namespace {

std::int32_t Show(CMessageHandler& handler, const char16_t* text, std::uint32_t style = 0) {
    return handler.ShowMessageBox(nullptr, text, u"title", style);
}

} // namespace

TEST(MessageHandlers, ButtonsAndEventTypesOfAStyle) {
    struct Row {
        std::uint32_t style;
        std::uint16_t eventType;
        std::int32_t first, second, third;
    };
    constexpr Row rows[] = {{0, 4, 1, 1, 1}, {1, 2, 1, 2, 1}, {4, 4, 6, 7, 6}, {3, 4, 6, 7, 2},
                            {5, 1, 4, 2, 4}, {2, 1, 3, 4, 5}, {6, 4, 3, 3, 3}, {15, 4, 3, 3, 3}};
    for (const Row& row : rows) {
        EXPECT_EQ(GetDefaultButton(row.style | 0x51030), row.first) << row.style;
        EXPECT_EQ(GetDefaultButton(row.style | 0x100), row.second) << row.style;
        EXPECT_EQ(GetDefaultButton(row.style | 0x200), row.third) << row.style;
        EXPECT_EQ(GetEventType(row.style | 0x51000), row.eventType) << row.style;
        EXPECT_EQ(GetEventType(row.style | 0x10), 1) << row.style;
        EXPECT_EQ(GetEventType(row.style | 0x20), 4) << row.style;
        EXPECT_EQ(GetEventType(row.style | 0x30), 2) << row.style;
        EXPECT_EQ(GetEventType(row.style | 0x40), 4) << row.style;
    }
}

TEST(MessageHandlers, ABoxHasAnIconAndItsPlace) {
    CMessageBoxHandler handler;
    auto* owner = reinterpret_cast<Platform::Window>(&handler);
    struct Row {
        std::uint32_t style, shown;
    };
    constexpr Row rows[] = {{0, 0x30},    {1, 0x31},    {3, 0x33},    {4, 0x34},        {2, 2},         {5, 5},
                            {0x10, 0x10}, {0x41, 0x41}, {0x80, 0x80}, {0x1134, 0x1134}, {0x200, 0x230}, {0x105, 0x105}};
    const auto show = [&](const Row& row, bool visible, Platform::Window boxOwner, std::uint32_t placed) {
        PopupIsVisible = visible;
        for (const bool indirect : {false, true}) {
            ShownBoxes.clear();
            BoxAnswer = Platform::IdCancel;
            const std::int32_t answer =
                indirect ? handler.ShowMessageWithIcon(boxOwner, u"text", u"title", row.style, nullptr)
                         : handler.ShowMessageBox(boxOwner, u"text", u"title", row.style);
            EXPECT_EQ(answer, Platform::IdCancel);
            const CUnicodeString expected = CUnicodeString::Format(u"title: text %x\n", row.shown | placed);
            EXPECT_EQ(ShownBoxes, expected.ToNarrow(AnsiCodePage).Text()) << std::hex << row.style;
        }
    };
    for (const Row& row : rows) {
        show(row, true, nullptr, 0x52000);
        show(row, false, owner, 0x52000);
        show(row, true, owner, 0);
    }
    BoxAnswer = 0; // no box came up
    EXPECT_EQ(handler.ShowMessageBox(nullptr, u"text", u"title", 0x104), Platform::IdNo);
}

TEST(MessageHandlers, WhatAHandlerCannotShowGoesToTheLastResort) {
    struct CRaisingHandler : CMessageHandler {
        std::int32_t ShowMessageBox(Platform::Window, const char16_t*, const char16_t*, std::uint32_t) override {
            GenerateLastErrorException(6);
            return 0;
        }
    } handler;
    const CMessageHandlerScope scope(&handler);
    ShownBoxes.clear();
    EXPECT_FALSE(RunAndShowFailure([] { GenerateCheckException(ERR_BAD_ARCHIVE, u"x", u""); }));
    EXPECT_FALSE(RunAndShowFailure(&GenerateUserException));
    EXPECT_FALSE(RunAndShowFailure([] { throw std::bad_alloc(); }));
    Platform::ArmFault("allocation", 1, 8, Platform::FaultMode::FromThenOn);
    EXPECT_FALSE(RunAndShowFailure(&GenerateMemoryException));
    Platform::DisarmFaults();
    EXPECT_EQ(ShownBoxes, "Tessarix: x is corrupted. 1010\n"
                          "Tessarix: Not enough memory! 1010\nTessarix: Not enough memory! 1010\n");
}

TEST(MessageHandlers, ABoxTakesAnIconOfTheProgram) {
    CMessageBoxHandler handler;
    ShownBoxes.clear();
    // On Linux no module has icons.
    for (const char16_t* name : {u"TESTICON", u"NoSuchIcon"}) {
        if (HAS_TEST_ICON && name[0] == u'T') {
            handler.ShowMessageWithIcon(nullptr, u"text", u"title", 0x1, name);
            handler.ShowMessageWithIcon(nullptr, u"text", u"title", 0x1033, name);
        } else {
            EXPECT_TRUE(Raised<CInternalError>([&] { handler.ShowMessageWithIcon(nullptr, u"x", u"t", 0, name); }));
        }
    }
    EXPECT_EQ(ShownBoxes, HAS_TEST_ICON ? "title: text 52081 (TESTICON)\ntitle: text 53083 (TESTICON)\n" : "");
}

TEST(MessageHandlers, LineEnds) {
    constexpr const char16_t* rows[][2] = {{u"", u""},           {u"a\nb", u"a\r\nb"}, {u"\n\n", u"\r\n\r\n"},
                                           {u"a\r\n", u"a\r\n"}, {u"\ra\r", u"\ra\r"}, {u"\r\r\n\n", u"\r\r\n\r\n"}};
    for (const auto& [text, repaired] : rows) {
        EXPECT_EQ(WithCarriageReturns(text), repaired) << Readable(text);
    }
}

TEST(MessageHandlers, TheConsoleHandlerWritesForWhatTheOutputIs) {
    const std::string ansi = Platform::GetACP() == Platform::CodePageUtf8 ? "\xC3\xA4" : "\xE4";
    const std::string lines = ansi + "\r\n\r\n";
    const std::string wideLines{"\xE4\0\r\0\n\0\r\0\n\0", 10};
    struct Row {
        const char* name;
        EOutput kind;
        std::string before, after;
    };
    const Row rows[] = {{"new file", EOutput::File, "", lines},
                        {"UTF-16 file", EOutput::File, {"\xFF\xFEx\0", 4}, wideLines},
                        {"file of the mark alone", EOutput::File, "\xFF\xFE", wideLines},
                        {"other file", EOutput::File, "text", lines},
                        {"file that is too short for a mark", EOutput::File, "\xFF", lines},
                        {"mark in the other order", EOutput::File, "\xFE\xFF", lines},
                        {"pipe", EOutput::Pipe, "", lines},
                        {"pipe without a reader", EOutput::BrokenPipe, "", ""},
                        {"terminal", EOutput::Terminal, "", "\xC3\xA4\r\n\r\n"},
                        {"null device", EOutput::NullDevice, "", ""},
                        {"no output", EOutput::Missing, "", ""}};
    for (const Row& row : rows) {
        if (row.kind == EOutput::Terminal && !CStandardOutput::HasTerminals) {
            continue;
        }
        CStandardOutput output(row.kind, row.before);
        CConsoleMessageHandler handler;
        const std::int32_t answer = Show(handler, u"\u00E4", 0x104);
        Show(handler, u"");
        EXPECT_EQ(output.Finish(), row.before + row.after) << row.name;
        EXPECT_EQ(answer, 7) << row.name;
    }
}

TEST(MessageHandlers, TheConsoleHandlerLosesWhatItCannotWrite) {
    SKIP_WITHOUT_FAULTS();
    struct Row {
        const char *function, *written;
    };
    constexpr Row rows[] = {{"WriteFile", ""},
                            {"ReadFile", "a\r\n"},
                            {"SetFilePointerEx", "a\r\n"},
                            {"GetFileType", "a\r\n"},
                            {"GetStdHandle", ""}};
    for (const Row& row : rows) {
        CStandardOutput output(EOutput::File, "\xFF\xFE");
        Platform::ArmFault(row.function, 1, 29, Platform::FaultMode::FromThenOn);
        CConsoleMessageHandler handler;
        EXPECT_EQ(Show(handler, u"a"), 1) << row.function;
        Platform::DisarmFaults();
        EXPECT_EQ(output.Finish(), std::string("\xFF\xFE") + row.written) << row.function;
    }
}

TEST(MessageHandlers, TextsOfSeveralThreadsStayWhole) {
    constexpr int threadCount = 4;
    constexpr int textCount = 50;
    CStandardOutput output(EOutput::Pipe);
    {
        CConsoleMessageHandler handler;
        const CMessageHandlerScope scope(&handler);
        std::vector<std::thread> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < textCount; ++i) {
                    DisplayMessage(CUnicodeString::Format(u"<%d %d>", t, i), 0);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    const std::string all = output.Finish();
    std::set<std::string> lines;
    for (std::size_t start = 0; start < all.size();) {
        const std::size_t end = all.find("\r\n", start);
        lines.insert(all.substr(start, end - start));
        start = end + 2;
    }
    EXPECT_EQ(lines.size(), std::size_t{threadCount} * textCount);
    for (int i = 0; i < threadCount * textCount; ++i) {
        const std::string line = "<" + std::to_string(i % threadCount) + " " + std::to_string(i / threadCount) + ">";
        EXPECT_TRUE(lines.contains(line)) << line;
    }
}

TEST(MessageHandlers, ScopesNest) {
    CRecordingHandler outer;
    CRecordingHandler inner;
    CRecordingHandler own;
    CMessageHandler* const byDefault = GetCurrentMessageHandler();
    EXPECT_EQ(byDefault, GetDefaultMessageHandler());
    {
        const CMessageHandlerScope outerScope(&outer);
        {
            const CMessageHandlerScope ownScope(&own, true);
            const CMessageHandlerScope innerScope(&inner);
            EXPECT_EQ(GetCurrentMessageHandler(), &own) << "the thread's comes first";
            std::thread([&] { EXPECT_EQ(GetCurrentMessageHandler(), &inner) << "another thread"; }).join();
        }
        EXPECT_EQ(GetCurrentMessageHandler(), &outer);
        {
            auto first = std::make_unique<CMessageHandlerScope>(&inner);
            const CMessageHandlerScope second(&own);
            first.reset(); // finds another one than its own: swallowed
            EXPECT_EQ(GetCurrentMessageHandler(), &outer);
        }
        EXPECT_EQ(GetCurrentMessageHandler(), &inner) << "what the last one to end had found";
    }
    EXPECT_EQ(GetCurrentMessageHandler(), byDefault);
    EXPECT_TRUE(outer.texts.empty() && inner.texts.empty() && own.texts.empty());
}

TEST(MessageHandlers, AThreadWithoutARecordInstallsNothingForOthers) {
    SKIP_WITHOUT_FAULTS();
    struct CScopingHandler : CRecordingHandler {
        CRecordingHandler own;
        CMessageHandler* seen = nullptr;
        std::int32_t ShowMessageBox(Platform::Window owner, const char16_t* text, const char16_t* title,
                                    std::uint32_t style) override {
            const CMessageHandlerScope scope(&own, true); // while the record of the thread is being made
            seen = GetCurrentMessageHandler();
            return CRecordingHandler::ShowMessageBox(owner, text, title, style);
        }
    };
    CScopingHandler handler;
    const CMessageHandlerScope scope(&handler);
    std::thread([&] {
        ThreadErrorMode.Get()->NoExceptions = true;
        Platform::ArmFault("DuplicateHandle", 1, 6, Platform::FaultMode::Once);
        const CMessageHandlerScope mine(&handler.own, true);
        Platform::DisarmFaults();
        EXPECT_EQ(GetCurrentMessageHandler(), &handler.own);
    }).join();
    EXPECT_EQ(handler.texts.size(), 1U) << "the thread's handle could not be had";
    EXPECT_EQ(handler.seen, &handler);
    EXPECT_EQ(GetCurrentMessageHandler(), &handler);
}

TEST(MessageHandlers, TextsAndExceptionsReachTheHandlerUnderTheApplicationsName) {
    CRecordingHandler handler;
    const CMessageHandlerScope scope(&handler);
    EXPECT_EQ(DisplayMessage(u"text", 0x104), 7);
    SetApplicationName(u"Name");
    CCheckException check(ERR_BAD_ARCHIVE, u"x", u"");
    DisplayException(&check);
    CInternalError internal(InternalAssert, u"file", 1, 0);
    DisplayException(&internal);
    CUserException user;
    DisplayException(&user);
    SetApplicationName(u"");
    const std::vector<CUnicodeString> expected = {u"Tessarix: text 104", u"Name: x is corrupted. 0",
                                                  u"Name: Internal Program Error:\nfile, 1. 1010"};
    EXPECT_EQ(handler.boxes, expected);
}
