/// \file
/// A filter and streams below it that use it, or end it, while it uses them.
#pragma once

#include "support/Streams.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamFilter.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

namespace vorlund::test {

/// The moments at which a stream may act: before and after each call on it has done its work. One of them is
/// chosen, or all.
class CReentry {
public:
    static constexpr int kEvery = -1;
    /// How deep actions are nested when every moment has one.
    static constexpr int kMaxDepth = 2;

    CReentry(int moment, std::function<void()> act) : moment_(moment), act_(std::move(act)) {}
    CReentry(const CReentry&) = delete;
    CReentry& operator=(const CReentry&) = delete;

    /// Between these the moments count.
    void Start() { isArmed_ = true; }
    void Stop() { isArmed_ = false; }

    /// True once the chosen moment has come.
    bool HasActed() const { return hasActed_; }

    void OnMoment() {
        if (!isArmed_ || depth_ >= (moment_ == kEvery ? kMaxDepth : 1)) return;
        if (moment_ != kEvery && next_++ != moment_) return;
        hasActed_ = true;
        ++depth_;
        try {
            act_();
        } catch (const CException&) {
            // The stream keeps to itself what its call on the filter raised.
        }
        --depth_;
    }

private:
    const int moment_;
    const std::function<void()> act_;
    bool isArmed_ = false;
    bool hasActed_ = false;
    int next_ = 0;
    int depth_ = 0;
};

/// What a stream below a filter has for itself: a plain value of the test that is never destroyed by
/// `Release`, and that acts at the moments of `reentry`.
template <class TInterface> class CReentrantBase : public TInterface {
public:
    int references = 1;

    int AddRef() override {
        return During([this] { return ++references; });
    }
    int Release() override {
        return During([this] { return --references; });
    }
    IObject* QueryInterface(const CId& id) override {
        return During([&]() -> IObject* {
            if (!IsInChain<TInterface>(id)) return nullptr;
            ++references;
            return this;
        });
    }
    void AddListener(IObjectListener*) override {}
    void RemoveListener(IObjectListener*) override {}
    int GetObjectNumber() override { return 0; }
    CId GetClassId() override { return CId::Null(); }

    void Close() override {
        During([] {});
    }
    std::uint32_t GetCapabilities() override {
        return During([] { return std::uint32_t{15}; });
    }
    std::int64_t GetLength() override {
        return During([this] { return static_cast<std::int64_t>(bytes.size()); });
    }
    void Flush() override {
        During([] {});
    }
    void Seek(std::int64_t target) override {
        During([&] { position = static_cast<std::uint64_t>(target); });
    }
    std::int64_t Tell() override {
        return During([this] { return static_cast<std::int64_t>(position); });
    }

    TBytes bytes;
    std::uint64_t position = 0;

protected:
    explicit CReentrantBase(CReentry& reentry) : reentry_(reentry) {}
    ~CReentrantBase() = default;

    /// One call: `work` between two moments.
    template <class TWork> auto During(TWork work) {
        struct TEnd {
            ~TEnd() { reentry.OnMoment(); }
            CReentry& reentry;
        };
        reentry_.OnMoment();
        const TEnd end{reentry_};
        return work();
    }

private:
    CReentry& reentry_;
};

class CReentrantInput final : public CReentrantBase<IInputStream> {
public:
    explicit CReentrantInput(CReentry& reentry) : CReentrantBase(reentry) {}

    CFormatCopy format;

    bool Eof() override {
        return During([this] { return position >= bytes.size(); });
    }
    const TDataFormat& GetFormat() override {
        During([] {});
        return format.Get();
    }
    void Read(IMediaSample*) override {
        During([] {});
    }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        return During([&] {
            const std::uint64_t count =
                position < bytes.size() ? std::min<std::uint64_t>(size, bytes.size() - position) : 0;
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(count ? position : 0), count,
                        static_cast<std::uint8_t*>(buffer));
            position += count;
            return count;
        });
    }
    bool SupportsMediaSamples(std::uint32_t) override { return false; }
    void Skip(std::uint64_t count) override {
        During([&] { position += count; });
    }
};

class CReentrantOutput final : public CReentrantBase<IOutputStream> {
public:
    explicit CReentrantOutput(CReentry& reentry) : CReentrantBase(reentry) {}

    void SetFormat(const TDataFormat*) override {
        During([] {});
    }
    void Write(const void* buffer, std::uint64_t size) override {
        During([&] {
            const auto* const first = static_cast<const std::uint8_t*>(buffer);
            bytes.insert(bytes.end(), first, first + size);
        });
    }
};

/// A filter, the stream that it is connected to and another one. The filter's one reference is the scene's
/// until an action gives it up.
template <class TFilter, class TStream> class CReentrantScene {
public:
    using TAct = std::function<void(CReentrantScene&)>;

    CReentrantScene(CRefPtr<TFilter> newFilter, int moment, const TAct& act)
        : reentry(moment,
                  [this, act] {
                      if (filter) act(*this);
                  }),
          filter(newFilter.Detach()) {}
    CReentrantScene(const CReentrantScene&) = delete;
    CReentrantScene& operator=(const CReentrantScene&) = delete;
    ~CReentrantScene() noexcept(false) { GiveUp(); }

    /// Releases the filter, once. It is used no more when that has returned, but while it ends.
    void GiveUp() {
        if (!filter || std::exchange(isGivenUp_, true)) return;
        filter->Release();
        filter = nullptr;
    }

    CReentry reentry;
    TStream stream{reentry};
    TStream other{reentry};
    /// Null when it has been given up.
    TFilter* filter;

private:
    bool isGivenUp_ = false;
};

} // namespace vorlund::test
