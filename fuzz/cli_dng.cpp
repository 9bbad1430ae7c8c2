// The command line's camera raw input: DNG, and whatever else LibRaw takes for one.

#include "inputs/Inputs.h"
#include "support/Captures.h"
#include "support/DescriptorWatch.h"
#include "support/InputFile.h"

using namespace quen::reprocess;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    quenfuzz::setInputFile(data, size);
    char const* const path = quenfuzz::setSystemFile(data, size);
    quenfuzz::DescriptorWatch const watch;
    quenfuzz::readWhole([&] { return readCapture(path, InputOptions()); });
    return 0;
}
