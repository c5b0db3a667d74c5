// The two resource output streams.
#include "data/resource/ForeignResource.h"
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <string>

namespace vorlund::test {
namespace {

/// What the two classes have each for itself.
struct TClassCase {
    const char* name;
    CId id;
    bool appends;
    TFailure lengthUnbound, flush, seekUnbound, seekNegative, tellUnbound, writeNull, writeUnbound,
        writeOutOfMemory;
};

constexpr const wchar* kOsFile = VRL_L("src/vorlund/data/resource/ResourceOs");
constexpr const wchar* kRosFile = VRL_L("src/vorlund/data/resource/AppendingRos");
constexpr const wchar* kNoResource = VRL_L("No resource bound");

const TClassCase kClasses[] = {
    {"CResourceOs",
     classid::CResourceOs,
     false,
     {VRL_L("vorlund::CResourceOs::GetLength"), kOsFile, 71, kNoResource},
     {VRL_L("vorlund::CResourceOs::Flush"), kOsFile, 79, VRL_L("Flush unsupported")},
     {VRL_L("vorlund::CResourceOs::Seek"), kOsFile, 86, kNoResource},
     {VRL_L("vorlund::CResourceOs::Seek"), kOsFile, 85, VRL_L("position is negative")},
     {VRL_L("vorlund::CResourceOs::Tell"), kOsFile, 96, kNoResource},
     {VRL_L("vorlund::CResourceOs::Write"), kOsFile, 112, VRL_L("buffer is NULL")},
     {VRL_L("vorlund::CResourceOs::Write"), kOsFile, 113, kNoResource},
     {VRL_L("vorlund::CResourceOs::Write"), kOsFile, 121, VRL_L("malloc failed")}},
    {"CAppendingRos",
     classid::CAppendingRos,
     true,
     {VRL_L("vorlund::CAppendingRos::GetLength"), kRosFile, 70, kNoResource},
     {VRL_L("vorlund::CAppendingRos::Flush"), kRosFile, 78, VRL_L("Flush unsupported")},
     {VRL_L("vorlund::CAppendingRos::Seek"), kRosFile, 85, kNoResource},
     {VRL_L("vorlund::CAppendingRos::Seek"), kRosFile, 84, VRL_L("position is negative")},
     {VRL_L("vorlund::CAppendingRos::Tell"), kRosFile, 95, kNoResource},
     {VRL_L("vorlund::CAppendingRos::Write"), kRosFile, 111, VRL_L("buffer is NULL")},
     {VRL_L("vorlund::CAppendingRos::Write"), kRosFile, 112, kNoResource},
     {VRL_L("vorlund::CAppendingRos::Write"), kRosFile, 118, VRL_L("malloc failed")}},
};

class ResourceOs : public CResourceTest, public testing::WithParamInterface<TClassCase> {
protected:
    ~ResourceOs() noexcept override {}

    void Bind() { stream_->SetResource(resource_.Get()); }
    void Write(const TBytes& bytes) { stream_->Write(bytes.data(), bytes.size()); }

    CRefPtr<IResourceOs> stream_ = CreateAs<IResourceOs>(GetParam().id);
    std::uint8_t byte_ = 1;
};

TEST_P(ResourceOs, Unbound) {
    const TClassCase& row = GetParam();
    EXPECT_EQ(stream_->GetCapabilities(), 0U);
    stream_->Close();
    stream_->SetFormat(&GetEmptyFormat());
    stream_->SetFormat(nullptr);
    ExpectRaises<COperationNotSupportedException>(row.lengthUnbound, [&] { stream_->GetLength(); });
    ExpectRaises<COperationNotSupportedException>(row.flush, [&] { stream_->Flush(); });
    ExpectRaises<COperationNotSupportedException>(row.seekUnbound, [&] { stream_->Seek(0); });
    ExpectRaises<COperationNotSupportedException>(row.tellUnbound, [&] { stream_->Tell(); });
    ExpectRaises<CIOException>(row.writeUnbound, [&] { stream_->Write(&byte_, 1); });
    ExpectRaises<CIOException>(row.writeUnbound, [&] { stream_->Write(&byte_, 0); });
    ExpectRaises<CIOException>(row.writeUnbound, [&] { stream_->Write(nullptr, 0); });
    ExpectRaises<CNullPtrException>(row.writeNull, [&] { stream_->Write(nullptr, 1); });
    ExpectRaises<CInvalidParameterException>(row.seekNegative, [&] { stream_->Seek(-1); });
}

TEST_P(ResourceOs, Bound) {
    const TClassCase& row = GetParam();
    SetBytes(*resource_, Ramp(10));
    Bind();
    EXPECT_EQ(stream_->GetCapabilities(), 11U);
    EXPECT_EQ(stream_->GetLength(), 10);
    EXPECT_EQ(stream_->Tell(), 0);
    ExpectRaises<COperationNotSupportedException>(row.flush, [&] { stream_->Flush(); });
    ExpectRaises<CNullPtrException>(row.writeNull, [&] { stream_->Write(nullptr, 1); });
    stream_->Seek(4);
    ExpectRaises<CInvalidParameterException>(row.seekNegative, [&] { stream_->Seek(-1); });
    ExpectRaises<CInvalidParameterException>(row.seekNegative, [&] { stream_->Seek(INT64_MIN); });
    EXPECT_EQ(stream_->Tell(), 4);
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_P(ResourceOs, FormatGoesToTheResource) {
    Bind();
    stream_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    EXPECT_EQ(resource_->GetFormat()->size, 32U);
    resource_->LockFormat();
    ExpectRaises<CDataFormatException>(resourcefailures::kFormatLocked,
                                       [&] { stream_->SetFormat(&GetEmptyFormat()); });
    ExpectRaises<CNullPtrException>(resourcefailures::kFormatIsNull, [&] { stream_->SetFormat(nullptr); });
}

TEST_P(ResourceOs, FillsAnEmptyResource) {
    Bind();
    Write({1, 2, 3});
    EXPECT_EQ(stream_->Tell(), 3);
    EXPECT_EQ(stream_->GetLength(), 3);
    Write({4});
    Write({});
    Write({5, 6});
    EXPECT_EQ(BytesOf(*resource_), (TBytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(stream_->Tell(), 6);
    EXPECT_EQ(resource_->GetModificationCount(), 3U);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_P(ResourceOs, WritesOfNothingChangeNothing) {
    Bind();
    stream_->Seek(100);
    stream_->Write(nullptr, 0);
    stream_->Write(&byte_, 0);
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
    EXPECT_EQ(stream_->Tell(), 100);
}

TEST_P(ResourceOs, SmallWritesAddUp) {
    Bind();
    TBytes expected;
    for (std::size_t i = 0; i < 3000; ++i) {
        const TBytes piece(i % 7, static_cast<std::uint8_t>(i));
        Write(piece);
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(BytesOf(*resource_), expected);
}

TEST_P(ResourceOs, PlaceOfAWrite) {
    SetBytes(*resource_, Ramp(6));
    Bind();
    stream_->Seek(2);
    Write({90, 91});
    if (GetParam().appends) {
        EXPECT_EQ(BytesOf(*resource_), (TBytes{0, 1, 2, 3, 4, 5, 90, 91}));
        EXPECT_EQ(stream_->Tell(), 8);
    } else {
        EXPECT_EQ(BytesOf(*resource_), (TBytes{0, 1, 90, 91, 4, 5}));
        EXPECT_EQ(stream_->Tell(), 4);
    }
}

TEST_P(ResourceOs, WriteBeyondTheEnd) {
    SetBytes(*resource_, Ramp(3));
    Bind();
    stream_->Seek(6);
    EXPECT_EQ(stream_->GetLength(), 3);
    Write({90});
    EXPECT_EQ(BytesOf(*resource_),
              GetParam().appends ? (TBytes{0, 1, 2, 90}) : (TBytes{0, 1, 2, 0, 0, 0, 90}));
}

TEST_P(ResourceOs, GapIsFilledWhereBytesStoodBefore) {
    Bind();
    Write(TBytes(100, 0xFF));
    SetBytes(*resource_, {1});
    stream_->Seek(5);
    Write({2});
    EXPECT_EQ(BytesOf(*resource_), GetParam().appends ? (TBytes{1, 2}) : (TBytes{1, 0, 0, 0, 0, 2}));
}

TEST_P(ResourceOs, SourceMayBeTheResourceItself) {
    SetBytes(*resource_, Ramp(64));
    Bind();
    stream_->Seek(64);
    for (int i = 0; i < 4; ++i) {
        const void* const data = resource_->Lock(LOCK_MODE_READ);
        stream_->Write(data, resource_->GetSize());
        resource_->Unlock();
    }
    TBytes expected;
    for (int i = 0; i < 16; ++i) {
        const TBytes piece = Ramp(64);
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(BytesOf(*resource_), expected);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_P(ResourceOs, SizesThatNoMemoryHolds) {
    SetBytes(*resource_, Ramp(10));
    Bind();
    for (const std::uint64_t size :
         {(std::uint64_t{1} << 32) - 9, std::uint64_t{1} << 32, ~std::uint64_t{0}, std::uint64_t{1} << 63}) {
        stream_->Seek(10);
        ExpectRaises<COutOfMemoryException>(GetParam().writeOutOfMemory,
                                            [&] { stream_->Write(&byte_, size); });
        EXPECT_EQ(BytesOf(*resource_), Ramp(10));
        EXPECT_EQ(stream_->Tell(), 10);
        EXPECT_TRUE(IsUnlocked(*resource_));
    }
}

TEST_P(ResourceOs, ResourceWithoutDataBeginsAnew) {
    resource_->SetSize(std::uint64_t{1} << 40);
    Bind();
    Write({1, 2});
    EXPECT_EQ(resource_->GetSize(), 2U);
    EXPECT_EQ(BytesOf(*resource_), (TBytes{1, 2}));
}

TEST_P(ResourceOs, HoldsOneReference) {
    Bind();
    Bind();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 2);
    stream_->SetResource(nullptr);
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    EXPECT_EQ(stream_->GetCapabilities(), 0U);
    Bind();
    stream_.Reset();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
}

TEST_P(ResourceOs, CloseUnbindsAndGoesToTheStart) {
    Bind();
    Write({1, 2});
    stream_->SetResource(nullptr);
    Bind();
    EXPECT_EQ(stream_->Tell(), 2) << "binding keeps the position";
    stream_->Close();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    Bind();
    EXPECT_EQ(stream_->Tell(), 0);
}

// Resources that are not the library's.

template <class TResource> void WriteInto(IResourceOs& stream, bool appends) {
    const auto foreign = Make<TResource>();
    foreign->bytes = Ramp(4);
    stream.SetResource(foreign.Get());
    const TBytes bytes{90, 91};
    stream.Write(bytes.data(), 1);
    EXPECT_EQ(foreign->bytes, appends ? (TBytes{0, 1, 2, 3, 90}) : (TBytes{90, 1, 2, 3}));
    EXPECT_EQ(foreign->sizeChanges, appends ? 1 : 0);
    EXPECT_TRUE(foreign->locks.empty());
    EXPECT_EQ(foreign->locksTaken.front(), LOCK_MODE_WRITE);
    stream.Seek(7);
    stream.Write(bytes.data(), 2);
    EXPECT_EQ(foreign->bytes,
              appends ? (TBytes{0, 1, 2, 3, 90, 90, 91}) : (TBytes{90, 1, 2, 3, 0, 0, 0, 90, 91}));
    EXPECT_TRUE(foreign->locks.empty());

    // From itself, which moves.
    const TBytes before = foreign->bytes;
    stream.Seek(static_cast<std::int64_t>(before.size()));
    stream.Write(foreign->bytes.data(), before.size());
    TBytes twice = before;
    twice.insert(twice.end(), before.begin(), before.end());
    EXPECT_EQ(foreign->bytes, twice);

    stream.SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    EXPECT_EQ(foreign->GetFormat()->size, 32U);
    stream.Close();
}

TEST_P(ResourceOs, ForeignResource) {
    WriteInto<CForeignResource>(*stream_, GetParam().appends);
}

TEST_P(ResourceOs, ResourceClassOfAnApplication) {
    WriteInto<CReplacedResource>(*stream_, GetParam().appends);
}

TEST_P(ResourceOs, ForeignResourceThatCannotGrowKeepsItsBytes) {
    const auto foreign = Make<CForeignResource>();
    foreign->bytes = Ramp(4);
    foreign->maximumSize = 5;
    stream_->SetResource(foreign.Get());
    stream_->Seek(4);
    const TBytes bytes{90, 91};
    ExpectRaises<COutOfMemoryException>(GetParam().writeOutOfMemory,
                                        [&] { stream_->Write(bytes.data(), 2); });
    EXPECT_EQ(foreign->bytes, Ramp(4));
    EXPECT_EQ(stream_->Tell(), 4);
    EXPECT_TRUE(foreign->locks.empty());
    ExpectRaises<COutOfMemoryException>(GetParam().writeOutOfMemory,
                                        [&] { stream_->Write(bytes.data(), std::uint64_t{1} << 32); });
    ExpectRaises<COutOfMemoryException>(GetParam().writeOutOfMemory,
                                        [&] { stream_->Write(bytes.data(), ~std::uint64_t{0}); });
    EXPECT_EQ(foreign->bytes, Ramp(4));
    EXPECT_TRUE(foreign->locks.empty());

    // With nothing to keep.
    foreign->SetSize(0);
    foreign->maximumSize = 0;
    stream_->Seek(0);
    ExpectRaises<COutOfMemoryException>(GetParam().writeOutOfMemory, [&] { Write({1}); });
    EXPECT_EQ(foreign->GetSize(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Rows, ResourceOs, testing::ValuesIn(kClasses),
                         [](const auto& row) { return row.param.name; });

class ResourceOsPlaces : public CResourceTest {};

TEST_F(ResourceOsPlaces, PositionsBeyondAllMemoryAreRefusedByTheWrite) {
    const auto stream = CreateAs<IResourceOs>(classid::CResourceOs);
    stream->SetResource(resource_.Get());
    const std::uint8_t byte = 1;
    for (const std::int64_t position : {(std::int64_t{1} << 32) - 1, std::int64_t{1} << 32, INT64_MAX}) {
        stream->Seek(position);
        EXPECT_EQ(stream->Tell(), position);
        ExpectRaises<COutOfMemoryException>(kClasses[0].writeOutOfMemory, [&] { stream->Write(&byte, 1); });
        EXPECT_EQ(stream->Tell(), position);
        EXPECT_EQ(resource_->GetSize(), 0U);
    }
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceOsPlaces, SeveralStreamsAppendInTurn) {
    const auto first = CreateAs<IAppendingRos>(classid::CAppendingRos);
    const auto second = CreateAs<IAppendingRos>(classid::CAppendingRos);
    first->SetResource(resource_.Get());
    second->SetResource(resource_.Get());
    const TBytes bytes = Ramp(4);
    first->Write(bytes.data(), 1);
    second->Write(bytes.data() + 1, 2);
    first->Write(bytes.data() + 3, 1);
    EXPECT_EQ(BytesOf(*resource_), bytes);
    EXPECT_EQ(first->Tell(), 4);
    EXPECT_EQ(second->Tell(), 3);
}

} // namespace
} // namespace vorlund::test
