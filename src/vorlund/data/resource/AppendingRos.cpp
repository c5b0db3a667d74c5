#include "vorlund/data/resource/AppendingRos.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/AppendingRos");
constexpr const wchar* kSeek = VRL_L("vorlund::CAppendingRos::Seek");
constexpr const wchar* kWrite = VRL_L("vorlund::CAppendingRos::Write");
constexpr const wchar* kNoResource = VRL_L("No resource bound");

} // namespace

constexpr TResourceOsFailures kAppendingRosFailures{
    .lengthUnbound = {VRL_L("vorlund::CAppendingRos::GetLength"), kFile, 70, kNoResource},
    .flushUnsupported = {VRL_L("vorlund::CAppendingRos::Flush"), kFile, 78, VRL_L("Flush unsupported")},
    .seekUnbound = {kSeek, kFile, 85, kNoResource},
    .seekNegative = {kSeek, kFile, 84, VRL_L("position is negative")},
    .tellUnbound = {VRL_L("vorlund::CAppendingRos::Tell"), kFile, 95, kNoResource},
    .writeNull = {kWrite, kFile, 111, VRL_L("buffer is NULL")},
    .writeUnbound = {kWrite, kFile, 112, kNoResource},
    .writeOutOfMemory = {kWrite, kFile, 118, VRL_L("malloc failed")},
};

} // namespace vorlund
