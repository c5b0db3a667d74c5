/// \file
/// A list and an enumerator whose members come back to them: each call on a member draws from the input what
/// it does, to any depth. Every reference is given back once, and what nobody comes back to does what a
/// vector does.
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/ObjectList.h>

#include <algorithm>
#include <cstddef>
#include <vector>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

constexpr std::size_t kMaxHeld = 6;
constexpr unsigned int kMaxListed = 24;
constexpr int kMaxDepth = 4;
constexpr int kMaxActions = 120;

constexpr TFailure kOnRequest{VRL_L("CMember::Release"), VRL_L("fuzz/fuzz_reentrant_lists"), 1,
                              VRL_L("on request")};

class CMember;

class CScene {
public:
    CScene(const std::uint8_t* data, std::size_t size) : input_(data, size) {}
    ~CScene();
    CScene(const CScene&) = delete;
    CScene& operator=(const CScene&) = delete;

    void Run();
    /// Called by the members in the middle of each call on them. True when the call shall raise.
    bool OnCall(CMember& member);

private:
    void Act(CMember* self);
    void ActOnList(IObjectList& list, CMember* self, unsigned int action);
    void ActOnEnumerator(unsigned int action);
    void Drain(IObjectEnumerator* enumerator);
    void CheckReferences();
    std::vector<IObject*> GetListed();
    void Hold();
    void GiveUp();
    CMember* Choose() { return held_[input_.Byte() % held_.size()]; }
    unsigned int ChooseIndex() { return input_.Byte() % (list_->GetObjectCount() + 1); }

    CInput input_;
    std::vector<CMember*> held_;
    CRefPtr<IObjectList> list_;
    CRefPtr<IPushObjectEnumerator> enumerator_;
    int depth_ = 0;
    int actions_ = 0;
    bool isMuted_ = false;
};

/// The scene of this run.
CScene* scene = nullptr;

class CMember final : public IObject {
public:
    static inline int alive = 0;
    /// References of the scene.
    int held = 1;

    CMember() { ++alive; }
    CMember(const CMember&) = delete;
    CMember& operator=(const CMember&) = delete;

    int AddRef() override {
        const int count = ++references_;
        scene->OnCall(*this);
        return count;
    }
    int Release() override {
        const bool raises = scene->OnCall(*this);
        const int count = --references_;
        Check(count >= 0);
        if (count == 0) delete this;
        if (raises) Raise<CIOException>(kOnRequest);
        return count;
    }
    IObject* QueryInterface(const CId& interfaceId) override {
        // It may give up its last reference in there.
        ++references_;
        const bool raises = scene->OnCall(*this);
        if (!raises && interfaceId == IObject::InterfaceId) return this;
        if (--references_ == 0) delete this;
        if (raises) Raise<CIOException>(kOnRequest);
        return nullptr;
    }
    void AddListener(IObjectListener*) override {}
    void RemoveListener(IObjectListener*) override {}
    int GetObjectNumber() override { return 0; }
    CId GetClassId() override { return CId::Null(); }

    int GetReferences() const { return references_; }

private:
    ~CMember() { --alive; }

    int references_ = 1;
};

CScene::~CScene() {
    scene = nullptr;
}

bool CScene::OnCall(CMember& member) {
    if (isMuted_ || depth_ >= kMaxDepth || actions_ >= kMaxActions || input_.IsEmpty()) return false;
    // Mostly nothing happens.
    const unsigned int byte = input_.Byte();
    if (byte < 96) return false;
    if (byte >= 250) return true;
    Act(&member);
    return false;
}

void CScene::Hold() {
    if (held_.size() < kMaxHeld) held_.push_back(new CMember);
}

void CScene::GiveUp() {
    if (held_.size() < 2) return;
    const auto place = held_.begin() + input_.Byte() % static_cast<int>(held_.size());
    CMember* const member = *place;
    held_.erase(place);
    --member->held;
    member->Release();
}

void CScene::Drain(IObjectEnumerator* enumerator) {
    const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
    while (const auto object = CRefPtr<IObject>::Adopt(owner->GetNext())) {
    }
    Check(!owner->HasNext());
}

/// One action, of the run itself or of `self`. What it raises ends here.
void CScene::Act(CMember* self) {
    ++actions_;
    ++depth_;
    try {
        const unsigned int action = input_.Byte() % 20;
        if (action == 0)
            Hold();
        else if (action == 1)
            GiveUp();
        else if (action < 7)
            ActOnEnumerator(action);
        else if (list_)
            ActOnList(*list_, self, action);
        else
            list_ = CreateAs<IObjectList>(classid::CObjectList);
    } catch (const CException&) {
    }
    --depth_;
}

void CScene::ActOnList(IObjectList& list, CMember* self, unsigned int action) {
    const bool isFull = list.GetObjectCount() >= kMaxListed;
    switch (action) {
    case 7:
    case 8:
        if (!isFull) list.AddObject(Choose());
        break;
    case 9:
        // Only the list holds it afterwards.
        if (!isFull) {
            auto* const member = new CMember;
            member->held = 0;
            const auto owner = CRefPtr<IObject>::Adopt(member);
            list.AddObject(member);
        }
        break;
    case 10:
        list.RemoveObject(ChooseIndex());
        break;
    case 11:
        list.RemoveObject(Choose());
        break;
    case 12:
        list.RemoveAllObjects();
        break;
    case 13:
        Drain(list.EnumerateObjects());
        break;
    case 14:
        Drain(list.EnumerateObjects(input_.Byte() % 4 ? IObject::InterfaceId : CId::Null()));
        break;
    case 15:
        list.GetObject(ChooseIndex())->Release();
        break;
    case 16: {
        CMember* const member = Choose();
        const auto place = static_cast<unsigned int>(list.FindObject(member));
        Check(place < list.GetObjectCount());
        break;
    }
    case 17:
        list_.Reset();
        break;
    case 18:
        if (self && !isFull) list.AddObject(self);
        break;
    default:
        if (self) list.RemoveObject(self);
    }
}

void CScene::ActOnEnumerator(unsigned int action) {
    if (!enumerator_) {
        enumerator_ = CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
        return;
    }
    switch (action) {
    case 2:
    case 3:
        enumerator_->Push(Choose());
        break;
    case 4:
        if (IObject* const object = enumerator_->GetNext()) object->Release();
        break;
    case 5:
        enumerator_->Reserve(input_.Byte());
        break;
    default:
        enumerator_.Reset();
    }
}

std::vector<IObject*> CScene::GetListed() {
    std::vector<IObject*> listed;
    for (unsigned int i = 0; list_ && i < list_->GetObjectCount(); ++i) {
        listed.push_back(list_->GetObject(i));
        listed.back()->Release();
    }
    return listed;
}

/// While nothing is under way, each reference is the scene's, or of a position of the list, or of the
/// enumerator.
void CScene::CheckReferences() {
    isMuted_ = true;
    const std::vector<IObject*> listed = GetListed();
    std::vector<IObject*> members = listed;
    members.insert(members.end(), held_.begin(), held_.end());
    for (IObject* const object : members) {
        const auto& member = static_cast<const CMember&>(*object);
        const auto known = member.held + static_cast<int>(std::count(listed.begin(), listed.end(), object));
        Check(enumerator_ ? member.GetReferences() >= known : member.GetReferences() == known);
    }
    isMuted_ = false;
}

void CScene::Run() {
    scene = this;
    list_ = CreateAs<IObjectList>(classid::CObjectList);
    for (std::size_t i = 0; i < 3; ++i) Hold();
    while (!input_.IsEmpty() && actions_ < kMaxActions) {
        Act(nullptr);
        CheckReferences();
    }
    // What is raised now ends the run all the same, and the rest is released.
    actions_ = kMaxActions;
    enumerator_.Reset();
    list_.Reset();
    for (CMember* const member : held_) {
        Check(member->GetReferences() == 1);
        member->Release();
    }
    Check(CMember::alive == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CScene(data, size).Run();
    return 0;
}
