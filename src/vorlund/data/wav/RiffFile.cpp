#include "vorlund/data/wav/RiffFile.h"

#include <algorithm>

namespace vorlund::riff {

bool ReadFileHead(CUpdateFile& file, TFileHead& head) {
    std::uint8_t bytes[kFileHeadSize + kHeadSize + kDs64Size];
    const std::uint64_t count = file.Read(0, bytes, sizeof bytes);
    if (count < kFileHeadSize) return false;
    head.id = LoadId(bytes);
    head.is64 = head.id == "RF64" || head.id == "BW64";
    if ((head.id != "RIFF" && !head.is64) || LoadId(bytes + 8) != "WAVE") return false;
    head.declaredRiffSize = LoadLittleEndian32(bytes + 4);
    head.riffSize = head.declaredRiffSize;
    const std::uint8_t* const first = bytes + kFileHeadSize;
    if (count < sizeof bytes || LoadLittleEndian32(first + 4) < kDs64Size) return true;
    head.hasDs64 = head.is64 && LoadId(first) == "ds64";
    head.hasRoom64 = head.hasDs64 || LoadId(first) == "JUNK";
    if (!head.hasDs64) return true;
    const std::uint8_t* const sizes = first + kHeadSize;
    if (head.declaredRiffSize == kSizeElsewhere) head.riffSize = LoadLittleEndian64(sizes);
    head.dataSize = LoadLittleEndian64(sizes + 8);
    head.frames = LoadLittleEndian64(sizes + 16);
    return true;
}

bool ReadChunk(CUpdateFile& file, const TFileHead& head, std::uint64_t position, TChunk& chunk) {
    std::uint8_t bytes[kHeadSize];
    if (file.Read(position, bytes, sizeof bytes) < sizeof bytes) return false;
    chunk.id = LoadId(bytes);
    chunk.begin = position;
    chunk.declared = LoadLittleEndian32(bytes + 4);
    const bool isElsewhere = chunk.declared == kSizeElsewhere && head.hasDs64 && chunk.id == "data";
    // A greater size, which would overflow in sums, is none of a file.
    chunk.size = std::min(isElsewhere ? head.dataSize : chunk.declared, kMaxFileSize);
    return IsId(chunk.id);
}

TBytes ReadBody(CUpdateFile& file, const TChunk& chunk, std::uint64_t limit) {
    const std::uint64_t begin = std::min(chunk.GetBody(), file.GetLength());
    const std::uint64_t size = std::min({chunk.size, limit, file.GetLength() - begin});
    TBytes body(static_cast<std::size_t>(size));
    body.resize(static_cast<std::size_t>(file.Read(begin, body.data(), body.size())));
    return body;
}

bool CanHold(const TFileHead& head, const TSizes& sizes) {
    return !sizes.is64 || head.hasRoom64;
}

void WriteFileHead(CUpdateFile& file, const TFileHead& head, const TSizes& sizes) {
    CFields fields;
    if (sizes.is64) {
        fields.Text(head.is64 ? head.id : "RF64").Number(kSizeElsewhere, 4).Text("WAVE").Text("ds64");
        // The size of the chunk and its table stay: they may be longer than ours.
        std::uint8_t size[4];
        file.Read(kFileHeadSize + 4, size, sizeof size);
        fields.Bytes({size, size + 4}).Number(sizes.riff, 8).Number(sizes.data, 8).Number(sizes.frames, 8);
        // Free room has no table.
        if (!head.hasDs64) fields.Number(0, 4);
    } else {
        fields.Text("RIFF").Number(sizes.riff, 4);
    }
    file.Write(0, fields.Get().data(), fields.GetSize());
}

} // namespace vorlund::riff
