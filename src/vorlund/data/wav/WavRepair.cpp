#include "vorlund/data/wav/RiffFile.h"
#include "vorlund/data/wav/WavDescription.h"

#include <vorlund/Exception.h>
#include <vorlund/WavRepair.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vorlund {
namespace {

using riff::TBytes;
using riff::TChunk;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/wav/WavRepair");
constexpr const wchar* kMethod = VRL_L("vorlund::RepairWav");

constexpr TFailure kBadHeader{kMethod, kFile, 1, VRL_L("Invalid header")};
constexpr TFailure kNoFmtChunk{kMethod, kFile, 2, VRL_L("Cannot find fmt chunk")};
constexpr TFailure kNoDataChunk{kMethod, kFile, 3, VRL_L("Cannot find data chunk")};
constexpr TFailure kNoRoom{kMethod, kFile, 4,
                           VRL_L("The file needs sizes of 64 bits, and its head has no room for them")};

/// What other programs put behind the sound.
constexpr std::string_view kKnownChunks[] = {
    "LIST", "JUNK", "junk", "PAD ", "FLLR", "bext", "cue ", "plst", "smpl", "inst", "fact", "PEAK",
    "iXML", "axml", "chna", "_PMX", "cart", "id3 ", "ID3 ", "DISP", "acid", "strc", "minf", "elm1",
    "regn", "umid", "DGDA", "MD5 ", "afsp", "levl", "link", "aXML", "LGWV", "SNDM", "AFAn", "ResU"};
/// What they put behind the file.
constexpr std::string_view kKnownTails[] = {"TAG", "ID3", "APETAGEX", "LYRICSBEGIN"};

class CRepair {
public:
    CRepair(const wchar* path, bool isTrial) : file_(path, isTrial), isTrial_(isTrial) {}

    TWavRepair Run() {
        if (!riff::ReadFileHead(file_, head_)) Raise<CDataFormatException>(kBadHeader);
        FindChunks();
        const std::uint64_t sound = MeasureSound();
        const bool isChanged = sound != data_.size;
        const std::uint64_t end = MeasureFile(sound);
        Mend(sound, end, FindFrames(sound, isChanged));
        if (!isTrial_) file_.Close();
        return std::move(result_);
    }

private:
    /// Goes to the sound.
    void FindChunks() {
        bool hasFormat = false;
        std::uint64_t position = riff::kFileHeadSize;
        for (std::size_t i = 0; i < riff::kMaxChunks; ++i) {
            TChunk chunk;
            if (!riff::ReadChunk(file_, head_, position, chunk)) break;
            if (chunk.id == "data") {
                if (!hasFormat) break;
                data_ = chunk;
                return;
            }
            const TBytes body = riff::ReadBody(file_, chunk, wav::kMinDescription * 4);
            if (chunk.id == "fmt " && body.size() >= wav::kMinDescription) {
                description_ = wav::ReadDescription(body);
                hasFormat = true;
            }
            if (chunk.id == "fact" && body.size() >= 4) {
                fact_ = chunk;
                factFrames_ = LoadLittleEndian32(body.data());
            }
            position = chunk.GetNext();
        }
        if (!hasFormat) Raise<CDataFormatException>(kNoFmtChunk);
        Raise<CDataFormatException>(kNoDataChunk);
    }

    bool BeginsWith(std::uint64_t position, std::string_view text) {
        std::string bytes(text.size(), '\0');
        return file_.Read(position, bytes.data(), bytes.size()) == text.size() && bytes == text;
    }

    /// Whether chunks follow each other from `position` to the end of the file.
    bool IsChainTo(std::uint64_t position) {
        TChunk chunk;
        for (std::size_t i = 0; i < riff::kMaxChunks && position < file_.GetLength(); ++i) {
            if (!riff::ReadChunk(file_, head_, position, chunk)) return false;
            position = chunk.GetNext();
        }
        return position == file_.GetLength() || position == file_.GetLength() + 1;
    }

    /// Asked along a chain: what follows a chain that was walked to its end is not walked again.
    bool IsChunk(std::uint64_t position) {
        TChunk chunk;
        if (!riff::ReadChunk(file_, head_, position, chunk)) return false;
        const bool isKnown =
            std::find(std::begin(kKnownChunks), std::end(kKnownChunks), chunk.id) != std::end(kKnownChunks);
        if (isKnown || position >= chain_) return true;
        if (!IsChainTo(position)) return false;
        chain_ = position;
        return true;
    }

    /// Whether the declared size is right, as far as the file shows.
    bool IsSizeRight() {
        const std::uint64_t length = file_.GetLength();
        if (data_.GetEnd() > length) return false;
        const std::uint64_t rest = length - data_.GetEnd();
        if (rest <= data_.size % 2) return true;
        if (IsChunk(data_.GetNext())) return true;
        // Of a frame that was cut off.
        if (data_.size > 0 && rest < std::max<std::uint64_t>(description_.blockSize, 2)) return true;
        const bool isEnd = head_.riffSize == data_.GetNext() - riff::kHeadSize;
        return isEnd &&
               std::any_of(std::begin(kKnownTails), std::end(kKnownTails),
                           [this](std::string_view tail) { return BeginsWith(data_.GetNext(), tail); });
    }

    std::uint64_t MeasureSound() {
        if (IsSizeRight()) return data_.size;
        const std::uint64_t rest = file_.GetLength() - std::min(file_.GetLength(), data_.GetBody());
        return description_.blockSize == 0 ? rest : rest - rest % description_.blockSize;
    }

    /// The end of the last chunk. A chunk that is cut off gets the size that it has.
    std::uint64_t MeasureFile(std::uint64_t sound) {
        std::uint64_t position = data_.GetBody() + riff::Pad(sound);
        if (sound != data_.size) return position;
        for (std::size_t i = 0; i < riff::kMaxChunks && IsChunk(position); ++i) {
            TChunk chunk;
            riff::ReadChunk(file_, head_, position, chunk);
            if (chunk.GetEnd() > file_.GetLength()) {
                const std::uint64_t size = file_.GetLength() - chunk.GetBody();
                Change(chunk.id + " size", chunk.size, size);
                WriteNumber(chunk.begin + 4, size, 4);
                chunk.size = size;
            }
            position = chunk.GetNext();
        }
        return position;
    }

    /// Each write leaves a file of which the next repair makes the same: the size of the sound is what shows
    /// that there is something to mend, and a byte of padding would be taken for sound until it is right.
    ///
    /// \param newFact  the number of frames for `fact_`, when that is wrong
    void Mend(std::uint64_t sound, std::uint64_t end, std::optional<std::uint32_t> newFact) {
        const std::uint64_t frames = description_.isPlain && description_.blockSize > 0
                                         ? sound / description_.blockSize
                                         : head_.frames;
        riff::TSizes sizes{end - riff::kHeadSize, sound, frames, head_.is64};
        // The last byte of padding may be there or not, counted or not.
        const bool isUncounted = head_.riffSize + 1 == sizes.riff && end == file_.GetLength() + 1;
        if (isUncounted) sizes.riff = head_.riffSize;
        // Without fields of 64 bits, an RF64 is none.
        const bool isLong = sizes.riff >= riff::kSizeElsewhere;
        sizes.is64 = isLong || (head_.is64 && head_.hasRoom64);
        if (!riff::CanHold(head_, sizes)) Raise<CDataFormatException>(kNoRoom);

        const std::string id = sizes.is64 ? (head_.is64 ? head_.id : "RF64") : "RIFF";
        if (id != head_.id) result_.changes.push_back((head_.id + " becomes " + id).c_str());
        if (sizes.riff != head_.riffSize) Change("RIFF size", head_.riffSize, sizes.riff);
        const bool isSoundChanged = sound != data_.size;
        if (isSoundChanged) Change("data size", data_.size, sound);
        const bool isNewDs64 = sizes.is64 && !head_.hasDs64;
        if (isNewDs64 && id == head_.id) result_.changes.push_back(VRL_L("JUNK becomes ds64"));
        const bool needsPadding = end > file_.GetLength() && !isUncounted;
        if (needsPadding) Change("file size", file_.GetLength(), end);
        if (newFact) {
            Change("number of frames", factFrames_, *newFact);
            WriteNumber(fact_.GetBody(), *newFact, 4);
        }
        const bool isHeadChanged =
            id != head_.id || sizes.riff != head_.riffSize || isNewDs64 || (isSoundChanged && sizes.is64);
        if (isHeadChanged && !isTrial_) riff::WriteFileHead(file_, head_, sizes);
        const std::uint64_t field =
            isLong || (sizes.is64 && data_.declared == riff::kSizeElsewhere) ? riff::kSizeElsewhere : sound;
        if (field != data_.declared) WriteNumber(data_.begin + 4, field, 4);
        if (needsPadding && !isTrial_) file_.Write(file_.GetLength(), "", 1);
    }

    std::optional<std::uint32_t> FindFrames(std::uint64_t sound, bool isChanged) const {
        if (fact_.id.empty() || !description_.isPlain || description_.blockSize == 0) return {};
        const std::uint32_t frames = riff::Limit(sound / description_.blockSize);
        const bool isElsewhere = factFrames_ == riff::kSizeElsewhere && head_.is64;
        if (frames == factFrames_ || isElsewhere || (!isChanged && factFrames_ != 0)) return {};
        return frames;
    }

    void Change(const std::string& what, std::uint64_t from, std::uint64_t to) {
        result_.changes.push_back(
            (what + " " + std::to_string(from) + " becomes " + std::to_string(to)).c_str());
    }

    void WriteNumber(std::uint64_t position, std::uint64_t value, int size) {
        if (isTrial_) return;
        const TBytes bytes = riff::CFields().Number(value, size).Get();
        file_.Write(position, bytes.data(), bytes.size());
    }

    CUpdateFile file_;
    const bool isTrial_;
    TWavRepair result_;
    riff::TFileHead head_;
    wav::TDescription description_;
    TChunk data_;
    TChunk fact_;
    std::uint32_t factFrames_ = 0;
    /// From here on, chunks follow each other to the end of the file.
    std::uint64_t chain_ = std::numeric_limits<std::uint64_t>::max();
};

} // namespace

TWavRepair RepairWav(const wchar* path, bool isTrial) {
    return CRepair(path, isTrial).Run();
}

} // namespace vorlund
