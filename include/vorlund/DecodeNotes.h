/// \file
/// What a decoder tells about its input beside its result and its exceptions. Whoever searches for decoders
/// with a `CDecodeReport` (DecodeReport.h) finds it there, with the candidate that said it; otherwise each of
/// these functions does nothing, at the cost of a comparison. They are for the time of `Connect`, on its
/// thread, and raise nothing: a note for which there is no memory is lost.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

/// The decoder has recognised its container: the data are of its kind, whether it can read them or not.
///
/// \param name  as users know it: "WAV", "Ogg Vorbis"
///
/// Since version 0.1.
VRL_API void NoteContainer(const wchar* name);

/// The value because of which the decoder is about to refuse its input: `NoteValue(VRL_L("format tag"), 3)`.
/// A position is the "byte". Since version 0.1.
VRL_API void NoteValue(const wchar* name, std::int64_t value);

/// The same for a text, such as the name of a chunk that is missing. Since version 0.1.
VRL_API void NoteValue(const wchar* name, const wchar* text);

/// Something else that users may want to know, in a few words: what the decoder has repaired, or does not
/// know. Since version 0.1.
VRL_API void NoteRemark(const wchar* text);

} // namespace vorlund
