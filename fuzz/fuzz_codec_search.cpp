/// \file
/// The search for a chain of decoders, with several of them: which formats each takes and makes, which of
/// them refuse, what is wanted, and whether a store is asked or a selector, are drawn at random. A model says
/// which chain is found and in which order the decoders are tried.
#include "WavFuzz.h"
#include "support/TestDecoders.h"

#include <vorlund/DataFormat.h>
#include <vorlund/StreamSelector.h>

#include <string>
#include <vector>

using namespace vorlund;
using namespace vorlund::fuzz;
using test::CTestDecoders;
using test::TestFormat;

namespace {

/// Enough for a chain that is too long, and some besides.
constexpr std::size_t kMaxDecoders = 14;
constexpr int kMaxChain = 9;
/// Each is connected once at most, so there is one round for each and one more.
constexpr std::size_t kMaxTries = kMaxDecoders * (kMaxDecoders + 1);

struct TPlan {
    unsigned int accepts = 0;
    unsigned int produces = 0;
    /// Refuses when it is connected, and stays so.
    bool refusesConnected = false;
    /// Does not say that it is connected.
    bool hidesStream = false;
};

/// The last numbers are media formats.
constexpr CId kMediaFormats[] = {TDataFormat_AudioPcm::FormatId, TDataFormat_ImageRgb::FormatId,
                                 OTHER_MEDIA_FORMAT_ID};
constexpr unsigned int kFirstMedia = 13;

/// 0 is the null identifier.
CId FormatOf(unsigned int number) {
    if (number >= kFirstMedia) return kMediaFormats[number - kFirstMedia];
    return number == 0 ? CId::Null() : TestFormat(number);
}

/// What the search does, written down anew.
class CModel {
public:
    CModel(const std::vector<TPlan>& plans, unsigned int wanted)
        : plans_(plans), wanted_(wanted), isConnected_(plans.size()) {}

    /// The formats of the chain's members, or nothing; `depth` decoders are in it already.
    bool FindWanted(unsigned int current, const std::string& name, int depth) {
        if (current == wanted_) return true;
        if (depth == kMaxChain) return false;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (Connect(i, current, name) && FindWanted(plans_[i].produces, std::to_string(i), depth + 1))
                return true;
        }
        return false;
    }

    void FindLongest(unsigned int current, std::string name) {
        for (std::size_t i = 0; i < plans_.size();) {
            if (Connect(i, current, name)) {
                current = plans_[i].produces;
                name = std::to_string(i);
                i = 0;
            } else {
                ++i;
            }
        }
    }

    const test::TCallLog& GetEvents() const { return events_; }

private:
    bool Connect(std::size_t index, unsigned int current, const std::string& name) {
        if (isConnected_[index]) return false;
        const TPlan& plan = plans_[index];
        // Media data are not decoded to other media data.
        if (plan.produces >= kFirstMedia && wanted_ >= kFirstMedia && plan.produces != wanted_) return false;
        const std::string number = std::to_string(index);
        if (plan.accepts != 0 && plan.accepts != current) {
            events_.push_back("refuse " + number);
            return false;
        }
        // One that refuses and then hides its stream is tried again.
        isConnected_[index] = !(plan.refusesConnected && plan.hidesStream);
        if (plan.refusesConnected) {
            events_.push_back("refuse " + number);
            return false;
        }
        events_.push_back("connect " + number + " to " + name);
        return true;
    }

    const std::vector<TPlan>& plans_;
    const unsigned int wanted_;
    std::vector<bool> isConnected_;
    test::TCallLog events_;
};

/// What the decoders did between their creation and their end.
test::TCallLog TakeTries() {
    test::TCallLog tries;
    for (std::string& event : CTestDecoders::events) {
        if (event.starts_with("connect") || event.starts_with("refuse")) tries.push_back(std::move(event));
    }
    CTestDecoders::events.clear();
    return tries;
}

/// The classes stay registered: the class store would keep every further registration too.
void RegisterClasses() {
    static const bool isDone = [] {
        CTestDecoders decoders;
        CCodecClassStore store;
        store.Init();
        for (std::size_t i = 0; i < kMaxDecoders; ++i) decoders.Register(store, i, {});
        store.Close();
        return true;
    }();
    Check(isDone);
}

/// How often a decoder of this run was tried. A search that does not end is ended by it.
std::size_t tries = 0;

void AddDecoder(CCodecClassStore& store, std::size_t index, const TPlan& plan) {
    store.RegisterDecoder({test::TestDecoderId(index), FormatOf(plan.accepts), FormatOf(plan.produces)});
    CTestDecoders::plans[index] = {.accepts = FormatOf(plan.accepts),
                                   .produces = FormatOf(plan.produces),
                                   .onConnect = [](IInputStream*) { Check(++tries <= kMaxTries); },
                                   .refusesConnected = plan.refusesConnected,
                                   .hidesStream = plan.hidesStream};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CInput input(data, size);
    const unsigned int first = input.Byte();
    const bool isSelected = first >= 128;
    const unsigned int begin = 1 + first % 128 % 15;
    const unsigned int wanted = input.Byte() % 16;
    std::vector<TPlan> plans;
    tries = 0;
    RegisterClasses();
    const CTestDecoders decoders;
    // Selectors ask the library's store. Emptied each time, so it has lost the decoder of the library too.
    CCodecClassStore ownStore;
    CCodecClassStore& store = isSelected ? v.GetCodecClassStore() : ownStore;
    store.Close();
    store.Init();
    while (!input.IsEmpty() && plans.size() < kMaxDecoders) {
        // A byte says what it takes and how, one what it makes.
        const std::uint8_t takes = input.Byte();
        plans.push_back({takes % 16u, 1 + input.Byte() % 15u, (takes & 48) == 48, (takes & 64) != 0});
        AddDecoder(store, plans.size() - 1, plans.back());
    }
    const auto stream = test::Make<test::CMemoryInputStream>();
    stream->format.Set(test::HeadOnly(FormatOf(begin)));
    CModel model(plans, wanted);
    {
        CRefPtr<IInputStream> found;
        try {
            found = CRefPtr<IInputStream>::Adopt(
                isSelected ? CInputStreamSelector(stream.Get()).DecodeStream(FormatOf(wanted))
                           : store.DecodeStream(stream.Get(), FormatOf(wanted)));
        } catch (const CDataFormatException&) {
        }
        if (wanted == 0) {
            model.FindLongest(begin, "source");
            Check(static_cast<bool>(found));
        } else {
            Check(static_cast<bool>(found) == model.FindWanted(begin, "source", 0));
            if (found) Check(found->GetFormat().id == FormatOf(wanted));
        }
        Check(TakeTries() == model.GetEvents());
    }
    // Every candidate has gone, and nobody holds the stream.
    stream->AddRef();
    Check(stream->Release() == 1);
    ownStore.Close();
    return 0;
}
