#include "support/DebugRecorder.h"
#include "support/Failures.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

constexpr TDebugMessageType kAllTypes[] = {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT,
                                           DEBUG_MESSAGE_STDERR};

/// Puts one handler in for the length of a block; the other destinations are silent.
class CHandlerScope {
public:
    CHandlerScope(TDebugMessageType type, TDebugHandler handler, void* user) : former_(debugTarget) {
        CDebug::SetHandler(type, handler, user);
    }
    CHandlerScope(const CHandlerScope&) = delete;
    CHandlerScope& operator=(const CHandlerScope&) = delete;
    ~CHandlerScope() { SetDebugTarget(former_); }

private:
    TDebugTarget former_;
};

/// Calls a function of the test.
template <class TAct> class CCallingHandler : public CHandlerScope {
public:
    CCallingHandler(TDebugMessageType type, TAct act) : CHandlerScope(type, &OnMessage, this), act_(act) {}

private:
    static void OnMessage(TDebugMessageType, const wchar*, void* user) {
        static_cast<CCallingHandler*>(user)->act_();
    }
    TAct act_;
};

// Destinations.

TEST(Debug, DestinationsHaveTheirValues) {
    EXPECT_EQ(DEBUG_MESSAGE_OUTPUT, 0);
    EXPECT_EQ(DEBUG_MESSAGE_BOX, 1);
    EXPECT_EQ(DEBUG_MESSAGE_STDOUT, 2);
    EXPECT_EQ(DEBUG_MESSAGE_STDERR, 3);
}

TEST(Debug, EachDestinationHasItsOwnHandler) {
    struct TCalls {
        int count = 0;
        TDebugMessageType type = DEBUG_MESSAGE_OUTPUT;
        std::string text;
    };
    TCalls calls[4];
    const CDebugRecorder restorer;
    for (const TDebugMessageType type : kAllTypes) {
        CDebug::SetHandler(
            type,
            [](TDebugMessageType called, const wchar* text, void* user) {
                TCalls& own = *static_cast<TCalls*>(user);
                ++own.count;
                own.type = called;
                own.text = Narrow(text);
            },
            &calls[type]);
    }
    for (const TDebugMessageType type : kAllTypes) {
        CDebug::PrintMessage(type, VRL_L("to %d"), static_cast<int>(type));
        EXPECT_EQ(calls[type].count, 1);
        EXPECT_EQ(calls[type].type, type);
        EXPECT_EQ(calls[type].text, "to " + std::to_string(type));
    }
    for (const TCalls& each : calls) EXPECT_EQ(each.count, 1);
    EXPECT_TRUE(restorer.GetEntries().empty());
}

TEST(Debug, UnknownDestinationsPrintNothing) {
    const CDebugRecorder recorder;
    for (const int value :
         {-1, 4, 5, 255, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const auto type = static_cast<TDebugMessageType>(value);
        CDebug::PrintMessage(type, VRL_L("nowhere"));
        CDebug::SetHandler(
            type, [](TDebugMessageType, const wchar*, void*) { FAIL() << "called"; }, nullptr);
        CDebug::PrintMessage(type, VRL_L("nowhere"));
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("here"));
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{"here"});
}

// Texts.

TEST(Debug, TextIsCutAt1023Units) {
    for (const std::size_t length : {0u, 1u, 1022u, 1023u, 1024u, 1025u, 100000u}) {
        const wstring text(length, VRL_L('x'));
        const CDebugRecorder recorder;
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s"), text.c_str());
        EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT),
                  TTexts{std::string(std::min<std::size_t>(length, 1023), 'x')});
    }
}

TEST(Debug, CutKeepsUnitsNotCharacters) {
    const wstring text = wstring(1022, VRL_L('x')) + VRL_L("\U0001F600");
    const CDebugRecorder recorder;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s"), text.c_str());
    ASSERT_EQ(recorder.GetEntries().size(), 1u);
    EXPECT_EQ(Narrow(recorder.GetEntries()[0].text), Narrow(text.substr(0, 1023)));
}

TEST(Debug, FormatIsCutToo) {
    const wstring format = wstring(1022, VRL_L('x')) + VRL_L("%d");
    const CDebugRecorder recorder;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, format.c_str(), 123);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{std::string(1022, 'x') + '1'});
}

TEST(Debug, LineEndsInsideATextStay) {
    const CDebugRecorder recorder;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("a\nb\n"));
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{"a\nb\n"});
}

TEST(Debug, NullFormatIsAnEmptyText) {
    const CDebugRecorder recorder;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, nullptr);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{""});
}

// What a handler may do.

TEST(Debug, MessagesFromInsideAHandlerAreDropped) {
    const CDebugRecorder recorder;
    int calls = 0;
    const CCallingHandler handler(DEBUG_MESSAGE_BOX, [&] {
        ++calls;
        for (const TDebugMessageType type : kAllTypes) CDebug::PrintMessage(type, VRL_L("nested"));
        const CBugException nested(VRL_L("m"), VRL_L("f"), 1, VRL_L("nested"));
        EXPECT_EQ(nested.GetLine(), 1);
    });
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, VRL_L("outer"));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(recorder.GetEntries().empty());
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("after"));
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, VRL_L("again"));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{"after"});
}

template <class TRaise> void ExpectDropped(TRaise raise) {
    const CDebugRecorder recorder;
    int calls = 0;
    const CCallingHandler handler(DEBUG_MESSAGE_OUTPUT, [&] {
        ++calls;
        raise();
    });
    EXPECT_NO_THROW(CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("x")));
    // The failure that is being reported is the one that arrives.
    constexpr TFailure kReported{VRL_L("m"), VRL_L("f"), 1, VRL_L("r")};
    ExpectRaises<CIOException>(kReported, [&] { Raise<CIOException>(kReported); });
    EXPECT_EQ(calls, 2);
    CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("after"));
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_STDERR), TTexts{"after"});
}

TEST(Debug, ExceptionsThatLeaveAHandlerAreDropped) {
    ExpectDropped([] { throw std::runtime_error("handler"); });
    ExpectDropped([] { throw 5; });
    ExpectDropped([] { throw CBugException(VRL_L("m"), VRL_L("f"), 1, VRL_L("r")); });
}

TEST(Debug, HandlerMayReplaceItself) {
    const CDebugRecorder recorder;
    static int firstCalls;
    static int secondCalls;
    firstCalls = secondCalls = 0;
    CDebug::SetHandler(DEBUG_MESSAGE_STDOUT, [](TDebugMessageType type, const wchar*, void*) {
        ++firstCalls;
        CDebug::SetHandler(type, [](TDebugMessageType, const wchar*, void*) { ++secondCalls; });
    });
    for (int i = 0; i < 3; ++i) CDebug::PrintMessage(DEBUG_MESSAGE_STDOUT, VRL_L("x"));
    EXPECT_EQ(firstCalls, 1);
    EXPECT_EQ(secondCalls, 2);
}

// Threads.

TEST(Debug, WaitingHandlerHoldsUpNobodyElse) {
    const CDebugRecorder recorder;
    std::promise<void> entered;
    std::promise<void> released;
    const CCallingHandler handler(DEBUG_MESSAGE_BOX, [&] {
        entered.set_value();
        released.get_future().wait();
    });
    std::thread waiting([] { CDebug::PrintMessage(DEBUG_MESSAGE_BOX, VRL_L("modal")); });
    entered.get_future().wait();

    // The mark "inside a handler" is the other thread's, and no lock is held.
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("meanwhile"));
    CDebug::SetHandler(DEBUG_MESSAGE_BOX, nullptr);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{"meanwhile"});
    released.set_value();
    waiting.join();
}

TEST(Debug, HandlerAndUserPointerStayTogether) {
    static int firstUser;
    static int secondUser;
    static std::atomic<int> calls;
    static std::atomic<int> mistakes;
    calls = mistakes = 0;
    const TDebugHandler first = [](TDebugMessageType, const wchar*, void* user) {
        ++calls;
        mistakes += user != &firstUser;
    };
    const TDebugHandler second = [](TDebugMessageType, const wchar*, void* user) {
        ++calls;
        mistakes += user != &secondUser;
    };
    const CHandlerScope scope(DEBUG_MESSAGE_OUTPUT, first, &firstUser);
    constexpr int kPrinters = 3;
    constexpr int kMessages = 2000;
    std::atomic<int> printing = kPrinters;
    std::vector<std::thread> printers;
    for (int i = 0; i < kPrinters; ++i) {
        printers.emplace_back([&] {
            for (int n = 0; n < kMessages; ++n) CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%d"), n);
            --printing;
        });
    }
    while (printing > 0) {
        CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, second, &secondUser);
        CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, first, &firstUser);
    }
    for (std::thread& printer : printers) printer.join();
    EXPECT_EQ(calls, kPrinters * kMessages);
    EXPECT_EQ(mistakes, 0);
}

TEST(Debug, MessagesOfThreadsStayWhole) {
    const CDebugRecorder recorder;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            const wstring body(500, static_cast<wchar>('a' + number));
            for (int i = 0; i < 100; ++i)
                CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("%s"), body.c_str());
        });
    }
    for (std::thread& thread : threads) thread.join();
    int counts[4] = {};
    for (const auto& entry : recorder.GetEntries()) {
        ASSERT_EQ(entry.text.size(), 500u);
        const int number = entry.text[0] - 'a';
        EXPECT_EQ(entry.text, wstring(500, entry.text[0]));
        ++counts[number];
    }
    for (const int count : counts) EXPECT_EQ(count, 100);
}

} // namespace
} // namespace vorlund::test
