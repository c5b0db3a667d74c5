/// \file
/// Numbers as printf prints them.
#pragma once

#include "vorlund/api/text/TextOutput.h"

#include <string_view>

namespace vorlund {

/// Puts a signed integer.
void PutSigned(CTextOutput& output, const TFormatDirective& directive, std::int64_t value);

/// Puts an unsigned integer with the base of the directive's conversion, `prefix` before its first digit or
/// zero.
void PutUnsigned(CTextOutput& output, const TFormatDirective& directive, std::string_view prefix,
                 std::uint64_t value);

/// Puts a floating-point number.
void PutFloat(CTextOutput& output, const TFormatDirective& directive, double value);
void PutFloat(CTextOutput& output, const TFormatDirective& directive, long double value);

} // namespace vorlund
