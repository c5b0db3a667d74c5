// Describes what a decode found: the chain of decoders and the chunks of a RIFF file.
#pragma once

#include <vorlund/DecodeReport.h>

#include <vector>

/// The registered names of a chain (`ListChain`) from the source to its end, joined by " > ".
vorlund::wstring DescribeChain(const std::vector<vorlund::TChainLink>& links);

/// The chunk ids of a RIFF/WAVE file, in file order; empty for other files.
vorlund::wstring DescribeChunks(const vorlund::wchar* path);
