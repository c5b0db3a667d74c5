#include <vorlund/Exception.h>
#include <vorlund/ObjectCounter.h>

#include <atomic>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/ObjectCounter");
constexpr TFailure kNotClosed{VRL_L("vorlund::CObjectCounter::~CObjectCounter"), kFile, 96,
                              VRL_L("Not closed")};
constexpr TFailure kCreateNotInitialized{VRL_L("vorlund::CObjectCounter::OnCreateObject"), kFile, 111,
                                         VRL_L("Not initialized")};
constexpr TFailure kDestroyNotInitialized{VRL_L("vorlund::CObjectCounter::OnDestroyObject"), kFile, 117,
                                          VRL_L("Not initialized")};

} // namespace

CObjectCounter::~CObjectCounter() noexcept(false) {
    if (!next_) return;
    Close();
    Raise<CBugException>(kNotClosed);
}

void CObjectCounter::Init() {
    int* const counter = new int(1);
    delete std::exchange(next_, counter);
}

void CObjectCounter::Close() {
    delete std::exchange(next_, nullptr);
}

// Kept for existing applications: the class is ignored, and one sequence of numbers serves all classes.
int CObjectCounter::OnCreateObject(const CId&) {
    if (!next_) Raise<CBugException>(kCreateNotInitialized);
    // Objects are made on several threads at once. After the greatest int the numbers go on with the least.
    return std::atomic_ref<int>(*next_).fetch_add(1, std::memory_order_relaxed);
}

void CObjectCounter::OnDestroyObject(const CId&) {
    if (!next_) Raise<CBugException>(kDestroyNotInitialized);
}

} // namespace vorlund
