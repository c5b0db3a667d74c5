// The command "random".
#include "Commands.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "OutputFile.h"
#include "Progress.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace vorlund;

void RunRandom(const TRandomOptions& options) {
    const auto generator = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
    generator->SetSeed(options.seed)->SetRepeatCount(options.repeat);
    // A byte is a sample.
    const TDataFormat_AudioPcm format(SAMPLE_FORMAT_8BIT, 1, 44100);
    const auto output = COutputFile::Create(options.output, false, format, options.count);
    CProgress progress(options.count);
    const CInterrupt interrupt;
    // Whole runs, because each read begins a new one.
    std::vector<std::uint8_t> block(kMaxRandomRepeat / options.repeat * options.repeat);
    for (std::uint64_t done = 0; done < options.count;) {
        const std::uint64_t size = std::min<std::uint64_t>(options.count - done, block.size());
        output->Write(block.data(), generator->Read(block.data(), size));
        done += size;
        progress.Show(done);
        if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
    }
    output->Finish();
    output->Keep();
}
