#include "vorlund/data/resource/ResourceOs.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/ResourceOs");
constexpr const wchar* kSeek = VRL_L("vorlund::CResourceOs::Seek");
constexpr const wchar* kWrite = VRL_L("vorlund::CResourceOs::Write");
constexpr const wchar* kNoResource = VRL_L("No resource bound");

} // namespace

constexpr TResourceOsFailures kResourceOsFailures{
    .lengthUnbound = {VRL_L("vorlund::CResourceOs::GetLength"), kFile, 71, kNoResource},
    .flushUnsupported = {VRL_L("vorlund::CResourceOs::Flush"), kFile, 79, VRL_L("Flush unsupported")},
    .seekUnbound = {kSeek, kFile, 86, kNoResource},
    .seekNegative = {kSeek, kFile, 85, VRL_L("position is negative")},
    .tellUnbound = {VRL_L("vorlund::CResourceOs::Tell"), kFile, 96, kNoResource},
    .writeNull = {kWrite, kFile, 112, VRL_L("buffer is NULL")},
    .writeUnbound = {kWrite, kFile, 113, kNoResource},
    .writeOutOfMemory = {kWrite, kFile, 121, VRL_L("malloc failed")},
};

} // namespace vorlund
