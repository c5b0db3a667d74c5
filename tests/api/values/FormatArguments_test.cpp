// Objects among the arguments of the calls that format: texts are printed, any others do not compile.
#include "support/DebugRecorder.h"

#include <vorlund/Debug.h>
#include <vorlund/Id.h>
#include <vorlund/String.h>
#include <vorlund/TextWriter.h>

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

template <class... T>
concept Printable = requires(const T&... arguments) {
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s"), arguments...);
};
template <class... T>
concept Writable = requires(CTextWriter& writer, const T&... arguments) {
    writer.Write(VRL_L("%s"), arguments...);
};

struct TRecord {
    int number;
};
union TUnion {
    int number;
};
class CDerivedText : public CString {};

template <class... T> constexpr bool kIsPassed = Printable<T...>&& Writable<T...>;
template <class... T> constexpr bool kIsRefused = !Printable<T...> && !Writable<T...>;

static_assert(kIsPassed<> && kIsPassed<int, double, const wchar*, void*> && kIsPassed<wchar[4]>);
static_assert(kIsPassed<CString> && kIsPassed<int, CString, wchar[2], CString>);
static_assert(kIsRefused<std::string> && kIsRefused<wstring> && kIsRefused<CId>);
static_assert(kIsRefused<TRecord> && kIsRefused<TUnion> && kIsRefused<CDerivedText>);
static_assert(kIsRefused<CString, TRecord> && kIsRefused<int, wstring, const wchar*>);

std::string Printed(const CDebugRecorder& recorder) {
    const auto entries = recorder.GetEntries();
    return entries.size() == 1 ? Narrow(entries[0].text) : std::to_string(entries.size()) + " messages";
}

TEST(FormatArguments, TextsArePrinted) {
    CString changeable("abc");
    const CString fixed(VRL_L("x\u00E9z"));
    {
        const CDebugRecorder recorder;
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s|%s|%d|%s"), changeable, fixed, 7, VRL_L("end"));
        EXPECT_EQ(Printed(recorder), "abc|x\u00E9z|7|end");
    }
    {
        // A temporary lives until the call returns; a number keeps its size and its promotion.
        const CDebugRecorder recorder;
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%lld|%s|%.1f|%c|%S"), 1ll << 40, fixed + "!", 0.5f,
                             'a', "narrow");
        EXPECT_EQ(Printed(recorder), "1099511627776|x\u00E9z!|0.5|a|narrow");
    }
    {
        const CDebugRecorder recorder;
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("[%5.2s]"), changeable);
        EXPECT_EQ(Printed(recorder), "[   ab]");
    }
}

} // namespace
} // namespace vorlund::test
