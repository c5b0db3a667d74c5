// Resources: filters.
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <vorlund/ClassStore.h>
#include <vorlund/StreamFilterImpl.h>

#include <functional>
#include <utility>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = resourcefailures::kResourceFile;
constexpr const wchar* kApplyFilter = VRL_L("vorlund::CResource::ApplyFilter");
constexpr TFailure kFilterIsNull{kApplyFilter, kFile, 76, VRL_L("filter is NULL")};
constexpr TFailure kNoInputStream{kApplyFilter, kFile, 81, VRL_L("Cannot create resource input stream")};
constexpr TFailure kFormatLocked{kApplyFilter, kFile, 108, VRL_L("Data format is locked")};
constexpr TFailure kRefused{VRL_L("test::CPlannedFilter"), VRL_L("tests/resource/ResourceFilter_test"), 1,
                            VRL_L("Refused")};

[[noreturn]] void Refuse() {
    Raise<CIOException>(kRefused);
}

/// A filter that does what a test tells it; otherwise it hands on what it reads.
class CPlannedFilter : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId{0x7E57F117, 0x3A5C7E90, 0x2468ACE0, 0x52E50002};

    CFormatCopy format;
    /// How many bytes become of one.
    int copies = 1;
    std::uint64_t maximumRead = ~std::uint64_t{0};
    std::uint64_t exaggeration = 0;
    std::function<void()> onConnect = [] {};
    std::function<void()> onConnected = [] {};
    std::function<void()> onRead = [] {};
    std::function<void()> onGetFormat = [] {};
    std::function<void()> onDisconnect = [] {};

    void Connect(IInputStream* stream) override {
        onConnect();
        TLayer::Connect(stream);
        onConnected();
    }
    void Disconnect() override {
        TLayer::Disconnect();
        onDisconnect();
    }
    const TDataFormat& GetFormat() override {
        onGetFormat();
        return format.Get();
    }
    using TLayer::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        onRead();
        auto* const target = static_cast<std::uint8_t*>(buffer);
        std::uint64_t count = 0;
        while (count < size && count < maximumRead) {
            if (left_ == 0) {
                if (stream_->Read(&byte_, 1) == 0) break;
                left_ = copies;
                if (left_ == 0) continue;
            }
            target[count++] = byte_;
            --left_;
        }
        return count ? count + exaggeration : 0;
    }

private:
    std::uint8_t byte_ = 0;
    int left_ = 0;
    CLiveObject live_;
};

class ResourceFilter : public CResourceTest {
protected:
    ResourceFilter() {
        SetBytes(*resource_, Ramp(1000));
        resource_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
        filter_->format = TDataFormat_AudioPcm(0, 1, 8000);
    }
    ~ResourceFilter() noexcept override {}

    void ExpectUnchanged() {
        EXPECT_EQ(BytesOf(*resource_), Ramp(1000));
        EXPECT_EQ(std::memcmp(resource_->GetFormat(), &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO, 32),
                  0);
        EXPECT_EQ(resource_->GetModificationCount(), 1U);
        ExpectLetGo();
    }

    /// Nothing is held any more.
    void ExpectLetGo() {
        EXPECT_TRUE(IsUnlocked(*resource_));
        EXPECT_EQ(CRefPtr<IInputStream>::Adopt(filter_->GetInputStream()).Get(), nullptr);
        EXPECT_EQ(ReferencesOf(filter_.Get()), 1);
        EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    }

    CRefPtr<CPlannedFilter> filter_ = Make<CPlannedFilter>();
};

TEST_F(ResourceFilter, TakesDataAndFormat) {
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(1000));
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &filter_->format.Get(), 32), 0);
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
    ExpectLetGo();
}

TEST_F(ResourceFilter, MayChangeTheSize) {
    for (const int copies : {2, 50, 0, 1, 10}) {
        SetBytes(*resource_, Ramp(1000));
        filter_->copies = copies;
        resource_->ApplyFilter(filter_.Get());
        ASSERT_EQ(resource_->GetSize(), 1000U * static_cast<unsigned int>(copies));
        const TBytes bytes = BytesOf(*resource_);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            ASSERT_EQ(bytes[i], static_cast<std::uint8_t>(i / static_cast<std::size_t>(copies)));
    }
}

TEST_F(ResourceFilter, BigDataMayShrink) {
    SetBytes(*resource_, Ramp(100000));
    filter_->copies = 0;
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(BytesOf(*resource_), TBytes());
}

TEST_F(ResourceFilter, ShortReadsAddUp) {
    filter_->maximumRead = 7;
    filter_->copies = 9;
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(resource_->GetSize(), 9000U);
}

TEST_F(ResourceFilter, ExaggeratedCountIsCut) {
    filter_->exaggeration = std::uint64_t{1} << 50;
    resource_->ApplyFilter(filter_.Get());
    const TBytes bytes = BytesOf(*resource_);
    ASSERT_GE(bytes.size(), 1000U);
    EXPECT_EQ(TBytes(bytes.begin(), bytes.begin() + 1000), Ramp(1000));
    ExpectLetGo();
}

TEST_F(ResourceFilter, EmptyResourceMayBeFiltered) {
    resource_->SetSize(0);
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
}

TEST_F(ResourceFilter, ReadsTheResourceInItsFormat) {
    filter_->onConnected = [&] {
        const auto stream = CRefPtr<IInputStream>::Adopt(filter_->GetInputStream());
        EXPECT_EQ(stream->GetClassId(), classid::CResourceIs);
        EXPECT_EQ(stream->GetLength(), 1000);
        EXPECT_EQ(&stream->GetFormat(), resource_->GetFormat());
    };
    resource_->ApplyFilter(filter_.Get());
}

TEST_F(ResourceFilter, TheLibrarysFilterHasNoFormat) {
    const auto plain = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    resource_->ApplyFilter(plain.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(1000));
    EXPECT_EQ(resource_->GetFormat()->id, CId::Null());
}

TEST_F(ResourceFilter, FormerConnectionEnds) {
    const auto former = Make<CMemoryInputStream>();
    filter_->Connect(former.Get());
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(ReferencesOf(former.Get()), 1);
    EXPECT_EQ(BytesOf(*resource_), Ramp(1000));
    ExpectLetGo();
}

TEST_F(ResourceFilter, NullIsRefused) {
    ExpectRaises<CNullPtrException>(kFilterIsNull, [&] { resource_->ApplyFilter(nullptr); });
    ExpectUnchanged();
}

TEST_F(ResourceFilter, LockedFormatMustStay) {
    resource_->LockFormat();
    filter_->format = TDataFormat_ImageRgb();
    filter_->copies = 2;
    ExpectRaises<CDataFormatException>(kFormatLocked, [&] { resource_->ApplyFilter(filter_.Get()); });
    ExpectUnchanged();
}

TEST_F(ResourceFilter, LockedFormatMayTakeAnotherRecordOfItsKind) {
    resource_->LockFormat();
    resource_->ApplyFilter(filter_.Get());
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &filter_->format.Get(), 32), 0);
}

TEST_F(ResourceFilter, WhateverRaisesLeavesAllAsItWas) {
    using TPlace = std::function<void()> CPlannedFilter::*;
    const std::pair<const char*, TPlace> places[] = {{"Connect", &CPlannedFilter::onConnect},
                                                     {"Connect, connected", &CPlannedFilter::onConnected},
                                                     {"Read", &CPlannedFilter::onRead},
                                                     {"GetFormat", &CPlannedFilter::onGetFormat}};
    for (const auto& [name, place] : places) {
        SCOPED_TRACE(name);
        filter_.Get()->*place = &Refuse;
        ExpectRaises<CIOException>(kRefused, [&] { resource_->ApplyFilter(filter_.Get()); });
        filter_.Get()->*place = [] {};
        ExpectUnchanged();
    }
}

TEST_F(ResourceFilter, RaisingInTheMiddle) {
    int reads = 0;
    filter_->maximumRead = 10;
    filter_->onRead = [&] {
        if (++reads == 50) Refuse();
    };
    ExpectRaises<CIOException>(kRefused, [&] { resource_->ApplyFilter(filter_.Get()); });
    ExpectUnchanged();
}

TEST_F(ResourceFilter, DisconnectThatRaises) {
    int calls = 0;
    filter_->onDisconnect = [&] {
        // The first comes from Connect itself.
        if (++calls == 2) Refuse();
    };
    ExpectRaises<CIOException>(kRefused, [&] { resource_->ApplyFilter(filter_.Get()); });
    ExpectUnchanged();

    // Beside another exception, that one counts.
    calls = 0;
    filter_->onGetFormat = [] { throw 42; };
    EXPECT_THROW(resource_->ApplyFilter(filter_.Get()), int);
    filter_->onGetFormat = [] {};
    ExpectUnchanged();
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(ResourceFilter, StreamClassThatYieldsNoStreamIsRefused) {
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CResourceIs, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(kNoInputStream, [&] { resource_->ApplyFilter(filter_.Get()); });
    ExpectUnchanged();
}

} // namespace
} // namespace vorlund::test
