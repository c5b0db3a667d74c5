/// \file
/// How text readers and writers represent characters in a stream.
#pragma once

namespace vorlund {

/// The bytes of a character. Neither writes or expects a byte-order mark. Every value other than 0 acts as
/// `CHAR_FORMAT_UTF16`.
enum TCharFormat : int {
    /// ISO 8859-1: the low byte of a unit is written, a byte becomes the unit of its value.
    CHAR_FORMAT_8BIT = 0,
    /// UTF-16, low byte first.
    CHAR_FORMAT_UTF16 = 1,
};

} // namespace vorlund
