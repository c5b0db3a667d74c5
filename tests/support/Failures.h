/// \file
/// Comparison of a failure with the record that it should be.
#pragma once

#include "support/Outcome.h"
#include "support/Text.h"

#include <vorlund/Exception.h>

#include <gtest/gtest.h>

#include <source_location>
#include <string>
#include <typeinfo>

namespace vorlund::test {

/// The type value of an exception class.
template <class TException> inline constexpr TExceptionType kTypeOf = EXCEPTION_TYPE_GENERIC;
#define VRL_TYPE_OF(value, className, enumerator)                                                            \
    template <> inline constexpr TExceptionType kTypeOf<className> = enumerator;
VRL_EXCEPTION_SUBCLASSES(VRL_TYPE_OF)
#undef VRL_TYPE_OF

/// Expects `act` to raise exactly a `TException` with the four values of `row`; texts are compared, not
/// pointers.
template <class TException, class TAct>
void ExpectRaises(const TFailure& row, TAct&& act,
                  const std::source_location& where = std::source_location::current()) {
    const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "ExpectRaises");
    const std::string expected = Narrow(CException::GetTypeName(kTypeOf<TException>)) + ' ' +
                                 Narrow(row.method) + ' ' + Narrow(row.file) + ':' +
                                 std::to_string(row.line) + ' ' + Narrow(row.reason);
    try {
        act();
    } catch (const CException& exception) {
        EXPECT_EQ(Describe(exception), expected);
        EXPECT_EQ(exception.GetType(), kTypeOf<TException>);
        EXPECT_TRUE(typeid(exception) == typeid(TException)) << "thrown as " << typeid(exception).name();
        return;
    } catch (...) {
        ADD_FAILURE() << "a foreign exception instead of " << expected;
        return;
    }
    ADD_FAILURE() << "nothing instead of " << expected;
}

} // namespace vorlund::test
