/// \file
/// Metadata of every kind.
#pragma once

#include <vorlund/WavMetadata.h>

namespace vorlund::test {

inline TWavMetadata FullMetadata() {
    TWavMetadata metadata;
    metadata.info = {
        {"INAM", "A title, odd"}, {"IART", "G\xC3\xBCnter"}, {"ICMT", "old \xFC bytes"}, {"ISFT", ""}};
    TWavBroadcast& record = metadata.broadcast.emplace();
    record.description = "A description";
    record.originator = "test";
    record.originatorReference = "USABC1234567";
    record.originationDate = "2026-03-31";
    record.originationTime = "23:59:59";
    record.timeReference = 0x123456789A;
    record.version = 2;
    for (std::size_t i = 0; i < record.umid.size(); ++i) record.umid[i] = static_cast<std::uint8_t>(i + 1);
    record.loudnessValue = -2300;
    record.loudnessRange = 700;
    record.maxTruePeakLevel = -100;
    record.maxMomentaryLoudness = -2000;
    record.maxShortTermLoudness = -2100;
    record.codingHistory = "A=PCM,F=48000,W=16,M=stereo\r\n";
    metadata.cues = {{1, 0, 0, "begin", ""}, {7, 100, 50, "region", "a note"}, {3, 0xFFFFFFFF, 0, "", ""}};
    return metadata;
}

inline TWavMetadata Titled(const std::string& title) {
    TWavMetadata metadata;
    metadata.info = {{"INAM", title}};
    return metadata;
}

} // namespace vorlund::test
