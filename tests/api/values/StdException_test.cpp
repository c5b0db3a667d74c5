#include <vorlund/StdException.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace vorlund::test {
namespace {

constexpr TFailure kStdFailure{VRL_L("test::Method"), VRL_L("tests/values/StdException_test"), 7,
                               VRL_L("R\u00E9ason")};

TEST(StdException, KeepsWhatWasRaised) {
    try {
        AsStdExceptions([] { Raise<CIOException>(kStdFailure); });
        FAIL() << "nothing was raised";
    } catch (const std::exception& raised) {
        EXPECT_EQ(std::string(raised.what()), "Exception: type=CIOException | method=test::Method | "
                                              "file=tests/values/StdException_test | line=7 | reason=R?ason");
        const auto& own = dynamic_cast<const CStdException&>(raised);
        EXPECT_EQ(own.GetType(), EXCEPTION_TYPE_IO);
        EXPECT_EQ(own.GetLine(), 7);
        EXPECT_EQ(own.GetMethod(), kStdFailure.method);
        EXPECT_EQ(own.GetFile(), kStdFailure.file);
        EXPECT_EQ(own.GetReason(), kStdFailure.reason);
    }
}

TEST(StdException, OutlivesTheTextsOfTheOtherOne) {
    auto reason = std::make_unique<wstring>(VRL_L("gone"));
    std::optional<CStdException> kept;
    try {
        AsStdExceptions([&] { Raise<CFailedException>(kStdFailure, reason->c_str()); });
    } catch (const CStdException& raised) {
        kept = raised;
    }
    reason.reset();
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->GetReason(), VRL_L("gone"));
}

TEST(StdException, ResultsAndOtherExceptionsPass) {
    EXPECT_EQ(AsStdExceptions([] { return 3; }), 3);
    int value = 0;
    EXPECT_EQ(&AsStdExceptions([&]() -> int& { return value; }), &value);
    EXPECT_THROW(AsStdExceptions([] { throw std::logic_error("other"); }), std::logic_error);
    EXPECT_THROW(AsStdExceptions([] { throw 4; }), int);
}

} // namespace
} // namespace vorlund::test
