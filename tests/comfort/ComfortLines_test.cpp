// The lines that the headers of comfort promise, as somebody writes them who has included All.h alone: each
// compiles, and does what it says. What is behind them is tested where it belongs.
#include <vorlund/All.h>

#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

namespace vorlund::test {
namespace {

using namespace std::chrono_literals;

TEST(ComfortLines, ComparisonsOfTwoTextsThatMayChangeCompile) {
    CString a(VRL_L("a"));
    CString b(VRL_L("b"));
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a <= b);
    EXPECT_FALSE(a > b);
    EXPECT_FALSE(a >= b);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    const CString c = a;
    EXPECT_TRUE(c < b);
    EXPECT_TRUE(a < c + VRL_L("x"));
    EXPECT_TRUE(a == "a");
    EXPECT_TRUE(a == VRL_L("a"));
}

TEST(ComfortLines, UnitsAndPositionsOfEveryKindCompile) {
    CString s(VRL_L("x"));
    EXPECT_TRUE(s == wchar('x'));
    s += wchar('y');
    EXPECT_TRUE(s == VRL_L("xy"));
    EXPECT_TRUE(s + wchar('z') == VRL_L("xyz"));
    EXPECT_EQ(s[std::size_t{1}], wchar('y'));
    EXPECT_EQ(s[1L], wchar('y'));
    EXPECT_EQ(s[1UL], wchar('y'));
    EXPECT_EQ(s[1], wchar('y'));
    EXPECT_EQ(s[1U], wchar('y'));
    s[std::size_t{0}] = wchar('z');
    EXPECT_TRUE(s == VRL_L("zy"));
    // As documented: the unit 0 is none that can go, and this form ends by raising when it is done.
    EXPECT_THROW(s.Remove(0), CInvalidParameterException);
    EXPECT_TRUE(s == VRL_L("zy"));
    EXPECT_EQ(CString(nullptr).Length(), 0u);
}

TEST(ComfortLines, TextsComeFromUtf8AndGoThere) {
    const std::string utf8 = "\u00e9\u20ac\U0001F3B5";
    const wstring wide = TextFromUtf8(utf8);
    EXPECT_EQ(wide, VRL_L("\u00e9\u20ac\U0001F3B5"));
    EXPECT_EQ(TextToUtf8(wide), utf8);
    const CString text = StringFromUtf8(utf8);
    EXPECT_EQ(ToUtf8(text), utf8);
    EXPECT_EQ(MakeString(wide).Length(), 4u);
    EXPECT_EQ(ViewOf(text), wide);
    std::ostringstream out;
    out << text << '.';
    EXPECT_EQ(out.str(), utf8 + ".");
    std::size_t units = 0;
    for ([[maybe_unused]] const wchar unit : text) ++units;
    EXPECT_EQ(units, 4u);
}

TEST(ComfortLines, ContainersHoldTexts) {
    const CString a(VRL_L("a"));
    std::unordered_set<CString> hashed{a, CString(VRL_L("b")), CString(VRL_L("a"))};
    EXPECT_EQ(hashed.size(), 2u);
    std::map<CString, int> sorted{{CString(VRL_L("b")), 2}, {a, 1}};
    EXPECT_EQ(sorted.begin()->second, 1);
    EXPECT_EQ(std::hash<CString>()(a), std::hash<CString>()(CString(VRL_L("a"))));
}

TEST(ComfortLines, ListsWithWholeSecondsAndPlainZerosCompile) {
    CEvent a;
    CEvent b;
    b.SetState(true);
    EXPECT_EQ(CEvent::WaitOne(1, 2, &a, &b), 1u);
    EXPECT_EQ(CEvent::WaitOne(1u, std::size_t{2}, &a, &b), 1u);
    EXPECT_EQ(CEvent::WaitOne(2, &a, &b), 1u);
    EXPECT_EQ(CEvent::WaitOne(0.5f, 2, &a, &b), 1u);
    EXPECT_EQ(CEvent::WaitOne(0.5, 2, &a, &b), 1u);
    EXPECT_THROW(CEvent::WaitOne(0, 1, &a), CTimeoutException);
    EXPECT_THROW(CEvent::WaitAll(0, 2, &a, &b), CTimeoutException);
    a.SetState(true);
    CEvent::WaitAll(1, 2, &a, &b);
    CEvent::WaitAll(2, &a, &b);
    // Nobody has that number.
    CEvent::StopAsync(0);
}

TEST(ComfortLines, WaitsTakeTypedListsAndTimesAndReturnWhatHappened) {
    CEvent a;
    CEvent b;
    EXPECT_FALSE(WaitFor(a, 1ms));
    b.SetState(true);
    EXPECT_TRUE(WaitFor(b, 1s));
    EXPECT_EQ(WaitAny({&a, &b}, 500ms), 1u);
    EXPECT_FALSE(WaitAll({&a, &b}, 0s));
    const std::vector<const CEvent*> list{&b};
    EXPECT_EQ(WaitAny(list), 0u);
}

/// What a program writes for a class of its own.
class CComfortNamed : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x6E2B7A10, 0x3F9C4D58, 0xA1D40B72, 0x95C8E36F};
    const std::string& GetName() const { return name_; }

protected:
    CComfortNamed(std::string name, int number) : name_(std::move(name) + std::to_string(number)) {}
    ~CComfortNamed() = default;

private:
    std::string name_;
};

template <class TName>
concept CCreatableByName = requires(const TName* name) {
    v.GetClassStore().CreateObject(name);
};

TEST(ComfortLines, NarrowNamesOfClassesAreRefusedByTheCompiler) {
    static_assert(!CCreatableByName<char>);
    static_assert(CCreatableByName<wchar>);
    const CSession session(false);
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("vorlund::CObject"))));
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(classid::CObject)));
}

TEST(ComfortLines, PointersGoUpCompareAndLieInContainers) {
    const CSession session(false);
    const CRefPtr<CComfortNamed> named = MakeObject<CComfortNamed>("n", 3);
    EXPECT_EQ(named->GetName(), "n3");
    const CRefPtr<IObject> object = named;
    EXPECT_TRUE(object == named);
    EXPECT_TRUE(object != nullptr);
    std::vector<CSafeRefPtr<IObject>> held{named, object, MakeObject<CComfortNamed>("m", 4)};
    std::erase_if(held, [&](const CSafeRefPtr<IObject>& one) { return one == held.front(); });
    EXPECT_LT(held.size(), 3u);
    std::map<std::string, CSafeRefPtr<CComfortNamed>> byName{{"n", named}};
    EXPECT_EQ(byName.at("n")->GetName(), "n3");
}

TEST(ComfortLines, ListsAndStoresAreRanges) {
    const CSession session(false);
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    const CRefPtr<IStringObject> text = CreateAs<IStringObject>(classid::CStringObject);
    text->SetString(VRL_L("one"));
    list->AddObject(text.Get());
    list->AddObject(MakeObject<CComfortNamed>("no text", 0).Get());
    std::vector<std::string> texts;
    for (const CRefPtr<IStringObject>& each : Each<IStringObject>(list))
        texts.push_back(ToUtf8(each->GetString()));
    EXPECT_EQ(texts, std::vector<std::string>{"one"});
    list->RemoveObject(0);
    EXPECT_EQ(list->GetObjectCount(), 1u);
    list->RemoveAllObjects();
    std::set<wstring> names;
    for (const TClassInfo& info : EachRecord<TClassInfo>(v.GetClassStore().EnumerateClasses()))
        names.insert(info.name);
    EXPECT_TRUE(names.contains(VRL_L("vorlund::CObjectList")));
}

TEST(ComfortLines, ASessionClosesWhateverHappens) {
    try {
        const CSession session(false);
        const auto kept = MakeObject<CComfortNamed>("kept", 1);
        throw std::runtime_error("stop");
    } catch (const std::runtime_error&) {
    }
    EXPECT_THROW(MakeObject<CComfortNamed>("after", 1), CBugException);
}

TEST(ComfortLines, SoundIsReadByFramesSecondsAndSpans) {
    const CSession session(false);
    const TBytes wav = PlainWav({.channels = 2, .samplesPerSec = 1000}, Ramp(4000));
    const auto file = CRefPtr<IInputStream>::Adopt(CreateMemoryInput(wav.data(), wav.size()));
    const CInputStreamSelector source(file.Get());
    const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    const auto* const format = FormatCast<TDataFormat_AudioPcm>(pcm->GetFormat());
    ASSERT_TRUE(format);
    EXPECT_EQ(format->channels, 2u);
    EXPECT_FALSE(FormatCast<TDataFormat_AudioPcm>(GetEmptyFormat()));
    const auto part = MakeObject<CSubStream>(pcm, 4, 8);
    EXPECT_EQ(ReadAll(*part).size(), 8u);
    std::int16_t samples[4];
    part->Seek(0);
    EXPECT_EQ(ReadValues(*part, samples), 4u);
    EXPECT_EQ(ReadValues(*part, std::span(samples)), 0u);
    pcm->Seek(0);
    CFrameReader sound(pcm);
    EXPECT_EQ(sound.GetFrameCount(), 1000u);
    EXPECT_DOUBLE_EQ(sound.GetSeconds(), 1.0);
    sound.SeekSeconds(0.5);
    EXPECT_EQ(sound.ReadRest().size(), 1000u);
    sound.SeekFrame(999);
    std::vector<float> frame(2);
    EXPECT_EQ(sound.Read(frame), 1u);
}

TEST(ComfortLines, OnlyTheAdapterThrowsStandardOnes) {
    const CSession session(false);
    EXPECT_THROW(v.GetClassStore().CreateObject(VRL_L("none")), CClassNotFoundException);
    try {
        AsStdExceptions([] { CInputStreamSelector(VRL_L("not-there.wav")); });
        FAIL();
    } catch (const std::exception& error) {
        EXPECT_NE(std::string(error.what()).find("Cannot open 'not-there.wav'"), std::string::npos);
    }
    EXPECT_EQ(AsStdExceptions([] { return 7; }), 7);
}

TEST(ComfortLines, ArgumentsAreUtf8) {
    const char* const words[] = {"program", "a", "b"};
    // On Windows they are those of this process.
    const std::vector<std::string> arguments = GetUtf8Arguments(3, words);
    if (sizeof(wchar_t) == 4) {
        EXPECT_EQ(arguments, (std::vector<std::string>{"a", "b"}));
    }
}

} // namespace
} // namespace vorlund::test
