/// \file
/// Runs of operations on a resource and its streams against a model: a vector of bytes and three positions.
/// The resource is the library's own or one of an application.
#include "ModelInput.h"
#include "WavFuzz.h"
#include "data/resource/ForeignResource.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/StreamSelector.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

/// Resources grow no further: what a run costs stays small.
constexpr std::size_t kEnough = 20000;

class CRun {
public:
    CRun(IResource* resource, bool isOwn) : resource_(resource), isOwn_(isOwn) {}

    void Step(CModelInput& input) {
        switch (input.Byte() % 14) {
        case 0:
            Bind(input);
            break;
        case 1:
            is_->SetResource(nullptr);
            isBound_ = false;
            break;
        case 2:
        case 3:
            Read(input);
            break;
        case 4:
            SeekIs(input.Position());
            break;
        case 5:
            Skip(input);
            break;
        case 6:
        case 7:
            Write(input);
            break;
        case 8:
            SeekOs(input.Position());
            break;
        case 9:
        case 10:
            Append(input);
            break;
        case 11:
            SetSize(input);
            break;
        case 12:
            if (isOwn_) Load(input);
            break;
        case 13:
            if (isOwn_) Filter();
            break;
        }
        CheckState();
    }

private:
    void Bind(CModelInput& input) {
        if (input.Byte() % 2) {
            is_->Close();
            readAt_ = 0;
        }
        is_->SetResource(resource_);
        isBound_ = true;
    }

    void Read(CModelInput& input) {
        const std::size_t size = input.Number();
        TBytes bytes(size + 1, 0xEE);
        std::uint64_t count = 0;
        const TExceptionType raised = TypeOf([&] { count = is_->Read(bytes.data(), size); });
        if (!isBound_) {
            Check(raised == EXCEPTION_TYPE_IO);
            return;
        }
        Check(raised == EXCEPTION_TYPE_GENERIC);
        const std::uint64_t left = readAt_ < model_.size() ? model_.size() - readAt_ : 0;
        Check(count == std::min<std::uint64_t>(size, left));
        if (count > 0)
            Check(std::memcmp(bytes.data(), model_.data() + readAt_, static_cast<std::size_t>(count)) == 0);
        Check(std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(count), bytes.end(),
                          [](auto byte) { return byte == 0xEE; }));
        readAt_ += count;
    }

    void SeekIs(std::int64_t position) {
        const TExceptionType raised = TypeOf([&] { is_->Seek(position); });
        Check(raised == (isBound_ ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED));
        if (isBound_) readAt_ = std::min<std::uint64_t>(static_cast<std::uint64_t>(position), model_.size());
    }

    void Skip(CModelInput& input) {
        const auto count = static_cast<std::uint64_t>(input.Position());
        const TExceptionType raised = TypeOf([&] { is_->Skip(count); });
        Check(raised == (isBound_ ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_IO));
        if (isBound_ && readAt_ < model_.size())
            readAt_ += std::min<std::uint64_t>(count, model_.size() - readAt_);
    }

    void Write(CModelInput& input) {
        TBytes bytes = input.Bytes(input.Number());
        if (model_.size() > kEnough) bytes.clear();
        const TExceptionType raised = TypeOf([&] { os_->Write(bytes.data(), bytes.size()); });
        // Far positions find no memory; what a few writes come to always does.
        const bool isFar = writeAt_ > 100000 && !bytes.empty();
        Check(raised == (isFar ? EXCEPTION_TYPE_OUT_OF_MEMORY : EXCEPTION_TYPE_GENERIC));
        if (isFar || bytes.empty()) return;
        Put(static_cast<std::size_t>(writeAt_), bytes);
        writeAt_ += bytes.size();
    }

    void SeekOs(std::int64_t position) {
        const TExceptionType raised = TypeOf([&] { os_->Seek(position); });
        Check(raised == (position < 0 ? EXCEPTION_TYPE_INVALID_PARAMETER : EXCEPTION_TYPE_GENERIC));
        if (position >= 0) writeAt_ = static_cast<std::uint64_t>(position);
    }

    void Append(CModelInput& input) {
        TBytes bytes = input.Bytes(input.Number());
        if (model_.size() > kEnough) bytes.clear();
        if (input.Byte() % 4 == 0 && !model_.empty() && model_.size() < 10000) {
            // From the resource itself.
            const void* const data = resource_->Lock(LOCK_MODE_READ);
            ros_->Write(data, model_.size());
            resource_->Unlock();
            bytes = model_;
        } else {
            ros_->Write(bytes.data(), bytes.size());
        }
        Put(model_.size(), bytes);
        if (!bytes.empty()) Check(ros_->Tell() == static_cast<std::int64_t>(model_.size()));
    }

    void SetSize(CModelInput& input) {
        const TBytes bytes = input.Bytes(input.Number());
        resource_->SetSize(bytes.size());
        void* const data = resource_->Lock(LOCK_MODE_WRITE);
        Check((data != nullptr) == !bytes.empty());
        if (data) std::memcpy(data, bytes.data(), bytes.size());
        resource_->Unlock();
        model_ = bytes;
    }

    void Load(CModelInput& input) {
        const auto source = test::Make<test::CFaultyInputStream>();
        source->bytes = input.Bytes(input.Number());
        const std::uint8_t how = input.Byte();
        const auto length = static_cast<std::int64_t>(source->bytes.size());
        if (how & 1) source->maximumRead = 1 + input.Number();
        if (how & 2) source->exaggeration = input.Number();
        if (how & 4) source->claimedLength = input.Position();
        if (how & 8) source->failAt = input.Position();
        const std::int64_t claimed = source->claimedLength.value_or(length);
        // Such an allocation succeeds or fails by the state of the machine.
        if (claimed > 100000 && claimed < std::int64_t{1} << 32) return;
        const TExceptionType raised = TypeOf([&] { resource_->Load(source.Get()); });
        const TBytes now = Get();
        if (raised != EXCEPTION_TYPE_GENERIC) {
            Check(raised == EXCEPTION_TYPE_IO && source->failAt && now.empty());
        } else if (source->exaggeration == 0 && !source->failAt) {
            const bool isWhole = claimed > 0 && claimed <= length;
            Check(now == (isWhole ? TBytes(source->bytes.begin(),
                                           source->bytes.begin() + static_cast<std::ptrdiff_t>(claimed))
                                  : TBytes()));
        } else {
            // The stream claims more than it delivers: the length is the claimed one, or nothing is kept.
            Check(now.empty() || static_cast<std::int64_t>(now.size()) == claimed);
        }
        model_ = now;
    }

    void Filter() {
        const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
        resource_->ApplyFilter(filter.Get());
    }

    void Put(std::size_t position, const TBytes& bytes) {
        if (bytes.empty()) return;
        if (model_.size() < position + bytes.size()) model_.resize(position + bytes.size());
        std::copy(bytes.begin(), bytes.end(), model_.begin() + static_cast<std::ptrdiff_t>(position));
    }

    TBytes Get() {
        const auto* const data = static_cast<const std::uint8_t*>(resource_->Lock(LOCK_MODE_READ));
        TBytes bytes;
        if (data) bytes.assign(data, data + resource_->GetSize());
        resource_->Unlock();
        return bytes;
    }

    void CheckState() {
        Check(resource_->GetSize() == model_.size());
        Check(Get() == model_);
        Check(os_->Tell() == static_cast<std::int64_t>(writeAt_));
        Check(ros_->GetLength() == static_cast<std::int64_t>(model_.size()));
        Check(is_->Eof() == (!isBound_ || readAt_ >= model_.size()));
        if (isBound_) Check(is_->Tell() == static_cast<std::int64_t>(readAt_));
    }

    template <class TStream> static CRefPtr<TStream> NewStream(const CId& id, IResource* resource) {
        auto stream = CreateAs<TStream>(id);
        stream->SetResource(resource);
        return stream;
    }

    IResource* const resource_;
    const bool isOwn_;
    CRefPtr<IResourceIs> is_ = NewStream<IResourceIs>(classid::CResourceIs, nullptr);
    CRefPtr<IResourceOs> os_ = NewStream<IResourceOs>(classid::CResourceOs, resource_);
    CRefPtr<IAppendingRos> ros_ = NewStream<IAppendingRos>(classid::CAppendingRos, resource_);

    TBytes model_;
    bool isBound_ = false;
    std::uint64_t readAt_ = 0;
    std::uint64_t writeAt_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CModelInput input(data, size);
    const bool isOwn = input.Byte() % 4 != 0;
    auto resource =
        isOwn ? CreateAs<IResource>(classid::CResource)
              : CRefPtr<IResource>::Adopt(static_cast<IResource*>(NewObject<test::CForeignResource>()));
    {
        CRun run(resource.Get(), isOwn);
        for (int steps = 0; steps < 200 && !input.IsEmpty(); ++steps) run.Step(input);
    }
    Check(resource->AddRef() == 2);
    resource->Release();
    return 0;
}
