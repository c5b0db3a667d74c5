/// \file
/// The typed reader over arbitrary bytes: what it reads, written again, is what it consumed. The types are
/// drawn at random.
#include "WavFuzz.h"
#include "support/Streams.h"

#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <new>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

/// One value: read, and when it arrived whole, written.
class CRun {
public:
    CRun(const std::uint8_t* data, std::size_t size)
        : data_(data), size_(size), dice_(data, size), source_(CFuzzStream::Create(data, size)),
          target_(test::Make<test::CMemoryOutputStream>()), reader_(source_.Get()), writer_(target_.Get()) {}

    bool IsAtEnd() { return reader_.Eof(); }

    void Step() {
        switch (dice_.Roll(13)) {
        case 0:
            return Bool();
        case 1:
            return Scalar<char>();
        case 2:
            return Scalar<unsigned char>();
        case 3:
            return Scalar<short>();
        case 4:
            return Scalar<unsigned short>();
        case 5:
            return Scalar<int>();
        case 6:
            return Scalar<unsigned int>();
        case 7:
            return Scalar<std::int64_t>();
        case 8:
            return Scalar<std::uint64_t>();
        case 9:
            return Scalar<double>();
        default:
            return Text();
        }
    }

private:
    std::size_t Position() const { return static_cast<std::size_t>(source_->GetPosition()); }

    void Restart() {
        target_->bytes.clear();
        target_->position = 0;
    }

    void CheckWritten(std::size_t start, std::size_t end) {
        Check(target_->bytes.size() == end - start);
        Check(std::equal(target_->bytes.begin(), target_->bytes.end(), data_ + start));
        Restart();
    }

    void Bool() {
        const std::size_t start = Position();
        bool value = false;
        reader_ >> value;
        Check(Position() == start + 1 && value == (data_[start] != 0));
        writer_ << value;
        Check(target_->bytes == std::vector<std::uint8_t>{static_cast<std::uint8_t>(value)});
        Restart();
    }

    template <class T> void Scalar() {
        const std::size_t start = Position();
        const std::size_t arriving = std::min(sizeof(T), size_ - start);
        T value;
        std::memset(&value, 0x5A, sizeof(value));
        unsigned char image[sizeof(T)];
        std::memcpy(image, &value, sizeof(value));
        std::memcpy(image, data_ + start, arriving);
        reader_ >> value;
        Check(Position() == start + arriving);
        Check(std::memcmp(image, &value, sizeof(value)) == 0);
        if (arriving < sizeof(T)) return;
        writer_ << value;
        CheckWritten(start, Position());
    }

    void Text() {
        const std::size_t start = Position();
        std::int32_t count = 0;
        const bool hasCount = size_ - start >= sizeof(count);
        if (hasCount) std::memcpy(&count, data_ + start, sizeof(count));
        CString text("before");
        try {
            reader_ >> text;
        } catch (const std::bad_alloc&) {
            Check(hasCount && (count < 0 || count > 0x3FFFFFFE));
            Check(text == "before");
            return;
        }
        if (!hasCount) {
            Check(text == "before" && Position() == size_);
            return;
        }
        Check(count >= 0 && count <= 0x3FFFFFFE);
        const std::size_t stored = (size_ - start - sizeof(count)) / sizeof(wchar);
        const std::size_t arriving = std::min(stored, static_cast<std::size_t>(count));
        std::vector<wchar> units(arriving + 1);
        std::memcpy(units.data(), data_ + start + sizeof(count), arriving * sizeof(wchar));
        Check(text.CompareTo(units.data()) == 0);
        writer_ << text;
        // A zero unit inside shortens what is written.
        if (text.Length() == static_cast<std::size_t>(count))
            CheckWritten(start, start + sizeof(count) + arriving * sizeof(wchar));
        Restart();
    }

    const std::uint8_t* data_;
    std::size_t size_;
    CDice dice_;
    CRefPtr<CFuzzStream> source_;
    CRefPtr<test::CMemoryOutputStream> target_;
    CVarReader reader_;
    CVarWriter writer_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CRun run(data, size);
    while (!run.IsAtEnd()) run.Step();
    return 0;
}
