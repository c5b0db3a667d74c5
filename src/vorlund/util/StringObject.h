// The wrapper of a text.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/StringObject.h>

namespace vorlund {

/// Carries a text through an enumerator or a list.
class CStringObject : public CObjectImpl<IStringObject> {
public:
    static constexpr CId ClassId = classid::CStringObject;

    CString GetString() override { return text_; }
    void SetString(const wchar* text) override { text_ = text; }

private:
    CString text_;
};

} // namespace vorlund
