#include "support/DebugRecorder.h"
#include "support/Failures.h"

#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

constexpr TFailure kFailure{VRL_L("vorlund::CThing::Act"), VRL_L("src/vorlund/api/Thing"), 60,
                            VRL_L("Not initialized")};
const std::string kFailureTail =
    " | method=vorlund::CThing::Act | file=src/vorlund/api/Thing | line=60 | reason=Not initialized";

// The table of the family.

struct TClassRow {
    int value;
    TExceptionType enumerator;
    const char* name;
    /// Raises the class from kFailure; CException itself with its own type value.
    void (*raise)();
    /// Whether catching by that class catches what `raise` raises.
    bool (*isCaughtBy)(void (*raise)());
};

template <class TException> bool IsCaughtBy(void (*raise)()) {
    try {
        raise();
    } catch (const TException&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

void RaiseGeneric() {
    throw CException(kFailure.method, kFailure.file, kFailure.line, kFailure.reason, EXCEPTION_TYPE_GENERIC);
}

template <class TException> constexpr TClassRow Row(int value, TExceptionType enumerator, const char* name) {
    static_assert(std::is_base_of_v<CException, TException>);
    static_assert(sizeof(TException) == sizeof(CException), "a subclass adds no field");
    static_assert(std::has_virtual_destructor_v<TException>);
    static_assert(std::is_copy_constructible_v<TException> && std::is_copy_assignable_v<TException>);
    return {value, enumerator, name, [] { Raise<TException>(kFailure); }, &IsCaughtBy<TException>};
}

const TClassRow kClasses[] = {
    {0, EXCEPTION_TYPE_GENERIC, "CException", &RaiseGeneric, &IsCaughtBy<CException>},
    Row<CClassNotFoundException>(1, EXCEPTION_TYPE_CLASS_NOT_FOUND, "CClassNotFoundException"),
    Row<COutOfMemoryException>(2, EXCEPTION_TYPE_OUT_OF_MEMORY, "COutOfMemoryException"),
    Row<CFileAccessException>(3, EXCEPTION_TYPE_FILE_ACCESS, "CFileAccessException"),
    Row<CDataFormatException>(4, EXCEPTION_TYPE_DATA_FORMAT, "CDataFormatException"),
    Row<CInvalidStateException>(5, EXCEPTION_TYPE_INVALID_STATE, "CInvalidStateException"),
    Row<CInvalidParameterException>(6, EXCEPTION_TYPE_INVALID_PARAMETER, "CInvalidParameterException"),
    Row<CObjectNotFoundException>(7, EXCEPTION_TYPE_OBJECT_NOT_FOUND, "CObjectNotFoundException"),
    Row<CDeviceFailedException>(8, EXCEPTION_TYPE_DEVICE_FAILED, "CDeviceFailedException"),
    Row<COperationNotSupportedException>(9, EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED,
                                         "COperationNotSupportedException"),
    Row<CBugException>(10, EXCEPTION_TYPE_BUG, "CBugException"),
    Row<CIOException>(11, EXCEPTION_TYPE_IO, "CIOException"),
    Row<CBadIndexException>(12, EXCEPTION_TYPE_BAD_INDEX, "CBadIndexException"),
    Row<CNullPtrException>(13, EXCEPTION_TYPE_NULL_PTR, "CNullPtrException"),
    Row<CFailedException>(14, EXCEPTION_TYPE_FAILED, "CFailedException"),
    Row<CTimeoutException>(15, EXCEPTION_TYPE_TIMEOUT, "CTimeoutException"),
    Row<CDataNotSupportedException>(16, EXCEPTION_TYPE_DATA_NOT_SUPPORTED, "CDataNotSupportedException"),
};

class ExceptionClass : public testing::TestWithParam<TClassRow> {};

TEST_P(ExceptionClass, HasItsValueAndName) {
    EXPECT_EQ(static_cast<int>(GetParam().enumerator), GetParam().value);
    EXPECT_EQ(Narrow(CException::GetTypeName(static_cast<TExceptionType>(GetParam().value))),
              GetParam().name);
}

TEST_P(ExceptionClass, CarriesItsFields) {
    try {
        GetParam().raise();
        FAIL();
    } catch (const CException& exception) {
        EXPECT_EQ(exception.GetType(), GetParam().enumerator);
        // The pointers themselves: nothing is copied.
        EXPECT_EQ(exception.GetMethod(), kFailure.method);
        EXPECT_EQ(exception.GetFile(), kFailure.file);
        EXPECT_EQ(exception.GetLine(), 60);
        EXPECT_EQ(exception.GetReason(), kFailure.reason);
        EXPECT_EQ(Narrow(exception.ToString().GetBuffer()),
                  std::string("Exception: type=") + GetParam().name + kFailureTail);
    }
}

TEST_P(ExceptionClass, ReportsItselfOnceAndABugAlsoInABox) {
    const CDebugRecorder recorder;
    try {
        GetParam().raise();
    } catch (const CException&) {
    }
    const std::string line = std::string("Exception: type=") + GetParam().name + kFailureTail;
    const auto entries = recorder.GetEntries();
    const bool isBug = GetParam().value == 10;
    ASSERT_EQ(entries.size(), isBug ? 2u : 1u);
    EXPECT_EQ(entries[0].type, DEBUG_MESSAGE_OUTPUT);
    EXPECT_EQ(Narrow(entries[0].text), line);
    if (!isBug) return;
    EXPECT_EQ(entries[1].type, DEBUG_MESSAGE_BOX);
    EXPECT_EQ(Narrow(entries[1].text), line);
}

TEST_P(ExceptionClass, IsCaughtByItselfAndTheBaseOnly) {
    EXPECT_TRUE(IsCaughtBy<CException>(GetParam().raise));
    for (const TClassRow& other : kClasses) {
        const bool isExpected = other.value == 0 || other.value == GetParam().value;
        EXPECT_EQ(other.isCaughtBy(GetParam().raise), isExpected) << other.name;
    }
}

INSTANTIATE_TEST_SUITE_P(All, ExceptionClass, testing::ValuesIn(kClasses),
                         [](const auto& row) { return row.param.name; });

TEST(Exception, HasSeventeenTypes) {
    EXPECT_EQ(std::size(kClasses), 17u);
    for (const int value :
         {-1, 17, 18, 31, 32, 255, 256, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(CException::GetTypeName(static_cast<TExceptionType>(value)), nullptr) << value;
}

// Construction.

TEST(Exception, TypeDecidesAboutTheBoxNotTheClass) {
    const CDebugRecorder recorder;
    const CException exception(VRL_L("m"), VRL_L("f"), 1, VRL_L("r"), EXCEPTION_TYPE_BUG);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX),
              TTexts{"Exception: type=CBugException | method=m | file=f | line=1 | reason=r"});
}

TEST(Exception, CopiesPrintNothingAndAreEqual) {
    const CBugException exception(VRL_L("m"), VRL_L("f"), 1, VRL_L("r"));
    CBugException other(VRL_L("m2"), VRL_L("f2"), 2, VRL_L("r2"));
    const CDebugRecorder recorder;
    const CBugException copy = exception;
    const CException base = exception;
    other = exception;
    const CException* const copies[] = {&copy, &base, &other};
    for (const CException* const each : copies) {
        EXPECT_EQ(each->GetMethod(), exception.GetMethod());
        EXPECT_EQ(each->GetFile(), exception.GetFile());
        EXPECT_EQ(each->GetLine(), 1);
        EXPECT_EQ(each->GetReason(), exception.GetReason());
        EXPECT_EQ(each->GetType(), EXCEPTION_TYPE_BUG);
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST(Exception, CatchingByReferenceAndRaisingAgainPrintsNothing) {
    const CDebugRecorder recorder;
    ExpectRaises<CIOException>(kFailure, [] {
        try {
            Raise<CIOException>(kFailure);
        } catch (const CException&) {
            throw;
        }
    });
    EXPECT_EQ(recorder.GetEntries().size(), 1u);
}

TEST(Exception, RaiseTakesAReasonMadeAtRunTime) {
    const wstring reason = VRL_L("Cannot find a.wav");
    try {
        Raise<CFileAccessException>(kFailure, reason.c_str());
    } catch (const CFileAccessException& exception) {
        EXPECT_EQ(exception.GetReason(), reason.c_str());
        EXPECT_EQ(exception.GetMethod(), kFailure.method);
        EXPECT_EQ(exception.GetFile(), kFailure.file);
        EXPECT_EQ(exception.GetLine(), kFailure.line);
        return;
    }
    FAIL();
}

// The line.

struct TLineRow {
    const char* name;
    const wchar* method;
    const wchar* file;
    int line;
    const wchar* reason;
    int type;
    const char* expected;
};

class ExceptionLine : public testing::TestWithParam<TLineRow> {};

TEST_P(ExceptionLine, IsTheSameEverywhere) {
    const TLineRow& row = GetParam();
    const CDebugRecorder recorder;
    const CException exception(row.method, row.file, row.line, row.reason,
                               static_cast<TExceptionType>(row.type));
    EXPECT_EQ(Narrow(exception.ToString().GetBuffer()), row.expected);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{row.expected});
}

INSTANTIATE_TEST_SUITE_P(
    All, ExceptionLine,
    testing::Values(
        TLineRow{"EmptyReason", VRL_L("m"), VRL_L("f"), 1, VRL_L(""), 1,
                 "Exception: type=CClassNotFoundException | method=m | file=f | line=1 | reason="},
        TLineRow{"Line60", VRL_L("m"), VRL_L("f"), 60, VRL_L("r"), 0,
                 "Exception: type=CException | method=m | file=f | line=60 | reason=r"},
        TLineRow{"AllEmpty", VRL_L(""), VRL_L(""), 0, VRL_L(""), 0,
                 "Exception: type=CException | method= | file= | line=0 | reason="},
        TLineRow{"LowestLine", VRL_L("m"), VRL_L("f"), std::numeric_limits<int>::min(), VRL_L("r"), 0,
                 "Exception: type=CException | method=m | file=f | line=-2147483648 | reason=r"},
        TLineRow{"UnknownType", VRL_L("m"), VRL_L("f"), 1, VRL_L("r"), 17,
                 "Exception: type=(null) | method=m | file=f | line=1 | reason=r"},
        TLineRow{"NegativeType", VRL_L("m"), VRL_L("f"), 1, VRL_L("r"), -1,
                 "Exception: type=(null) | method=m | file=f | line=1 | reason=r"},
        TLineRow{"NullTexts", nullptr, nullptr, 1, nullptr, 14,
                 "Exception: type=CFailedException | method=(null) | file=(null) | line=1 | reason=(null)"},
        TLineRow{"PercentSigns", VRL_L("%s"), VRL_L("%n"), 1, VRL_L("100%d"), 0,
                 "Exception: type=CException | method=%s | file=%n | line=1 | reason=100%d"},
        TLineRow{"BeyondAscii", VRL_L("m"), VRL_L("f"), 1, VRL_L("caf\u00E9 \u65E5\U0001F600"), 0,
                 "Exception: type=CException | method=m | file=f | line=1 | reason=caf\u00E9 "
                 "\u65E5\U0001F600"}),
    [](const auto& row) { return row.param.name; });

TEST(Exception, LineIsCutAt255UnitsAndFieldsStayWhole) {
    const std::string start = "Exception: type=CIOException | method=m | file=f | line=1 | reason=";
    for (const std::size_t length :
         {std::size_t{254}, std::size_t{255}, std::size_t{256}, std::size_t{5000}}) {
        const wstring reason(length - start.size(), VRL_L('x'));
        const CDebugRecorder recorder;
        const CIOException exception(VRL_L("m"), VRL_L("f"), 1, reason.c_str());
        const std::string expected = (start + std::string(reason.size(), 'x')).substr(0, 255);
        EXPECT_EQ(Narrow(exception.ToString().GetBuffer()), expected) << length;
        EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), TTexts{expected}) << length;
        EXPECT_EQ(exception.GetReason(), reason.c_str());
    }
}

TEST(Exception, EachLongFieldIsCut) {
    const wstring text(300, VRL_L('x'));
    const wchar* const all = text.c_str();
    const wchar* const none = VRL_L("");
    const CException exceptions[] = {{all, none, 1, none, EXCEPTION_TYPE_IO},
                                     {none, all, 1, none, EXCEPTION_TYPE_IO},
                                     {none, none, 1, all, EXCEPTION_TYPE_IO},
                                     {all, all, 1, all, EXCEPTION_TYPE_IO}};
    for (const CException& exception : exceptions) {
        EXPECT_EQ(exception.ToString().Length(), 255u);
        EXPECT_EQ(Narrow(exception.ToString().GetBuffer()).rfind("Exception: type=CIOException | ", 0), 0u);
    }
}

// PrintMessage.

TEST(Exception, PrintMessageSendsTheLineToTheDestination) {
    const CIOException exception(VRL_L("m"), VRL_L("f"), 7, VRL_L("r"));
    for (const TDebugMessageType type :
         {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR}) {
        const CDebugRecorder recorder;
        exception.PrintMessage(type);
        const auto entries = recorder.GetEntries();
        ASSERT_EQ(entries.size(), 1u);
        EXPECT_EQ(entries[0].type, type);
        EXPECT_EQ(Narrow(entries[0].text),
                  "Exception: type=CIOException | method=m | file=f | line=7 | reason=r");
    }
}

TEST(Exception, PrintMessageToAnUnknownDestinationPrintsNothing) {
    const CIOException exception(VRL_L("m"), VRL_L("f"), 7, VRL_L("r"));
    const CDebugRecorder recorder;
    for (const int type : {-1, 4, 100}) exception.PrintMessage(static_cast<TDebugMessageType>(type));
    EXPECT_TRUE(recorder.GetEntries().empty());
}

} // namespace
} // namespace vorlund::test
