// The command line's YUV inputs: any bytes beside any size.

#include <vector>

#include "inputs/Inputs.h"
#include "support/Captures.h"
#include "support/InputFile.h"

using namespace quen::reprocess;

/** The options come from the input's end; the file is its beginning, of a fitting size if so asked.
 */
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    constexpr size_t kLargestFile = 24 * 24 * 3 / 2;
    FuzzedDataProvider input(data, size);
    InputOptions options = quenfuzz::takeInputOptions(input);
    bool const isPlanar = input.ConsumeBool();
    bool const fits = input.ConsumeIntegralInRange<int>(0, 3) != 0;
    if (input.ConsumeIntegralInRange<int>(0, 31) == 0) {
        options.size.reset();
    }
    auto file = input.ConsumeRemainingBytes<uint8_t>();
    if (fits && options.size) {
        auto const [width, height] = *options.size;
        size_t const chroma = size_t{(width + 1) / 2} * ((height + 1) / 2);
        size_t const wanted = size_t{width} * height + 2 * chroma;
        file.resize(wanted <= kLargestFile ? wanted : file.size());
    }
    quenfuzz::setInputFile(file.data(), file.size());
    quenfuzz::readWhole([&] { return readCapture(isPlanar ? "a.yuv" : "a.NV21", options); });
    return 0;
}
