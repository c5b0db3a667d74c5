/// \file
/// Runs of operations on file streams, lists, enumerators, texts as objects and blobs against models: vectors
/// and positions. `fuzz_resource` and `fuzz_string` do the same for resources and texts.
#include "ModelFile.h"
#include "ModelObjects.h"

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

constexpr int kMaxSteps = 120;

/// Every step of one kind.
template <class TModel> void Run(CModelInput& input) {
    TModel model;
    for (int steps = 0; steps < kMaxSteps && !input.IsEmpty(); ++steps) {
        model.Step(input);
        model.CheckState();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CModelInput input(data, size);
    switch (input.Byte() % 3) {
    case 0:
        Run<CModelFile>(input);
        break;
    case 1:
        Run<CModelObjects>(input);
        break;
    default:
        Run<CModelBlobs>(input);
    }
    return 0;
}
