// Feeds one parser the worst megabyte that we know for it, and tells what the process has used at its end. An
// exception is an answer like any other.
#include "bounds/ProcessUse.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"
#include "support/TestDecoders.h"
#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/LineReader.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/TextReader.h>
#include <vorlund/TextWriter.h>
#include <vorlund/VarReader.h>
#include <vorlund/WavDecoder.h>
#include <vorlund/WavMetadata.h>
#include <vorlund/WavRepair.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>

namespace vorlund::test {
namespace {

constexpr std::size_t kInputSize = 1 << 20;

CRefPtr<CMemoryInputStream> StreamOf(TBytes bytes) {
    auto stream = Make<CMemoryInputStream>();
    stream->bytes = std::move(bytes);
    return stream;
}

// RIFF and WAV.

/// Chunks without data, all alike or all different.
TBytes Chunks(bool isEqual) {
    TBytes bytes = CWavBuilder().Build();
    for (std::uint32_t i = 0; bytes.size() + 8 <= kInputSize; ++i) {
        Append32(bytes, isEqual ? 0 : 0x61000000 + i);
        Append32(bytes, 0);
    }
    return bytes;
}

void Select(const TBytes& bytes) {
    const auto stream = StreamOf(bytes);
    const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    decoder->Connect(stream.Get());
    decoder->SelectChunk(VRL_L("none"));
}

void Enumerate(const TBytes& bytes) {
    const auto stream = StreamOf(bytes);
    const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    decoder->Connect(stream.Get());
    const auto list = CRefPtr<IObjectList>::Adopt(decoder->EnumerateChunks());
    const auto all = CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects());
    while (all->HasNext()) all->GetNext()->Release();
}

void Decode(const CCodecClassStore& store, const TBytes& bytes, const CId& wanted) {
    const auto stream = StreamOf(bytes);
    CRefPtr<IInputStream>::Adopt(store.DecodeStream(stream.Get(), wanted));
}

/// As many texts as an INFO list has room for.
TBytes Texts() {
    TBytes list;
    AppendText(list, "INFO");
    while (list.size() + 80 <= kInputSize) {
        AppendText(list, "INAM");
        Append32(list, 2);
        AppendText(list, "ab");
    }
    return CWavBuilder().Chunk("LIST", list).Build();
}

/// As many points, each with a label.
TBytes Cues() {
    constexpr std::uint32_t kCount = kInputSize / 50;
    TBytes points;
    TBytes labels;
    Append32(points, kCount);
    AppendText(labels, "adtl");
    for (std::uint32_t i = 0; i < kCount; ++i) {
        for (const std::uint32_t word : {i, i, 0x61746164u, 0u, 0u, i}) Append32(points, word);
        AppendText(labels, "labl");
        Append32(labels, 6);
        Append32(labels, i);
        AppendText(labels, "a");
        labels.push_back(0);
    }
    return CWavBuilder().Chunk("cue ", points).Chunk("LIST", labels).Build();
}

void ReadMetadata(const TBytes& bytes) {
    const auto stream = StreamOf(bytes);
    ReadWavMetadata(stream.Get());
}

void Repair(const TBytes& bytes) {
    const auto path = std::filesystem::temp_directory_path() / "vorlund-bounds.wav";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    RepairWav(PathFromUtf8(path.string().c_str()).c_str());
}

void Convert(TSampleFormat from, TSampleFormat to, std::size_t atOnce) {
    const auto stream = StreamOf(TBytes(kInputSize));
    stream->format.Set(TDataFormat_AudioPcm(from, 2, 44100));
    const auto converter = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    converter->SetSampleFormat(to);
    converter->Connect(stream.Get());
    TBytes buffer(atOnce);
    while (converter->Read(buffer.data(), buffer.size()) > 0) {
    }
}

/// As many decoders as there are plans; each takes everything, and the last ones lead nowhere.
void Search(const TBytes& bytes, const CId& wanted) {
    CTestDecoders decoders;
    CCodecClassStore store;
    store.Init();
    for (std::size_t i = 0; i < CTestDecoders::kCount; ++i) {
        decoders.Register(store, i,
                          {.accepts = CId::Null(), .produces = TestFormat(1), .hidesStream = i % 2 == 0});
    }
    try {
        Decode(store, bytes, wanted);
    } catch (const CDataFormatException&) {
    }
    store.Close();
}

/// Several records of the WAV decoder: each candidate reads the whole table.
void SearchWav(const TBytes& bytes, const CId& wanted) {
    CCodecClassStore store;
    store.Init();
    for (int i = 0; i < 8; ++i) {
        store.RegisterDecoder({classid::CWavDecoder, CId::Null(), TDataFormat_AudioPcm::FormatId});
    }
    try {
        Decode(store, bytes, wanted);
    } catch (const CDataFormatException&) {
    }
    store.Close();
}

// Text and values.

void ReadText(TBytes bytes, TCharFormat format) {
    const auto stream = StreamOf(std::move(bytes));
    CTextReader reader(stream.Get(), format);
    while (!reader.Eof()) {
        try {
            reader.ReadLine();
        } catch (const CObjectNotFoundException&) {
            // Its only answer, once a line.
        }
    }
}

template <class TLine> void ReadLines(TBytes bytes, TCharFormat format) {
    const auto stream = StreamOf(std::move(bytes));
    CLineReader reader(stream.Get(), format);
    TLine line;
    while (reader.ReadLine(line)) {
    }
}

template <class T> void ReadValues(TBytes bytes) {
    const auto stream = StreamOf(std::move(bytes));
    CVarReader reader(stream.Get());
    T value{};
    while (!reader.Eof()) reader >> value;
}

/// Texts with this count of units declared and none or few behind it.
TBytes Counts(std::uint32_t count) {
    TBytes bytes;
    while (bytes.size() + 4 <= kInputSize) Append32(bytes, count);
    return bytes;
}

void LoadResource(TBytes bytes, bool isDecoded) {
    const auto stream = StreamOf(std::move(bytes));
    const auto resource = CreateAs<IResource>(classid::CSwBufferMediaSample);
    if (!resource) return;
    if (isDecoded) {
        resource->LoadDecoded(CInputStreamSelector(stream.Get()));
    } else {
        resource->Load(CInputStreamSelector(stream.Get()));
    }
}

/// A format of `repetitions` times the same directive.
void Format(const wchar* directive, std::size_t repetitions) {
    wstring format;
    for (std::size_t i = 0; i < repetitions; ++i) format += directive;
    const auto target = Make<CMemoryOutputStream>();
    CTextWriter writer(target.Get(), CHAR_FORMAT_UTF16, LINE_BREAK_CRLF);
    // Every directive has its argument: the format has at most one.
    writer.Write(format.c_str(), 1);
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, format.c_str(), 1);
}

void ParseId(char unit) {
    const std::string text(kInputSize, unit);
    const CId narrow(text.c_str());
    const CId wide(wstring(text.begin(), text.end()).c_str());
    if (narrow != wide) std::puts("identifiers differ");
}

void ConvertText() {
    const std::string text(kInputSize, static_cast<char>(0xE9));
    const CString wide(text.c_str());
    std::string back(kInputSize + 1, '\0');
    wide.ToChar(back.data(), static_cast<int>(back.size()));
    if (wide.CompareToIgnoreCase(text.c_str()) != 0) std::puts("texts differ");
}

const TBytes kZeros(kInputSize);
const TBytes kFeeds(kInputSize, 10);
const TBytes kLetters(kInputSize, 'a');

struct TCase {
    const char* name;
    void (*run)();
};

constexpr TCase kCases[] = {
    {"none", [] {}},
    {"riff-equal-select", [] { Select(Chunks(true)); }},
    {"riff-unequal-select", [] { Select(Chunks(false)); }},
    {"riff-equal-enumerate", [] { Enumerate(Chunks(true)); }},
    {"riff-unequal-enumerate", [] { Enumerate(Chunks(false)); }},
    {"wav-equal", [] { Decode(v.GetCodecClassStore(), Chunks(true), TDataFormat_AudioPcm::FormatId); }},
    {"wav-unequal", [] { Decode(v.GetCodecClassStore(), Chunks(false), TDataFormat_AudioPcm::FormatId); }},
    {"wav-metadata-equal", [] { ReadMetadata(Chunks(true)); }},
    {"wav-metadata-unequal", [] { ReadMetadata(Chunks(false)); }},
    {"wav-metadata-texts", [] { ReadMetadata(Texts()); }},
    {"wav-metadata-cues", [] { ReadMetadata(Cues()); }},
    {"wav-repair-equal", [] { Repair(Chunks(true)); }},
    {"wav-repair-unequal", [] { Repair(Chunks(false)); }},
    {"pcm-narrow", [] { Convert(SAMPLE_FORMAT_FLOAT, SAMPLE_FORMAT_8BIT, 2); }},
    {"pcm-wide", [] { Convert(SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_FLOAT, 8); }},
    {"search-wanted", [] { Search(Chunks(false), TestFormat(2)); }},
    {"search-longest", [] { Search(Chunks(false), CId::Null()); }},
    {"search-wav-wanted", [] { SearchWav(Chunks(false), TDataFormat_AudioPcm::FormatId); }},
    {"search-wav-longest", [] { SearchWav(Chunks(false), CId::Null()); }},
    {"text-feeds", [] { ReadText(kFeeds, CHAR_FORMAT_8BIT); }},
    {"text-letters", [] { ReadText(kLetters, CHAR_FORMAT_UTF16); }},
    {"lines-feeds", [] { ReadLines<wstring>(kFeeds, CHAR_FORMAT_8BIT); }},
    {"lines-feeds-string", [] { ReadLines<CString>(kFeeds, CHAR_FORMAT_8BIT); }},
    {"lines-letters", [] { ReadLines<wstring>(kLetters, CHAR_FORMAT_8BIT); }},
    {"lines-letters-string", [] { ReadLines<CString>(kLetters, CHAR_FORMAT_8BIT); }},
    {"lines-wide", [] { ReadLines<CString>(kZeros, CHAR_FORMAT_UTF16); }},
    {"values-bytes", [] { ReadValues<bool>(kLetters); }},
    {"values-empty-texts", [] { ReadValues<CString>(kZeros); }},
    {"values-short-texts", [] { ReadValues<CString>(Counts(1)); }},
    {"values-wrong-texts", [] { ReadValues<CString>(Counts(65536)); }},
    {"resource", [] { LoadResource(kLetters, false); }},
    {"resource-decoded", [] { LoadResource(Chunks(false), true); }},
    {"format-percents", [] { Format(VRL_L("%%"), kInputSize / 2); }},
    {"format-width", [] { Format(VRL_L("%99999999d"), 1); }},
    {"format-letters", [] { Format(VRL_L("a"), kInputSize); }},
    {"id-digits", [] { ParseId('7'); }},
    {"id-blanks", [] { ParseId(' '); }},
    {"string", &ConvertText},
};

} // namespace

int RunCase(const char* name) {
    for (const TCase& row : kCases) {
        if (std::strcmp(row.name, name) != 0) continue;
        SilenceDebugMessages();
        const CLibraryScope library;
        try {
            row.run();
        } catch (const CException&) {
        } catch (const std::bad_alloc&) {
        }
        const TProcessUse use = GetProcessUse();
        std::printf("%llu ms %llu bytes\n", static_cast<unsigned long long>(use.milliseconds),
                    static_cast<unsigned long long>(use.peakBytes));
        return 0;
    }
    return 1;
}

void ListCases() {
    for (const TCase& row : kCases) std::puts(row.name);
}

} // namespace vorlund::test

int main(int argc, char** argv) {
    if (argc == 2) return vorlund::test::RunCase(argv[1]);
    vorlund::test::ListCases();
    return 0;
}
