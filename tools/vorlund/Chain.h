// Describes what a decode found: the chain of decoders and the chunks of a RIFF file.
#pragma once

#include <vorlund/Stream.h>

/// The registered names from the source to `end`, joined by " > ".
vorlund::wstring DescribeChain(vorlund::IInputStream* end);

/// The chunk ids of a RIFF/WAVE file, in file order; empty for other files.
vorlund::wstring DescribeChunks(const vorlund::wchar* path);
