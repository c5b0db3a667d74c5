/// \file
/// Lists, enumerators, texts as objects, and blobs, each beside what it must answer.
#pragma once

#include "ModelInput.h"
#include "WavFuzz.h"

#include <vorlund/Blob.h>
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/StringObject.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorlund::fuzz {

/// Two lists and an enumerator of a few texts.
class CModelObjects {
public:
    void Step(CModelInput& input) {
        TList& list = lists_[input.Byte() % lists_.size()];
        const std::size_t object = input.Byte() % kObjects;
        // Mostly a position that there is.
        const unsigned int place = input.Byte() % static_cast<unsigned int>(list.model.size() + 1);
        IObject* const chosen = texts_[object].Get();
        const auto first = std::find(list.model.begin(), list.model.end(), object);
        const auto expectedFind =
            first == list.model.end() ? EXCEPTION_TYPE_OBJECT_NOT_FOUND : EXCEPTION_TYPE_GENERIC;
        const auto expectedPlace =
            place == list.model.size() ? EXCEPTION_TYPE_BAD_INDEX : EXCEPTION_TYPE_GENERIC;
        switch (input.Byte() % 12) {
        case 0:
        case 1:
            list.list->AddObject(chosen);
            list.model.push_back(object);
            break;
        case 2:
            Check(TypeOf([&] { list.list->RemoveObject(place); }) == expectedPlace);
            if (place < list.model.size()) list.model.erase(list.model.begin() + place);
            break;
        case 3:
            Check(TypeOf([&] { list.list->RemoveObject(chosen); }) == expectedFind);
            if (first != list.model.end()) list.model.erase(first);
            break;
        case 4:
            list.list->RemoveAllObjects();
            list.model.clear();
            break;
        case 5: {
            const TExceptionType raised = TypeOf([&] {
                const auto got = CRefPtr<IObject>::Adopt(list.list->GetObject(place));
                Check(got.Get() == texts_[list.model[place]].Get());
            });
            Check(raised == expectedPlace);
            break;
        }
        case 6: {
            const TExceptionType raised =
                TypeOf([&] { Check(list.list->FindObject(chosen) == first - list.model.begin()); });
            Check(raised == expectedFind);
            break;
        }
        case 7: {
            constexpr CId kIds[] = {IObject::InterfaceId, IStringObject::InterfaceId,
                                    IObjectList::InterfaceId, CId::Null()};
            const unsigned int id = input.Byte() % 5;
            const bool isEmpty = id == 2 || id == 3;
            CheckYields(id == 4 ? list.list->EnumerateObjects() : list.list->EnumerateObjects(kIds[id]),
                        isEmpty ? std::vector<std::size_t>() : list.model);
            break;
        }
        case 8:
            SetText(input, object);
            break;
        case 9:
            enumerator_->Push(chosen);
            if (!isFrozen_) pushed_.push_back(object);
            break;
        case 10:
            Next(input);
            break;
        default:
            enumerator_->Reserve(static_cast<unsigned int>(input.Number()));
        }
    }

    void CheckState() {
        for (const TList& list : lists_) Check(list.list->GetObjectCount() == list.model.size());
        for (std::size_t i = 0; i < kObjects; ++i) {
            auto references = 1 + std::count(pushed_.begin(), pushed_.end(), i);
            for (const TList& list : lists_)
                references += std::count(list.model.begin(), list.model.end(), i);
            Check(texts_[i]->AddRef() == references + 1);
            texts_[i]->Release();
            Check(texts_[i]->GetString() == values_[i].c_str());
        }
    }

private:
    static constexpr std::size_t kObjects = 4;

    struct TList {
        CRefPtr<IObjectList> list = CreateAs<IObjectList>(classid::CObjectList);
        std::vector<std::size_t> model;
    };

    static CRefPtr<IPushObjectEnumerator> NewEnumerator() {
        return CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
    }

    void CheckYields(IObjectEnumerator* enumerator, const std::vector<std::size_t>& expected) {
        const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
        for (const std::size_t object : expected) {
            const auto next = CRefPtr<IObject>::Adopt(owner->GetNext());
            Check(next.Get() == texts_[object].Get());
        }
        Check(!owner->HasNext() && !owner->GetNext());
    }

    void SetText(CModelInput& input, std::size_t object) {
        wstring text(input.Byte() % 40, 0);
        for (wchar& unit : text) unit = static_cast<wchar>(1 + input.Byte() * 257u % 0xFFFFu);
        if (input.Byte() % 4 == 0) text = values_[input.Byte() % kObjects];
        texts_[object]->SetString(text.c_str());
        values_[object] = text;
    }

    void Next(CModelInput& input) {
        isFrozen_ = true;
        Check(enumerator_->HasNext() == (next_ < pushed_.size()));
        const auto object = CRefPtr<IObject>::Adopt(enumerator_->GetNext());
        Check(object.Get() == (next_ < pushed_.size() ? texts_[pushed_[next_]].Get() : nullptr));
        if (object) ++next_;
        if (input.Byte() % 8 != 0) return;
        enumerator_ = NewEnumerator();
        pushed_.clear();
        next_ = 0;
        isFrozen_ = false;
    }

    std::array<CRefPtr<IStringObject>, kObjects> texts_ = {
        CreateAs<IStringObject>(classid::CStringObject), CreateAs<IStringObject>(classid::CStringObject),
        CreateAs<IStringObject>(classid::CStringObject), CreateAs<IStringObject>(classid::CStringObject)};
    std::array<wstring, kObjects> values_;
    std::array<TList, 2> lists_;
    CRefPtr<IPushObjectEnumerator> enumerator_ = NewEnumerator();
    std::vector<std::size_t> pushed_;
    std::size_t next_ = 0;
    bool isFrozen_ = false;
};

/// Two blobs.
class CModelBlobs {
public:
    void Step(CModelInput& input) {
        const std::size_t which = input.Byte() % 2;
        CBlob& blob = blobs_[which];
        TBytes& model = models_[which];
        CBlob& other = blobs_[1 - which];
        TBytes& otherModel = models_[1 - which];
        switch (input.Byte() % 8) {
        case 0: {
            const TBytes bytes = input.Bytes(input.Number());
            blob.SetData(bytes.data(), bytes.size());
            model = bytes;
            break;
        }
        case 1: {
            // A part of itself.
            const std::size_t begin = input.Number() % (model.size() + 1);
            const std::size_t size = input.Number() % (model.size() - begin + 1);
            blob.SetData(static_cast<const std::uint8_t*>(blob.GetData()) + begin, size);
            model = TBytes(model.begin() + static_cast<std::ptrdiff_t>(begin),
                           model.begin() + static_cast<std::ptrdiff_t>(begin + size));
            break;
        }
        case 2: {
            const std::size_t size = input.Number();
            blob.SetSize(size);
            model.resize(size);
            break;
        }
        case 3:
            blob = other;
            model = otherModel;
            break;
        case 4:
            blob = std::move(other);
            model = std::exchange(otherModel, {});
            break;
        case 5: {
            CBlob copy(blob);
            Check(copy == blob);
            const CBlob moved(std::move(copy));
            Check(moved == blob);
            Check((moved == other) == (model == otherModel));
            break;
        }
        case 6:
            blob.Clear();
            model.clear();
            break;
        default:
            Check(TypeOf([&] { blob.SetData(nullptr, 1); }) == EXCEPTION_TYPE_NULL_PTR);
        }
    }

    void CheckState() const {
        for (std::size_t i = 0; i < 2; ++i) {
            Check(blobs_[i].GetSize() == models_[i].size() && blobs_[i].IsEmpty() == models_[i].empty());
            Check((blobs_[i].GetData() == nullptr) == models_[i].empty());
            Check(models_[i].empty() ||
                  std::memcmp(blobs_[i].GetData(), models_[i].data(), models_[i].size()) == 0);
        }
    }

private:
    CBlob blobs_[2];
    TBytes models_[2];
};

} // namespace vorlund::fuzz
