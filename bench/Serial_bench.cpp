// Typed values and lines of text. A record is an int, a 64-bit integer, a double, a bool and a text of 20
// units; a million of them go through a stream in memory and through a file, against cereal's binary archive,
// protobuf's coded streams, and plain stdio with the same calls (one a scalar, two a text). Lines go against
// std::getline. Names are operation/stream/who.
#include "BenchSupport.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/LineReader.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>
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

constexpr int kRecords = 1000000;
/// In memory, so many at a time: they fit into the processor's caches, whose speed is the same for all peers.
constexpr int kRun = 4000;
constexpr int kRuns = kRecords / kRun;
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

// Streams in memory.

/// Scalars are small: their copies are single instructions.
void Copy(void* to, const void* from, std::size_t size) {
    switch (size) {
    case 1:
        std::memcpy(to, from, 1);
        break;
    case 4:
        std::memcpy(to, from, 4);
        break;
    case 8:
        std::memcpy(to, from, 8);
        break;
    default:
        std::memcpy(to, from, size);
    }
}

class CMemoryOut : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId{0x42454E43, 0x48000001, 0, 1};
    void Reserve(std::size_t size) {
        bytes_.resize(size);
        Restart();
    }
    void Restart() { next_ = bytes_.data(); }
    void Write(const void* buffer, std::uint64_t size) override {
        if (size > static_cast<std::size_t>(bytes_.data() + bytes_.size() - next_)) Grow(size);
        Copy(next_, buffer, size);
        next_ += size;
    }

private:
    void Grow(std::size_t size) {
        const std::size_t used = static_cast<std::size_t>(next_ - bytes_.data());
        bytes_.resize(std::max(2 * bytes_.size(), used + size));
        next_ = bytes_.data() + used;
    }

    std::vector<char> bytes_;
    char* next_ = nullptr;
};

class CMemoryIn : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x42454E43, 0x48000001, 0, 2};
    void Set(const std::string& bytes) {
        next_ = bytes.data();
        end_ = next_ + bytes.size();
    }
    bool Eof() override { return next_ == end_; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const auto rest = static_cast<std::size_t>(end_ - next_);
        const std::size_t count = size < rest ? size : rest;
        Copy(buffer, next_, count);
        next_ += count;
        return count;
    }

private:
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

template <class TClass> CRefPtr<TClass> Make() {
    return CRefPtr<TClass>::Adopt(static_cast<TClass*>(NewObject<TClass>()));
}

/// For the peers that use the standard streams: the same memory, without growth.
class CMemoryBuffer : public std::streambuf {
public:
    CMemoryBuffer(char* data, std::size_t size) {
        setp(data, data + size);
        setg(data, data, data + size);
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
    const auto stream = Make<CMemoryOut>();
    stream->Reserve(kRun * kRecordSize);
    const CString text(kText.c_str());
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            stream->Restart();
            CVarWriter writer(stream.Get());
            WriteRecords(writer, text, kRun);
        }
    }
    Finish(state);
}

void WriteFileVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(Folder().At("ours").c_str());
    const CString text(kText.c_str());
    for (auto _ : state) {
        const auto stream = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        stream->Open(path.c_str(), false);
        CVarWriter writer(stream.Get());
        WriteRecords(writer, text, kRecords);
        stream->Close();
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
            CMemoryBuffer buffer(bytes.data(), bytes.size());
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
    int number;
    std::int64_t big;
    double fraction;
    bool flag;
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
            CMemoryBuffer buffer(bytes.data(), bytes.size());
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
    const auto stream = Make<CMemoryIn>();
    const std::string bytes = RecordBytes(kRun);
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            stream->Set(bytes);
            CVarReader reader(stream.Get());
            ReadRecords(state, reader, kRun);
        }
    }
    Finish(state);
}

void ReadFileVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(RecordFile().c_str());
    for (auto _ : state) {
        const auto stream = CreateAs<IFileInputStream>(classid::CFileInputStream);
        stream->Open(path.c_str());
        CVarReader reader(stream.Get());
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

// Lines.

constexpr std::size_t kTextSize = 100u << 20;

/// 100 MiB of lines of `length` units each, the line feed included.
std::string MakeLines(std::size_t length, bool isWide) {
    std::string bytes(kTextSize, '\0');
    std::size_t unit = 0;
    for (std::size_t i = 0; i < kTextSize; i += isWide ? 2 : 1)
        bytes[i] = ++unit % length == 0 ? '\n' : static_cast<char>('a' + unit % 23);
    return bytes;
}

template <class TRead> void ReadLines(benchmark::State& state, TRead read) {
    std::int64_t lines = 0;
    for (auto _ : state) lines += read();
    state.SetItemsProcessed(lines);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kTextSize));
}

void ReadLineVorlund(benchmark::State& state, std::size_t length, bool isWide) {
    const bench::CLibrary library;
    const std::string bytes = MakeLines(length, isWide);
    const auto stream = Make<CMemoryIn>();
    ReadLines(state, [&] {
        stream->Set(bytes);
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

/// Only the exception that ends each of those calls, from the search for a carriage return in a line without
/// one.
void ReadLineException(benchmark::State& state, std::size_t length, bool isWide) {
    const bench::CLibrary library;
    CString text("line");
    const auto count = static_cast<std::int64_t>(kTextSize / length / (isWide ? 2 : 1));
    ReadLines(state, [&] {
        for (std::int64_t i = 0; i < count; ++i) {
            try {
                text.Remove(wchar{13});
            } catch (const CObjectNotFoundException&) {
            }
        }
        return count;
    });
}

void LineReaderVorlund(benchmark::State& state, std::size_t length, bool isWide) {
    const bench::CLibrary library;
    const std::string bytes = MakeLines(length, isWide);
    const auto stream = Make<CMemoryIn>();
    ReadLines(state, [&] {
        stream->Set(bytes);
        CLineReader reader(stream.Get(), isWide ? CHAR_FORMAT_UTF16 : CHAR_FORMAT_8BIT);
        std::int64_t lines = 0;
        for (wstring line; reader.ReadLine(line);) ++lines;
        return lines;
    });
}

/// What a program would use instead: bytes, or for UTF-16 the units of std::basic_istream<char16_t>.
void ReadLineGetline(benchmark::State& state, std::size_t length) {
    std::string bytes = MakeLines(length, false);
    ReadLines(state, [&] {
        CMemoryBuffer buffer(bytes.data(), bytes.size());
        std::istream in(&buffer);
        std::int64_t lines = 0;
        for (std::string line; std::getline(in, line);) ++lines;
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
    add("write/file/vorlund", WriteFileVorlund);
    add("write/file/stdio", WriteFileStdio);
    add("read/memory/vorlund", ReadMemoryVorlund);
    add("read/file/vorlund", ReadFileVorlund);
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
    for (const std::size_t length : {std::size_t{80}, std::size_t{4096}, std::size_t{10} << 20}) {
        const std::string lines = "lines/" + std::to_string(length);
        add(lines + "/8bit/vorlund", ReadLineVorlund, length, false);
        add(lines + "/8bit/exception", ReadLineException, length, false);
        add(lines + "/8bit/linereader", LineReaderVorlund, length, false);
        add(lines + "/8bit/getline", ReadLineGetline, length);
        add(lines + "/utf16/vorlund", ReadLineVorlund, length, true);
        add(lines + "/utf16/exception", ReadLineException, length, true);
        add(lines + "/utf16/linereader", LineReaderVorlund, length, true);
    }
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
