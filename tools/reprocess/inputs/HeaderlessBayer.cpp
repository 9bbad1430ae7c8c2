#include "inputs/HeaderlessBayer.h"

#include <algorithm>

#include "inputs/BitsUsed.h"
#include "inputs/Corrections.h"
#include "inputs/MappedFile.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

/** The size option as text. */
std::string sizeText(InputOptions const& options) {
    return std::to_string((*options.size)[0]) + "x" + std::to_string((*options.size)[1]);
}

/** Throws when a sample has more bits than the options state. */
void checkDepth(BayerImage const& image, uint32_t width, uint32_t height, int bits) {
    if (bitsUsed(image, width, height) >> bits) {
        uint16_t const largest =
                *std::max_element(image.samples, image.samples + size_t{width} * height);
        throw Failure("has a sample of " + std::to_string(largest) + ", more than " +
                              std::to_string(bits) + " bits hold",
                      "give the true depth with --bits");
    }
}

/** The calibration that the options state. */
SensorCalibration calibrationFrom(InputOptions const& options) {
    SensorCalibration calibration;
    calibration.bayerOrder = *options.bayer;
    calibration.levelBits = options.bits;
    calibration.whiteLevel = static_cast<float>((1 << options.bits) - 1);
    applyCorrections(options, calibration);
    return calibration;
}

}  // namespace

Capture readHeaderlessBayer(std::string const& path, InputOptions const& options) {
    auto const file = MappedFile::open(path);
    auto const [width, height] = *options.size;
    size_t const pixels = size_t{width} * height;
    size_t const wordBytes = pixels * 2;
    size_t const packedBytes = width % 4 == 0 ? pixels * 5 / 4 : 0;

    Capture capture;
    capture.calibration = calibrationFrom(options);
    BayerImage image;
    if (file->size() == wordBytes) {
        image.samples = reinterpret_cast<uint16_t const*>(file->data());
        image.stride = width;
        checkDepth(image, width, height, options.bits);
    } else if (file->size() == packedBytes) {
        if (options.bits != 10) {
            throw Failure(
                    "has the size of packed RAW10, but --bits says " + std::to_string(options.bits),
                    "leave --bits out, or check --size");
        }
        image.packed10 = file->data();
        image.stride = width / 4 * 5;
    } else {
        std::string const packed =
                packedBytes ? " or " + std::to_string(packedBytes) + " as packed RAW10" : "";
        throw Failure("has " + std::to_string(file->size()) + " bytes; " + sizeText(options) +
                              " takes " + std::to_string(wordBytes) + " in words of 16 bits" +
                              packed,
                      "check --size");
    }
    capture.image = image;
    capture.width = width & ~1u;
    capture.height = height & ~1u;
    capture.memory = file;
    return capture;
}

}  // namespace quen::reprocess
