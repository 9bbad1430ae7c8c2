// The command line's headerless Bayer input: any bytes beside any options.

#include <vector>

#include "inputs/Inputs.h"
#include "support/Captures.h"
#include "support/InputFile.h"

using namespace quen::reprocess;

/** The options come from the input's end; the file is its beginning, of a fitting size if so asked.
 */
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    constexpr size_t kLargestFile = 2 * 24 * 24;
    FuzzedDataProvider input(data, size);
    InputOptions const options = quenfuzz::takeInputOptions(input);
    int const fit = input.ConsumeIntegralInRange<int>(0, 3);
    auto file = input.ConsumeRemainingBytes<uint8_t>();
    size_t const pixels = size_t{(*options.size)[0]} * (*options.size)[1];
    if (fit != 0 && pixels * 2 <= kLargestFile) {
        file.resize(fit == 1 ? pixels * 5 / 4 : pixels * 2);
    }
    quenfuzz::setInputFile(file.data(), file.size());
    quenfuzz::readWhole([&] { return readCapture("frame.raw", options); });
    return 0;
}
