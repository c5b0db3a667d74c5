// CString against std::u16string and memmem: search, comparison, replacement, concatenation. Each pair gets
// the same text; names are operation/case/who/units.
#include "BenchSupport.h"
#include "Limits.h"

#include <vorlund/Exception.h>
#include <vorlund/String.h>
#include <vorlund/StringBuilder.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kShort = 64;
constexpr std::size_t kLong = 32768;

/// Letters as frequent as in English prose, 'e' and the blank before all.
wstring Prose(std::size_t length) {
    static constexpr char kLetters[] = "        eeeeeettttaaaaooooiiinnnsssrrrhhhdddllluuccmmffyywwggppbbvk";
    std::mt19937 random(1);
    wstring text(length, 0);
    for (wchar& unit : text) unit = static_cast<wchar>(kLetters[random() % (sizeof(kLetters) - 1)]);
    return text;
}

struct TSearch {
    const char* name;
    wstring text;
    wstring needle;
};

/// Searches whose only occurrence is the last thing in the text.
TSearch MakeSearch(int kind, std::size_t length) {
    const auto with = [&](const char* name, wstring needle, wstring text) {
        text.replace(length - needle.size(), needle.size(), needle);
        return TSearch{name, text, needle};
    };
    switch (kind) {
    case 0:
        return with("common", VRL_L("ethereal"), Prose(length));
    case 1:
        return with("rare", VRL_L("Quantity"), Prose(length));
    case 2:
        // Almost every place begins and ends like the needle.
        return with("bad", wstring(15, 'a') + VRL_L("b") + wstring(8, 'a'), wstring(length, 'a'));
    default: {
        wstring text;
        while (text.size() < length) text += VRL_L("abababaabc");
        text.resize(length);
        return with("worse", VRL_L("abababaabcabababaabd"), text);
    }
    }
}
constexpr int kSearches = 4;

void FindVorlund(benchmark::State& state, const TSearch& search) {
    const CString text(search.text.c_str());
    for (auto _ : state) benchmark::DoNotOptimize(text.FindFirst(search.needle.c_str()));
}

void FindU16string(benchmark::State& state, const TSearch& search) {
    for (auto _ : state) benchmark::DoNotOptimize(search.text.find(search.needle));
}

#ifdef VORLUND_BENCH_MEMMEM
void FindMemmem(benchmark::State& state, const TSearch& search) {
    for (auto _ : state)
        benchmark::DoNotOptimize(memmem(search.text.data(), search.text.size() * sizeof(wchar),
                                        search.needle.data(), search.needle.size() * sizeof(wchar)));
}

#endif

/// The needle at the front, searched from the back.
void FindLastVorlund(benchmark::State& state, std::size_t length) {
    const CString text((VRL_L("ethereal") + Prose(length - 8)).c_str());
    const wstring needle = VRL_L("ethereal");
    for (auto _ : state) benchmark::DoNotOptimize(text.FindLast(needle.c_str()));
}

void FindLastU16string(benchmark::State& state, std::size_t length) {
    const wstring text = VRL_L("ethereal") + Prose(length - 8);
    const wstring needle = VRL_L("ethereal");
    for (auto _ : state) benchmark::DoNotOptimize(text.rfind(needle));
}

void FindUnitVorlund(benchmark::State& state, std::size_t length) {
    const CString text((Prose(length - 1) + VRL_L("Q")).c_str());
    for (auto _ : state) benchmark::DoNotOptimize(text.FindFirst(wchar{'Q'}));
}

void FindUnitU16string(benchmark::State& state, std::size_t length) {
    const wstring text = Prose(length - 1) + VRL_L("Q");
    for (auto _ : state) benchmark::DoNotOptimize(text.find(wchar{'Q'}));
}

#ifdef VORLUND_BENCH_MEMMEM
void FindUnitMemmem(benchmark::State& state, std::size_t length) {
    const wstring text = Prose(length - 1) + VRL_L("Q");
    const wchar unit = 'Q';
    for (auto _ : state)
        benchmark::DoNotOptimize(memmem(text.data(), text.size() * sizeof(wchar), &unit, sizeof(unit)));
}

#endif

/// Texts that differ at the end, or not at all.
void CompareVorlund(benchmark::State& state, std::size_t length, bool isEqual) {
    wstring other = Prose(length);
    const CString left(other.c_str());
    if (!isEqual) other.back() = 'Q';
    const CString right(other.c_str());
    for (auto _ : state) benchmark::DoNotOptimize(left.CompareTo(right.GetBuffer()));
}

void CompareU16string(benchmark::State& state, std::size_t length, bool isEqual) {
    const wstring left = Prose(length);
    wstring right = left;
    if (!isEqual) right.back() = 'Q';
    for (auto _ : state) benchmark::DoNotOptimize(left.compare(right));
}

/// Names as a list of them is sorted by: each is compared with the next, and most pairs differ early.
constexpr std::size_t kNames = 4096;

std::vector<wstring> MakeNames() {
    std::mt19937 random(2);
    const wstring prose = Prose(kLong);
    std::vector<wstring> names;
    for (std::size_t i = 0; i < kNames; ++i) {
        const wstring name = prose.substr(random() % (kLong - 20), 6 + random() % 10);
        names.push_back(random() % 2 ? VRL_L("vorlund::C") + name : name);
    }
    return names;
}

void CompareNamesVorlund(benchmark::State& state) {
    std::vector<CString> names;
    for (const wstring& name : MakeNames()) names.emplace_back(name.c_str());
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t next = (i + 1) % kNames;
        benchmark::DoNotOptimize(names[i].CompareTo(names[next].GetBuffer()));
        i = next;
    }
}

void CompareNamesU16string(benchmark::State& state) {
    const std::vector<wstring> names = MakeNames();
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t next = (i + 1) % kNames;
        benchmark::DoNotOptimize(names[i].compare(names[next]));
        i = next;
    }
}

struct TReplacement {
    const char* name;
    const wchar* from;
    const wchar* to;
};

// "the" occurs once in 32 units. In the first three cases no replacement can make a new match, in the others
// it could.
constexpr TReplacement kReplacements[] = {
    {"same", VRL_L("the"), VRL_L("XYZ")},  {"longer", VRL_L("the"), VRL_L("VWXYZ")},
    {"shorter", VRL_L("the"), VRL_L("Z")}, {"touching", VRL_L("the"), VRL_L("hitch")},
    {"removed", VRL_L("the"), VRL_L("")},  {"blanks", VRL_L("  "), VRL_L(" ")},
};

wstring ReplaceText(std::size_t length) {
    wstring text = Prose(length);
    for (std::size_t i = 0; i + 32 <= length; i += 32) text.replace(i + 7, 3, VRL_L("the"));
    return text;
}

void ReplaceVorlund(benchmark::State& state, const TReplacement& replacement) {
    const bench::CLibrary library;
    const CString source(ReplaceText(kLong).c_str());
    for (auto _ : state) {
        CString text(source);
        // It ends by raising, and that is part of its time.
        try {
            text.Replace(replacement.from, replacement.to);
        } catch (const CObjectNotFoundException&) {
        }
        benchmark::DoNotOptimize(text.GetBuffer());
    }
}

/// Replacements whose number grows with the text.
void ReplaceGrowing(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    const CString source(ReplaceText(length).c_str());
    for (auto _ : state) {
        CString text(source);
        try {
            text.Replace(VRL_L("the"), VRL_L("XYZ"));
        } catch (const CObjectNotFoundException&) {
        }
        benchmark::DoNotOptimize(text.GetBuffer());
    }
}

/// Every "b" travels to the front, one place at a time.
void ReplaceSquare(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    const CString source((wstring(length / 2, 'a') + wstring(length / 2, 'b')).c_str());
    for (auto _ : state) {
        CString text(source);
        try {
            text.Replace(VRL_L("ab"), VRL_L("ba"));
        } catch (const CObjectNotFoundException&) {
        }
        benchmark::DoNotOptimize(text.GetBuffer());
    }
}

/// A copy, and a new text put together from its parts, which is the fastest way with the standard library.
void ReplaceU16string(benchmark::State& state, const TReplacement& replacement) {
    const wstring source = ReplaceText(kLong);
    const wstring from = replacement.from;
    const wstring to = replacement.to;
    for (auto _ : state) {
        wstring text = source;
        wstring result;
        result.reserve(text.size());
        std::size_t read = 0;
        for (std::size_t place; (place = text.find(from, read)) != wstring::npos;
             read = place + from.size()) {
            result.append(text, read, place - read);
            result += to;
        }
        result.append(text, read);
        text = std::move(result);
        benchmark::DoNotOptimize(text.data());
    }
}

#ifdef VORLUND_BENCH_MEMMEM
/// The same, the search by memmem.
void ReplaceMemmem(benchmark::State& state, const TReplacement& replacement) {
    const wstring source = ReplaceText(kLong);
    const wstring from = replacement.from;
    const wstring to = replacement.to;
    for (auto _ : state) {
        wstring text = source;
        wstring result;
        result.reserve(text.size());
        const wchar* read = text.data();
        const wchar* const end = read + text.size();
        while (const void* place = memmem(read, static_cast<std::size_t>(end - read) * sizeof(wchar),
                                          from.data(), from.size() * sizeof(wchar))) {
            const auto* at = static_cast<const wchar*>(place);
            result.append(read, at);
            result += to;
            read = at + from.size();
        }
        result.append(read, end);
        text = std::move(result);
        benchmark::DoNotOptimize(text.data());
    }
}

#endif

void ConcatenateVorlund(benchmark::State& state, std::size_t length) {
    const CString left(Prose(length).c_str());
    const CString right(Prose(length).c_str());
    for (auto _ : state) {
        CString sum = left + right.GetBuffer();
        benchmark::DoNotOptimize(sum.GetBuffer());
    }
}

void ConcatenateU16string(benchmark::State& state, std::size_t length) {
    const wstring left = Prose(length);
    const wstring right = Prose(length);
    for (auto _ : state) {
        wstring sum = left + right;
        benchmark::DoNotOptimize(sum.data());
    }
}

/// A text of `length` units, put together from pieces of ten, and what is counted when it is read by `s[i]`.
void BuildBuilder(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    for (auto _ : state) {
        CStringBuilder text;
        while (text.Length() < length) text += VRL_L("ten units.");
        const CString done = text.ToString();
        benchmark::DoNotOptimize(done.GetBuffer());
    }
}

void BuildCString(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    for (auto _ : state) {
        CString text;
        for (std::size_t i = 0; i < length; i += 10) text += VRL_L("ten units.");
        benchmark::DoNotOptimize(text.GetBuffer());
    }
}

void BuildU16string(benchmark::State& state, std::size_t length) {
    for (auto _ : state) {
        wstring text;
        while (text.size() < length) text += VRL_L("ten units.");
        const wstring done = text;
        benchmark::DoNotOptimize(done.data());
    }
}

/// The same unit by unit, without a copy at the end.
template <class TText> void BuildUnits(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    for (auto _ : state) {
        TText text;
        for (std::size_t i = 0; i < length; ++i) text += wchar{'x'};
        benchmark::DoNotOptimize(&text);
    }
}

/// Each unit of a text by its index.
template <class TText> void ReadUnits(benchmark::State& state, std::size_t length) {
    const bench::CLibrary library;
    const TText text(wstring(length, 'x').c_str());
    for (auto _ : state) {
        unsigned int sum = 0;
        for (std::size_t i = 0; i < length; ++i) sum += text[static_cast<unsigned int>(i)];
        benchmark::DoNotOptimize(sum);
    }
}

/// Two equal texts, byte by byte as the machine likes it.
void CompareBytes(benchmark::State& state, std::size_t size) {
    const std::vector<char> left(size, 'x'), right(size, 'x');
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::memcmp(left.data(), right.data(), size));
        benchmark::ClobberMemory();
    }
}

void RegisterAll() {
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(),
                                     [=](benchmark::State& state) { function(state, arguments...); });
    };
    // What the bytes of so many units cost at least.
    const auto limit = [&](const std::string& what, auto function, std::size_t units) {
        add(what, function, units * sizeof(wchar));
    };
    const auto grow = [&](const std::string& what, const std::string& who, auto function, std::size_t most) {
        for (std::size_t length = 600;
             length <= (bench::IsShort() ? std::min<std::size_t>(most, 6000) : most); length *= 10)
            add(what + '/' + who + '/' + std::to_string(length), function, length);
    };
    constexpr std::size_t kMostUnits = 60000;
    // As far as it can be awaited.
    constexpr std::size_t kMostSquare = 6000;
    grow("growth/build by pieces of ten", "vorlund", BuildBuilder, kMostUnits);
    grow("growth/build by pieces of ten", "std::u16string", BuildU16string, kMostUnits);
    grow("growth/build by units", "vorlund", BuildUnits<CStringBuilder>, kMostUnits);
    grow("growth/build by units", "std::u16string", BuildUnits<wstring>, kMostUnits);
    grow("growth/each unit by s[i]", "vorlund", ReadUnits<CStringBuilder>, kMostUnits);
    grow("growth/each unit by s[i]", "std::u16string", ReadUnits<wstring>, kMostUnits);
    grow("growth by a square rule/build a CString by +=", "vorlund", BuildCString, kMostUnits);
    grow("growth by a square rule/each unit of a CString by s[i]", "vorlund", ReadUnits<CString>, kMostUnits);
    grow("growth/replace the by XYZ", "vorlund", ReplaceGrowing, kMostUnits);
    grow("growth by a square rule/replace ab by ba", "vorlund", ReplaceSquare, kMostSquare);
    for (const std::size_t length : {kShort, kLong}) {
        const std::string units = '/' + std::to_string(length);
        for (const char* const name : {"common", "rare", "bad", "worse", "from the back", "unit"})
            limit(std::string("find/") + name + "/limit memchr" + units, bench::ScanBytes, length);
        for (const char* const name : {"equal", "last"})
            limit(std::string("compare/") + name + "/limit memcmp" + units, CompareBytes, length);
        for (int kind = 0; kind < kSearches; ++kind) {
            const TSearch search = MakeSearch(kind, length);
            const std::string name = std::string("find/") + search.name;
            add(name + "/vorlund" + units, FindVorlund, search);
            add(name + "/std::u16string" + units, FindU16string, search);
#ifdef VORLUND_BENCH_MEMMEM
            add(name + "/memmem" + units, FindMemmem, search);
#endif
        }
        add("find/from the back/vorlund" + units, FindLastVorlund, length);
        add("find/from the back/std::u16string" + units, FindLastU16string, length);
        add("find/unit/vorlund" + units, FindUnitVorlund, length);
        add("find/unit/std::u16string" + units, FindUnitU16string, length);
#ifdef VORLUND_BENCH_MEMMEM
        add("find/unit/memmem" + units, FindUnitMemmem, length);
#endif
        for (const bool isEqual : {true, false}) {
            const std::string name = isEqual ? "compare/equal" : "compare/last";
            add(name + "/vorlund" + units, CompareVorlund, length, isEqual);
            add(name + "/std::u16string" + units, CompareU16string, length, isEqual);
        }
    }
    add("compare/names/vorlund", CompareNamesVorlund);
    add("compare/names/std::u16string", CompareNamesU16string);
    for (const TReplacement& replacement : kReplacements) {
        const std::string name = std::string("replace/") + replacement.name;
        add(name + "/vorlund", ReplaceVorlund, replacement);
        limit(name + "/limit copy into a new block", bench::CopyIntoNew, kLong);
        add(name + "/std::u16string", ReplaceU16string, replacement);
#ifdef VORLUND_BENCH_MEMMEM
        add(name + "/memmem", ReplaceMemmem, replacement);
#endif
    }
    for (const std::size_t length : {std::size_t{8}, std::size_t{24}, kLong}) {
        const std::string units = '/' + std::to_string(length);
        add("concatenate two/vorlund" + units, ConcatenateVorlund, length);
        limit("concatenate two/limit copy into a new block" + units, bench::CopyIntoNew, 2 * length);
        add("concatenate two/std::u16string" + units, ConcatenateU16string, length);
    }
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    return vorlund::bench::RunRows(argc, argv);
}
