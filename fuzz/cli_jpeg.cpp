// The command line's JPEG input.

#include "inputs/Inputs.h"
#include "support/Captures.h"
#include "support/InputFile.h"

using namespace quen::reprocess;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    quenfuzz::setInputFile(data, size);
    quenfuzz::readWhole([] { return readCapture("frame.jpg", InputOptions()); });
    return 0;
}
