#include "support/Captures.h"

#include <vector>

#include "buffers/BayerRows.h"
#include "support/Failure.h"
#include "support/Require.h"

using namespace quen::reprocess;

namespace quenfuzz {

namespace {

constexpr uint32_t kSmallestSide = 2;
constexpr uint32_t kUsualSide = 24;
constexpr uint32_t kLargestSide = 65534;

uint32_t takeSide(FuzzedDataProvider& input) {
    bool const isUsual = input.ConsumeIntegralInRange<int>(0, 15) != 0;
    return input.ConsumeIntegralInRange(kSmallestSide, isUsual ? kUsualSide : kLargestSide);
}

/** In each form that the ISP may be handed it in. */
void takeMosaic(Capture const& capture, BayerImage const& image) {
    SensorCalibration const& calibration = capture.calibration;
    require((image.samples != nullptr) != (image.packed10 != nullptr), "a mosaic has one form");
    require(calibration.levelBits >= 8 && calibration.levelBits <= 16, "a depth that there is");
    require(calibration.whiteLevel <= 65535, "a level that samples can have");
    for (float const black : calibration.blackLevel) {
        require(black < calibration.whiteLevel, "black is below white");
    }
    size_t const wordStride = capture.width * sizeof(uint16_t);
    std::vector<uint8_t> rows(wordStride * capture.height);
    for (int const bits : {10, 14}) {
        writeBayerRows(image, calibration.levelBits, capture.width, capture.height, {true, bits},
                       rows.data(), wordStride);
    }
    if (calibration.levelBits <= 10 && capture.width % 4 == 0) {
        writeBayerRows(image, calibration.levelBits, capture.width, capture.height, {false, 10},
                       rows.data(), capture.width / 4 * 5);
    }
}

void takePicture(Capture const& capture, Nv21Image const& image) {
    std::vector<uint8_t> const copy(image.bytes,
                                    image.bytes + nv21Size(capture.width, capture.height));
    require(!copy.empty(), "a picture has pixels");
}

}  // namespace

InputOptions takeInputOptions(FuzzedDataProvider& input) {
    InputOptions options;
    options.size = {takeSide(input), takeSide(input)};
    options.bayer = static_cast<BayerOrder>(input.ConsumeIntegralInRange<int>(0, 3));
    options.bits = input.ConsumeIntegralInRange(8, 16);
    if (input.ConsumeBool()) {
        auto const gain = [&] { return input.ConsumeFloatingPointInRange(1e-6f, 64.0f); };
        options.wb = {gain(), gain(), gain()};
    }
    if (input.ConsumeBool()) {
        auto const level = [&] { return input.ConsumeFloatingPointInRange(0.0f, 65535.0f); };
        options.black = {level(), level(), level(), level()};
    }
    return options;
}

void readWhole(std::function<Capture()> const& read) {
    try {
        Capture const capture = read();
        require(capture.width >= 2 && capture.height >= 2, "a picture has pixels");
        require(capture.width % 2 == 0 && capture.height % 2 == 0, "sides are even");
        require(capture.orientation % 90 == 0, "an orientation is in quarter turns");
        if (auto const* const mosaic = std::get_if<BayerImage>(&capture.image)) {
            takeMosaic(capture, *mosaic);
        } else {
            takePicture(capture, std::get<Nv21Image>(capture.image));
        }
    } catch (Failure const& failure) {
        require(failure.what()[0] != '\0', "a failure says what is wrong");
    }
}

}  // namespace quenfuzz
