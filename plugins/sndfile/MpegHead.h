// Completes MPEG files whose head does not tell how long they are and what their encoder added.
#pragma once

#include "VirtualFile.h"

#include <cstdint>

/// What is known about the ends of an MPEG file.
enum class TMpegEnds {
    Exact,  ///< the delay and the padding of the encoder, which libsndfile then leaves out
    Unknown ///< only the number of frames
};

/// Looks at the first frame and the tags of an MPEG file whose frames begin at `start`. When the record of
/// the encoder (Xing, Info, LAME) is missing or incomplete, all frames are counted and a record with their
/// number, and with the ends that a tag "iTunSMPB" tells, is put in front of them.
TMpegEnds CompleteMpegHead(CVirtualFile& file, std::int64_t start);
