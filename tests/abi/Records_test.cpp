// Sizes and field offsets of the records, and the fields of the classes that are handed over by value or
// pointer.
#include <vorlund/BinaryLock.h>
#include <vorlund/CbVideoSource.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ReadWriteLock.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/String.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

constexpr std::size_t kPointer = sizeof(void*);

struct TOffsetRow {
    std::string field;
    std::size_t actual;
    std::size_t expected;
};

/// The distance between a record and its field.
template <class TRecord, class TField> std::size_t OffsetIn(const TRecord& record, const TField& field) {
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&field) -
                                    reinterpret_cast<const char*>(&record));
}

std::vector<TOffsetRow> MakeRows() {
    static const TClassInfo classInfo({}, nullptr, nullptr);
    static const TDecoderClassInfo decoder{};
    static const TEncoderClassInfo encoder{};
    static const TDeviceClassInfo device{{}, DEVICE_TYPE_VIDEO};
    static const TDataFormat format;
    static const TDataFormat_AudioPcm audio;
    static const TPixelFormat pixel;
    static const TDataFormat_ImageRgb image;
    static const TDataFormat_VideoRgb video;
    static const ICbVideoSource::TCbData frame{};
    return {
        {"TClassInfo_id", OffsetIn(classInfo, classInfo.id), 0},
        {"TClassInfo_name", OffsetIn(classInfo, classInfo.name), 16},
        {"TClassInfo_factory", OffsetIn(classInfo, classInfo.factory), 16 + kPointer},
        {"TClassInfo_End", sizeof(classInfo), 16 + 2 * kPointer},
        {"TDecoderClassInfo_classId", OffsetIn(decoder, decoder.classId), 0},
        {"TDecoderClassInfo_inputFormatId", OffsetIn(decoder, decoder.inputFormatId), 16},
        {"TDecoderClassInfo_outputFormatId", OffsetIn(decoder, decoder.outputFormatId), 32},
        {"TDecoderClassInfo_End", sizeof(decoder), 48},
        {"TEncoderClassInfo_classId", OffsetIn(encoder, encoder.classId), 0},
        {"TEncoderClassInfo_inputFormatId", OffsetIn(encoder, encoder.inputFormatId), 16},
        {"TEncoderClassInfo_outputFormatId", OffsetIn(encoder, encoder.outputFormatId), 32},
        {"TEncoderClassInfo_End", sizeof(encoder), 48},
        {"TDeviceClassInfo_classId", OffsetIn(device, device.classId), 0},
        {"TDeviceClassInfo_deviceType", OffsetIn(device, device.deviceType), 16},
        {"TDeviceClassInfo_End", sizeof(device), 20},
        {"TDataFormat_id", OffsetIn(format, format.id), 0},
        {"TDataFormat_size", OffsetIn(format, format.size), 16},
        {"TDataFormat_End", sizeof(format), 20},
        {"AudioPcm_id", OffsetIn(audio, audio.id), 0},
        {"AudioPcm_sampleFormat", OffsetIn(audio, audio.sampleFormat), 20},
        {"AudioPcm_channels", OffsetIn(audio, audio.channels), 24},
        {"AudioPcm_samplesPerSec", OffsetIn(audio, audio.samplesPerSec), 28},
        {"AudioPcm_End", sizeof(audio), 32},
        {"TPixelFormat_type", OffsetIn(pixel, pixel.type), 0},
        {"TPixelFormat_bitsPerPixel", OffsetIn(pixel, pixel.bitsPerPixel), 4},
        {"TPixelFormat_alphaBits", OffsetIn(pixel, pixel.alphaBits), 8},
        {"TPixelFormat_alphaShift", OffsetIn(pixel, pixel.alphaShift), 12},
        {"TPixelFormat_redBits", OffsetIn(pixel, pixel.redBits), 16},
        {"TPixelFormat_redShift", OffsetIn(pixel, pixel.redShift), 20},
        {"TPixelFormat_greenBits", OffsetIn(pixel, pixel.greenBits), 24},
        {"TPixelFormat_greenShift", OffsetIn(pixel, pixel.greenShift), 28},
        {"TPixelFormat_blueBits", OffsetIn(pixel, pixel.blueBits), 32},
        {"TPixelFormat_blueShift", OffsetIn(pixel, pixel.blueShift), 36},
        {"TPixelFormat_End", sizeof(pixel), 40},
        {"ImageRgb_id", OffsetIn(image, image.id), 0},
        {"ImageRgb_pixelFormat", OffsetIn(image, image.pixelFormat), 20},
        {"ImageRgb_width", OffsetIn(image, image.width), 60},
        {"ImageRgb_height", OffsetIn(image, image.height), 64},
        {"ImageRgb_End", sizeof(image), 68},
        {"VideoRgb_id", OffsetIn(video, video.id), 0},
        {"VideoRgb_image", OffsetIn(video, video.image), 20},
        {"VideoRgb_frameRate", OffsetIn(video, video.frameRate), 88},
        {"VideoRgb_End", sizeof(video), 92},
        {"CId_End", sizeof(CId), 16},
        // Handles: one pointer.
        {"CString_End", sizeof(CString), kPointer},
        {"CClassStore_End", sizeof(CClassStore), kPointer},
        {"CCodecClassStore_End", sizeof(CCodecClassStore), kPointer},
        {"CDeviceClassStore_End", sizeof(CDeviceClassStore), kPointer},
        {"CObjectCounter_End", sizeof(CObjectCounter), kPointer},
        {"CReadWriteLock_End", sizeof(CReadWriteLock), kPointer},
        {"TCbData_pixels", OffsetIn(frame, frame.pixels), 0},
        {"TCbData_frameNumber", OffsetIn(frame, frame.frameNumber), kPointer},
        {"TCbData_pixelFormat", OffsetIn(frame, frame.pixelFormat), kPointer + 4},
        {"TCbData_End", sizeof(frame), kPointer == 4 ? 48U : 56U},
        {"CInputStreamSelector_End", sizeof(CInputStreamSelector), kPointer},
        {"COutputStreamSelector_End", sizeof(COutputStreamSelector), kPointer},
        {"CClassObject_End", sizeof(CClassObject), kPointer},
        {"CBinaryLock_End", sizeof(CBinaryLock), 2 * kPointer},
        // Enumerations cross the interface as 32-bit values.
        {"TExceptionType_End", sizeof(TExceptionType), 4},
        {"TDebugMessageType_End", sizeof(TDebugMessageType), 4},
        {"TLockMode_End", sizeof(TLockMode), 4},
        {"TDeviceType_End", sizeof(TDeviceType), 4},
    };
}

class Records : public testing::TestWithParam<TOffsetRow> {};

TEST_P(Records, Offset) {
    EXPECT_EQ(GetParam().actual, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, Records, testing::ValuesIn(MakeRows()),
                         [](const auto& row) { return row.param.field; });

// Copied byte by byte.
static_assert(std::is_trivially_copyable_v<CId> && std::is_trivially_copyable_v<TClassInfo> &&
              std::is_trivially_copyable_v<TDecoderClassInfo> &&
              std::is_trivially_copyable_v<TEncoderClassInfo> &&
              std::is_trivially_copyable_v<TDeviceClassInfo> && std::is_trivially_copyable_v<TDataFormat> &&
              std::is_trivially_copyable_v<TDataFormat_AudioPcm> &&
              std::is_trivially_copyable_v<TDataFormat_ImageRgb> &&
              std::is_trivially_copyable_v<TDataFormat_VideoRgb> &&
              std::is_trivially_copyable_v<TPixelFormat>);

/// The bytes of `object` at `offset` as a value.
template <class TValue, class TObject> TValue At(const TObject* object, std::size_t offset) {
    TValue value;
    std::memcpy(&value, reinterpret_cast<const char*>(object) + offset, sizeof(value));
    return value;
}

TEST(Records, ExceptionFieldsInOrder) {
    static const wchar kMethod[] = VRL_L("method"), kFile[] = VRL_L("file"), kReason[] = VRL_L("reason");
    const CIOException exception(kMethod, kFile, 77, kReason);
    EXPECT_EQ(At<const wchar*>(&exception, kPointer), kMethod);
    EXPECT_EQ(At<const wchar*>(&exception, 2 * kPointer), kFile);
    EXPECT_EQ(At<int>(&exception, 3 * kPointer), 77);
    EXPECT_EQ(At<const wchar*>(&exception, 4 * kPointer), kReason);
    EXPECT_EQ(At<int>(&exception, 5 * kPointer), EXCEPTION_TYPE_IO);
    EXPECT_EQ(sizeof(exception), 6 * kPointer);
}

TEST(Records, ObjectFieldsInOrder) {
    const CLibraryScope library;
    for (int number = 1; number <= 3; ++number) {
        const auto object = CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(classid::CObject));
        const auto second = object;
        EXPECT_EQ(At<int>(object.Get(), kPointer), number);
        EXPECT_EQ(At<int>(object.Get(), kPointer + 4), 2);
    }
}

TEST(Records, LibraryObjectMembersInOrder) {
    const char* const begin = reinterpret_cast<const char*>(&v);
    const std::vector<const void*> members = {begin,
                                              &v.GetClassStore(),
                                              &v.GetCodecClassStore(),
                                              &v.GetDeviceClassStore(),
                                              &v.GetPluginStore(),
                                              &v.GetObjectCounter(),
                                              begin + sizeof(v)};
    for (std::size_t i = 1; i < members.size(); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
}

TEST(Records, ChunkInfoFieldsInOrder) {
    const TWavChunkInfo info;
    EXPECT_EQ(OffsetIn(info, info.id), 0u);
    EXPECT_EQ(OffsetIn(info, info.size), OffsetIn(info, info.dataOffset) + 8);
    EXPECT_EQ(sizeof(info), OffsetIn(info, info.size) + 8);
    EXPECT_EQ(sizeof(info.dataOffset), 8u);
    EXPECT_TRUE(std::is_signed_v<decltype(info.dataOffset)>);
    EXPECT_TRUE(std::is_unsigned_v<decltype(info.size)>);
}

} // namespace
} // namespace vorlund::test
