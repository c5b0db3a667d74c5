// Typed values and lines of text. A record is an int, a 64-bit integer, a double, a bool and a text of 20
// units; a million of them go through a stream in memory and through a file, against cereal's binary archive,
// protobuf's coded streams, and plain stdio with the same calls (one a scalar, two a text). Lines go against
// std::getline. Names are operation/stream/who. Figures are those of one record or line.
#include "BenchSupport.h"
#include "Limits.h"

#include <vorlund/BufferedStream.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/LineReader.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/TextReader.h>
#include <vorlund/TextWriter.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_CEREAL
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#endif
#ifdef VORLUND_BENCH_PROTOBUF
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

const int kRecords = bench::IsShort() ? 8000 : 1000000;
/// In memory, so many at a time: they fit into the processor's caches, whose speed is the same for all peers.
constexpr int kRun = 4000;
const int kRuns = kRecords / kRun;
const wstring kText = VRL_L("twenty units of text");
constexpr std::size_t kRecordSize = 4 + 8 + 8 + 1 + 4 + 40;

struct TFolder {
    TFolder() : path(fs::temp_directory_path() / ("vorlund-bench-" + std::to_string(getpid()))) {
        fs::create_directory(path);
    }
    TFolder(const TFolder&) = delete;
    TFolder& operator=(const TFolder&) = delete;
    ~TFolder() { fs::remove_all(path); }
    std::string At(const char* name) const { return (path / name).string(); }
    fs::path path;
};

const TFolder& Folder() {
    static const TFolder folder;
    return folder;
}

/// For the peers that use the standard streams: the same memory, without growth.
template <class TUnit> class CMemoryBuffer : public std::basic_streambuf<TUnit> {
public:
    CMemoryBuffer(TUnit* data, std::size_t size) {
        this->setp(data, data + size);
        this->setg(data, data, data + size);
    }
};

void Finish(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * kRecords);
    state.SetBytesProcessed(state.iterations() * kRecords * static_cast<std::int64_t>(kRecordSize));
}

/// Records in our format, for all readers but those of the peers' own formats.
std::string RecordBytes(int count) {
    std::string all;
    const auto put = [&](const auto& value) {
        all.append(reinterpret_cast<const char*>(&value), sizeof(value));
    };
    for (int i = 0; i < count; ++i) {
        put(i);
        put(std::int64_t{i} << 20);
        put(i * 0.5);
        put(i % 2 == 0);
        put(static_cast<int>(kText.size()));
        all.append(reinterpret_cast<const char*>(kText.data()), 2 * kText.size());
    }
    return all;
}

std::string RecordFile() {
    const std::string path = Folder().At("records");
    if (!fs::exists(path)) {
        const std::string bytes = RecordBytes(kRecords);
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    return path;
}

// Writing.

void WriteRecords(CVarWriter& writer, const CString& text, int count) {
    for (int i = 0; i < count; ++i) writer << i << (std::int64_t{i} << 20) << i * 0.5 << (i % 2 == 0) << text;
}

void WriteMemoryVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const auto stream = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
    const CString text(kText.c_str());
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            stream->SetSize(0);
            CVarWriter writer(stream.Get());
            WriteRecords(writer, text, kRun);
        }
    }
    Finish(state);
}

/// A filter that collects what is written to `stream`, or the stream itself.
CRefPtr<IOutputStream> Buffered(IOutputStream& stream, bool isBuffered) {
    if (!isBuffered) return CRefPtr<IOutputStream>::Share(&stream);
    IOutputStreamFilter* const filter = CreateBufferedOutput();
    filter->Connect(&stream);
    return CRefPtr<IOutputStream>::Adopt(filter);
}

CRefPtr<IInputStream> Buffered(IInputStream& stream, bool isBuffered) {
    if (!isBuffered) return CRefPtr<IInputStream>::Share(&stream);
    IInputStreamFilter* const filter = CreateBufferedInput();
    filter->Connect(&stream);
    return CRefPtr<IInputStream>::Adopt(filter);
}

void WriteResourceVorlund(benchmark::State& state, bool isBuffered) {
    const bench::CLibrary library;
    const auto resource = CreateAs<IResource>(classid::CResource);
    const auto stream = CreateAs<IResourceOs>(classid::CResourceOs);
    stream->SetResource(resource.Get());
    const auto out = Buffered(*stream, isBuffered);
    const CString text(kText.c_str());
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            out->Seek(0);
            CVarWriter writer(out.Get());
            WriteRecords(writer, text, kRun);
        }
        FlushOutput(*out);
    }
    Finish(state);
}

void WriteFileVorlund(benchmark::State& state, bool isBuffered) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(Folder().At("ours").c_str());
    const CString text(kText.c_str());
    for (auto _ : state) {
        const auto stream = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        stream->Open(path.c_str(), false);
        const auto out = Buffered(*stream, isBuffered);
        CVarWriter writer(out.Get());
        WriteRecords(writer, text, kRecords);
        CloseOutput(*out);
    }
    Finish(state);
}

void WriteFileStdio(benchmark::State& state) {
    const std::string path = Folder().At("stdio");
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        const auto put = [&](const auto& value) { std::fwrite(&value, 1, sizeof(value), file); };
        for (int i = 0; i < kRecords; ++i) {
            put(i);
            put(std::int64_t{i} << 20);
            put(i * 0.5);
            put(i % 2 == 0);
            const int length = static_cast<int>(std::char_traits<wchar>::length(kText.c_str()));
            put(length);
            std::fwrite(kText.data(), 1, 2 * kText.size(), file);
        }
        std::fclose(file);
    }
    Finish(state);
}

#ifdef VORLUND_BENCH_CEREAL
void WriteCereal(std::ostream& out, int count) {
    cereal::BinaryOutputArchive archive(out);
    for (int i = 0; i < count; ++i) archive(i, std::int64_t{i} << 20, i * 0.5, i % 2 == 0, kText);
}

void WriteMemoryCereal(benchmark::State& state) {
    std::vector<char> bytes(kRun * (kRecordSize + 4));
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            CMemoryBuffer<char> buffer(bytes.data(), bytes.size());
            std::ostream out(&buffer);
            WriteCereal(out, kRun);
        }
    }
    Finish(state);
}

void WriteFileCereal(benchmark::State& state) {
    for (auto _ : state) {
        std::ofstream out(Folder().At("cereal"), std::ios::binary);
        WriteCereal(out, kRecords);
    }
    Finish(state);
}

void ReadCereal(benchmark::State& state, std::istream& in, int count) {
    cereal::BinaryInputArchive archive(in);
    int number = 0;
    std::int64_t big = 0;
    double fraction = 0;
    bool flag = false;
    wstring text;
    for (int i = 0; i < count; ++i) archive(number, big, fraction, flag, text);
    if (static_cast<int>(number) != count - 1 || text != kText) state.SkipWithError("wrong record");
}

void ReadMemoryCereal(benchmark::State& state) {
    std::ostringstream all;
    WriteCereal(all, kRun);
    std::string bytes = all.str();
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            CMemoryBuffer<char> buffer(bytes.data(), bytes.size());
            std::istream in(&buffer);
            ReadCereal(state, in, kRun);
        }
    }
    Finish(state);
}

void ReadFileCereal(benchmark::State& state) {
    std::ofstream out(Folder().At("cereal"), std::ios::binary);
    WriteCereal(out, kRecords);
    out.close();
    for (auto _ : state) {
        std::ifstream in(Folder().At("cereal"), std::ios::binary);
        ReadCereal(state, in, kRecords);
    }
    Finish(state);
}
#endif

#ifdef VORLUND_BENCH_PROTOBUF
namespace pb = google::protobuf::io;

/// Fixed-size integers, as in our format.
void WriteProtobuf(pb::ZeroCopyOutputStream& out, int count) {
    pb::CodedOutputStream coded(&out);
    for (int i = 0; i < count; ++i) {
        coded.WriteLittleEndian32(static_cast<std::uint32_t>(i));
        coded.WriteLittleEndian64(static_cast<std::uint64_t>(i) << 20);
        const double fraction = i * 0.5;
        coded.WriteRaw(&fraction, sizeof(fraction));
        const bool flag = i % 2 == 0;
        coded.WriteRaw(&flag, 1);
        coded.WriteLittleEndian32(static_cast<std::uint32_t>(kText.size()));
        coded.WriteRaw(kText.data(), static_cast<int>(2 * kText.size()));
    }
}

void WriteMemoryProtobuf(benchmark::State& state) {
    std::vector<char> bytes(kRun * kRecordSize + 64);
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            pb::ArrayOutputStream out(bytes.data(), static_cast<int>(bytes.size()));
            WriteProtobuf(out, kRun);
        }
    }
    Finish(state);
}

void WriteFileProtobuf(benchmark::State& state) {
    for (auto _ : state) {
        const int descriptor = open(Folder().At("protobuf").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pb::FileOutputStream out(descriptor);
        out.SetCloseOnDelete(true);
        WriteProtobuf(out, kRecords);
    }
    Finish(state);
}

void ReadProtobuf(benchmark::State& state, pb::ZeroCopyInputStream& in, int count) {
    pb::CodedInputStream coded(&in);
    std::uint32_t number = 0;
    std::uint64_t big;
    double fraction;
    bool flag;
    wstring text;
    for (int i = 0; i < count; ++i) {
        coded.ReadLittleEndian32(&number);
        coded.ReadLittleEndian64(&big);
        coded.ReadRaw(&fraction, sizeof(fraction));
        coded.ReadRaw(&flag, 1);
        std::uint32_t length = 0;
        coded.ReadLittleEndian32(&length);
        text.resize(length);
        coded.ReadRaw(text.data(), static_cast<int>(2 * length));
    }
    if (static_cast<int>(number) != count - 1 || text != kText) state.SkipWithError("wrong record");
}

void ReadMemoryProtobuf(benchmark::State& state) {
    const std::string bytes = RecordBytes(kRun);
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            pb::ArrayInputStream in(bytes.data(), static_cast<int>(bytes.size()));
            ReadProtobuf(state, in, kRun);
        }
    }
    Finish(state);
}

void ReadFileProtobuf(benchmark::State& state) {
    const std::string path = RecordFile();
    for (auto _ : state) {
        pb::FileInputStream in(open(path.c_str(), O_RDONLY));
        in.SetCloseOnDelete(true);
        ReadProtobuf(state, in, kRecords);
    }
    Finish(state);
}
#endif

// Reading.

void ReadRecords(benchmark::State& state, CVarReader& reader, int count) {
    int number = 0;
    std::int64_t big = 0;
    double fraction = 0;
    bool flag = false;
    CString text;
    for (int i = 0; i < count; ++i) reader >> number >> big >> fraction >> flag >> text;
    if (static_cast<int>(number) != count - 1 || text != kText.c_str()) state.SkipWithError("wrong record");
}

void ReadMemoryVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const std::string bytes = RecordBytes(kRun);
    const auto stream = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            stream->Seek(0);
            CVarReader reader(stream.Get());
            ReadRecords(state, reader, kRun);
        }
    }
    Finish(state);
}

void ReadResourceVorlund(benchmark::State& state, bool isBuffered) {
    const bench::CLibrary library;
    const std::string bytes = RecordBytes(kRun);
    const auto resource = CreateAs<IResource>(classid::CResource);
    resource->SetSize(bytes.size());
    std::memcpy(resource->Lock(LOCK_MODE_WRITE), bytes.data(), bytes.size());
    resource->Unlock();
    const auto stream = CreateAs<IResourceIs>(classid::CResourceIs);
    stream->SetResource(resource.Get());
    const auto in = Buffered(*stream, isBuffered);
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            in->Seek(0);
            CVarReader reader(in.Get());
            ReadRecords(state, reader, kRun);
        }
    }
    Finish(state);
}

void ReadFileVorlund(benchmark::State& state, bool isBuffered) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(RecordFile().c_str());
    for (auto _ : state) {
        const auto stream = CreateAs<IFileInputStream>(classid::CFileInputStream);
        stream->Open(path.c_str());
        const auto in = Buffered(*stream, isBuffered);
        CVarReader reader(in.Get());
        ReadRecords(state, reader, kRecords);
    }
    Finish(state);
}

void ReadFileStdio(benchmark::State& state) {
    const std::string path = RecordFile();
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        const auto get = [&](auto& value) {
            benchmark::DoNotOptimize(std::fread(&value, 1, sizeof(value), file));
        };
        int number = 0;
        std::int64_t big = 0;
        double fraction = 0;
        bool flag = false;
        wstring text;
        for (int i = 0; i < kRecords; ++i) {
            get(number);
            get(big);
            get(fraction);
            get(flag);
            unsigned int length = 0;
            get(length);
            text.resize(length);
            benchmark::DoNotOptimize(std::fread(text.data(), 1, 2 * length, file));
        }
        if (number != kRecords - 1 || text != kText) state.SkipWithError("wrong record");
        std::fclose(file);
    }
    Finish(state);
}

/// The bytes of the records as one block: what memory gives, and the system.
void CopyRecords(benchmark::State& state) {
    const std::string from = RecordBytes(kRun);
    std::vector<char> to(from.size());
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            std::memcpy(to.data(), from.data(), from.size());
            benchmark::ClobberMemory();
        }
    }
    Finish(state);
}

void WriteFileSystem(benchmark::State& state) {
    bench::WriteFileBySystem(state, Folder().At("system"), kRecords * kRecordSize);
    Finish(state);
}

void ReadFileSystem(benchmark::State& state) {
    bench::ReadFileBySystem(state, RecordFile(), true);
    Finish(state);
}

// Lines.

/// In memory, or so few that the processor's caches hold them.
const std::size_t kManyUnits = bench::IsShort() ? 1u << 20 : 50u << 20;
constexpr std::size_t kFewUnits = 128u << 10;

struct TText {
    std::size_t length;
    std::size_t units;
};

/// Lines of `length` units each, the line feed included.
template <class TUnit> std::basic_string<TUnit> MakeLines(const TText& text) {
    std::basic_string<TUnit> units(text.units, TUnit{});
    std::size_t unit = 0;
    for (TUnit& one : units) one = static_cast<TUnit>(++unit % text.length == 0 ? '\n' : 'a' + unit % 23);
    return units;
}

/// The bytes of such lines in our formats.
std::string LineBytes(const TText& text, bool isWide) {
    if (!isWide) return MakeLines<char>(text);
    const auto units = MakeLines<char16_t>(text);
    return std::string(reinterpret_cast<const char*>(units.data()), 2 * units.size());
}

template <class TRead> void ReadLines(benchmark::State& state, TRead read) {
    std::int64_t lines = 0;
    for (auto _ : state) lines += read();
    state.SetItemsProcessed(lines);
}

void TextReaderVorlund(benchmark::State& state, const TText& text, bool isWide) {
    const bench::CLibrary library;
    const std::string bytes = LineBytes(text, isWide);
    const auto stream = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
    ReadLines(state, [&] {
        stream->Seek(0);
        CTextReader reader(stream.Get(), isWide ? CHAR_FORMAT_UTF16 : CHAR_FORMAT_8BIT);
        std::int64_t lines = 0;
        for (; !reader.Eof(); ++lines) {
            try {
                reader.ReadLine();
            } catch (const CObjectNotFoundException&) {
            }
        }
        return lines;
    });
}

template <class TLine> void LineReaderVorlund(benchmark::State& state, const TText& text, bool isWide) {
    const bench::CLibrary library;
    const std::string bytes = LineBytes(text, isWide);
    const auto stream = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
    ReadLines(state, [&] {
        stream->Seek(0);
        CLineReader reader(stream.Get(), isWide ? CHAR_FORMAT_UTF16 : CHAR_FORMAT_8BIT);
        std::int64_t lines = 0;
        for (TLine line; reader.ReadLine(line);) ++lines;
        return lines;
    });
}

/// Line for line, its bytes into a buffer.
void CopyLines(benchmark::State& state, const TText& text, bool isWide) {
    const std::string bytes = LineBytes(text, isWide);
    const std::size_t size = text.length * (isWide ? 2 : 1);
    std::vector<char> line(size);
    ReadLines(state, [&] {
        std::int64_t lines = 0;
        for (std::size_t at = 0; at + size <= bytes.size(); at += size, ++lines) {
            std::memcpy(line.data(), bytes.data() + at, size);
            benchmark::ClobberMemory();
        }
        return lines;
    });
}

/// What a program would use instead, over a buffer that is the whole text: bytes, or the units of a stream of
/// char16_t.
template <class TUnit> void ReadLineGetline(benchmark::State& state, const TText& text) {
    auto units = MakeLines<TUnit>(text);
    ReadLines(state, [&] {
        CMemoryBuffer<TUnit> buffer(units.data(), units.size());
        std::basic_istream<TUnit> in(&buffer);
        std::int64_t lines = 0;
        for (std::basic_string<TUnit> line; std::getline(in, line, TUnit{'\n'});) ++lines;
        return lines;
    });
}

void RegisterAll() {
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            function(state, arguments...);
        })->Unit(benchmark::kMillisecond);
    };
    add("write/memory/vorlund", WriteMemoryVorlund);
    for (const bool isBuffered : {false, true}) {
        const std::string who = isBuffered ? "vorlund" : "vorlund unbuffered";
        add("write/resource/" + who, WriteResourceVorlund, isBuffered);
        add("read/resource/" + who, ReadResourceVorlund, isBuffered);
        add("write/file/" + who, WriteFileVorlund, isBuffered);
        add("read/file/" + who, ReadFileVorlund, isBuffered);
    }
    for (const char* const name : {"write/memory/limit copy", "read/memory/limit copy",
                                   "write/resource/limit copy", "read/resource/limit copy"})
        add(name, CopyRecords);
    add("write/file/limit system calls", WriteFileSystem);
    add("read/file/limit system calls", ReadFileSystem);
    add("write/file/stdio", WriteFileStdio);
    add("read/memory/vorlund", ReadMemoryVorlund);
    add("read/file/stdio", ReadFileStdio);
#ifdef VORLUND_BENCH_CEREAL
    add("write/memory/cereal", WriteMemoryCereal);
    add("write/file/cereal", WriteFileCereal);
    add("read/memory/cereal", ReadMemoryCereal);
    add("read/file/cereal", ReadFileCereal);
#endif
#ifdef VORLUND_BENCH_PROTOBUF
    add("write/memory/protobuf", WriteMemoryProtobuf);
    add("write/file/protobuf", WriteFileProtobuf);
    add("read/memory/protobuf", ReadMemoryProtobuf);
    add("read/file/protobuf", ReadFileProtobuf);
#endif
    const auto addLines = [&](const std::string& name, TText text) {
        add(name + "/8-bit/vorlund", LineReaderVorlund<wstring>, text, false);
        add(name + "/8-bit/vorlund into a CString", LineReaderVorlund<CString>, text, false);
        add(name + "/8-bit/vorlund CTextReader", TextReaderVorlund, text, false);
        add(name + "/8-bit/limit copy", CopyLines, text, false);
        add(name + "/UTF-16/limit copy", CopyLines, text, true);
        add(name + "/8-bit/std::getline", ReadLineGetline<char>, text);
        add(name + "/UTF-16/vorlund", LineReaderVorlund<wstring>, text, true);
        add(name + "/UTF-16/vorlund into a CString", LineReaderVorlund<CString>, text, true);
        add(name + "/UTF-16/vorlund CTextReader", TextReaderVorlund, text, true);
        add(name + "/UTF-16/std::getline", ReadLineGetline<char>, text);
        add(name + "/UTF-16/std::getline of char16_t", ReadLineGetline<char16_t>, text);
    };
    for (const std::size_t length : {std::size_t{80}, std::size_t{4096}}) {
        addLines("lines of " + std::to_string(length) + " units/cached", {length, kFewUnits});
        addLines("lines of " + std::to_string(length) + " units/memory", {length, kManyUnits});
    }
    if (!bench::IsShort()) addLines("lines of 10 Mi units/memory", {std::size_t{10} << 20, kManyUnits});
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    return vorlund::bench::RunRows(argc, argv);
}
