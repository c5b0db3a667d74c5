/// \file
/// Mending WAV files whose sizes are wrong: of recordings that were cut off, of programs that did not go back
/// to their header, of copies that ended early.
#pragma once

#include <vorlund/String.h>

#include <cstdint>
#include <vector>

namespace vorlund {

/// What is wrong with a file, one line each: "RIFF size 0 becomes 1036". Empty when nothing is. Since version
/// 0.1.
struct TWavRepair {
    std::vector<CString> changes;
};

/// Makes the sizes in the header of a RIFF, RF64 or BW64 file those that it has: of the file, of the sound,
/// the number of frames, and of a last chunk that is cut off. Where the declared size of the sound cannot be,
/// or is 0, or what follows the sound is no chunk, the sound goes to the end of the file, in whole frames. A
/// file of more than 4 GiB becomes an RF64 when room was kept for that. No byte of the sound is moved or
/// written; at most one byte of padding comes behind the file.
///
/// \param path     the file, which is changed in place
/// \param isTrial  only tells what it would change
///
/// Raises `CFileAccessException` "Cannot open '...' for writing" ("for reading" for a trial),
/// `CDataFormatException` "Invalid header", "Cannot find fmt chunk", "Cannot find data chunk", "There is no
/// room for sizes of 64 bits", `CIOException` "Cannot read the file" and "Cannot write the file". Since
/// version 0.1.
VRL_API TWavRepair RepairWav(const wchar* path, bool isTrial = false);

} // namespace vorlund
