// The default property page.
#include <vorlund/ClassIds.h>
#include <vorlund/PropertyPage.h>
#include <vorlund/RefPtr.h>

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(PropertyPage, AgreesToEverything) {
    const CLibraryScope library;
    const CDebugRecorder recorder;
    const auto page = CreateAs<IPropertyPage>(classid::CPropertyPage);
    for (const std::uint32_t argument : {0U, 1U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(page->Open(argument));
        EXPECT_TRUE(page->Apply(argument));
        EXPECT_TRUE(page->Reset(argument));
        EXPECT_TRUE(page->Close(argument));
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST(PropertyPage, ShowsAMessage) {
    const CLibraryScope library;
    const auto page = CreateAs<IPropertyPage>(classid::CPropertyPage);
    const CDebugRecorder recorder;
    EXPECT_FALSE(page->Show());
    const auto entries = recorder.GetEntries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].type, DEBUG_MESSAGE_BOX);
    EXPECT_EQ(Narrow(entries[0].text), "This is the default property page object");
}

} // namespace
} // namespace vorlund::test
