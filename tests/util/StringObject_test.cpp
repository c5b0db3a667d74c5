#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

class StringObject : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(StringObject, TextIsEmptyAtFirst) {
    EXPECT_EQ(Narrow(CreateAs<IStringObject>(classid::CStringObject)->GetString()), "");
}

TEST_F(StringObject, TextIsCopiedInAndOut) {
    const auto object = CreateAs<IStringObject>(classid::CStringObject);
    wstring text = VRL_L("Gr\u00FC\u00DFe \U0001F3B5");
    object->SetString(text.c_str());
    text[0] = VRL_L('x');
    CString copy = object->GetString();
    EXPECT_EQ(Narrow(copy), "Gr\u00FC\u00DFe \U0001F3B5");
    copy[0] = VRL_L('y');
    EXPECT_EQ(Narrow(object->GetString()), "Gr\u00FC\u00DFe \U0001F3B5");
    object->SetString(VRL_L("shorter"));
    EXPECT_EQ(Narrow(object->GetString()), "shorter");
    object->SetString(VRL_L(""));
    EXPECT_EQ(Narrow(object->GetString()), "");
}

TEST_F(StringObject, LongTextStaysWhole) {
    const auto object = CreateAs<IStringObject>(classid::CStringObject);
    const wstring text(100000, VRL_L('t'));
    object->SetString(text.c_str());
    EXPECT_EQ(object->GetString().Length(), 100000u);
    EXPECT_TRUE(object->GetString() == text.c_str());
}

TEST_F(StringObject, TextOutlivesItsObject) {
    CString text;
    {
        const auto object = CreateAs<IStringObject>(classid::CStringObject);
        object->SetString(VRL_L("kept"));
        text = object->GetString();
    }
    EXPECT_EQ(Narrow(text), "kept");
}

} // namespace
} // namespace vorlund::test
