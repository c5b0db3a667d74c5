/// \file
/// How text readers and writers represent characters in a stream.
#pragma once

namespace vorlund {

/// The bytes of a character. Neither has a byte-order mark, written or expected. Every value other than 0
/// acts as `CHAR_FORMAT_UTF16`.
enum TCharFormat : int {
    CHAR_FORMAT_8BIT =
        0, ///< ISO 8859-1: the low byte of a unit is written, a byte becomes the unit of its value
    CHAR_FORMAT_UTF16 = 1, ///< UTF-16, low byte first
};

} // namespace vorlund
