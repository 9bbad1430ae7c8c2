#include "demo/DemoSensor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "demo/Matrix3.h"

namespace quen::reprocess {
namespace {

constexpr float kBlack = 64;
constexpr float kWhite = 1023;
constexpr float kRange = kWhite - kBlack;
constexpr float kFullWell = 9000;   // electrons at white
constexpr float kReadNoise = 1.2f;  // samples
constexpr std::array<float, 3> kGains = {1.9f, 1.0f, 1.6f};

// Linear sRGB to the white-balanced colours of the sensor, whose filters overlap. Rows sum to 1, so
// that white stays white.
constexpr Matrix3 kSensorColours = {
        0.78, 0.18, 0.04, 0.14, 0.74, 0.12, 0.03, 0.21, 0.76,
};

/** Linear light 0..1 of 8-bit sRGB values. */
std::array<float, 256> linearLight() {
    std::array<float, 256> table;
    for (size_t i = 0; i < table.size(); ++i) {
        float const value = static_cast<float>(i) / 255;
        table[i] = value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
    }
    return table;
}

/** The calibration that undoes the sensor. */
SensorCalibration sensorCalibration() {
    SensorCalibration calibration;
    calibration.bayerOrder = BayerOrder::RGGB;
    calibration.levelBits = 10;
    std::fill(std::begin(calibration.blackLevel), std::end(calibration.blackLevel), kBlack);
    calibration.whiteLevel = kWhite;
    calibration.wbGains[kRed] = kGains[0];
    calibration.wbGains[kBlue] = kGains[2];
    calibration.noiseShot = 1 / kFullWell;
    calibration.noiseRead = (kReadNoise / kRange) * (kReadNoise / kRange);
    Matrix3 const toSrgb = inverse(kSensorColours);
    std::transform(toSrgb.begin(), toSrgb.end(), calibration.colorMatrix,
                   [](double value) { return static_cast<float>(value); });
    return calibration;
}

}  // namespace

Capture exposeDemoSensor(RgbPicture const& scene) {
    std::array<float, 256> const linear = linearLight();
    size_t const width = static_cast<size_t>(scene.width);
    auto const samples =
            std::make_shared<std::vector<uint16_t>>(width * static_cast<size_t>(scene.height));
    std::mt19937 random(12);
    std::normal_distribution<float> deviation;
    for (int y = 0; y < scene.height; ++y) {
        uint8_t const* const row = scene.row(y);
        uint16_t* const out = samples->data() + size_t(y) * width;
        for (size_t x = 0; x < width; ++x) {
            size_t const colour = (size_t(y) & 1) + (x & 1);  // red, green, blue along RGGB
            double const* const mix = kSensorColours.data() + 3 * colour;
            uint8_t const* const pixel = row + 3 * x;
            float const light =
                    static_cast<float>(mix[0] * linear[pixel[0]] + mix[1] * linear[pixel[1]] +
                                       mix[2] * linear[pixel[2]]) /
                    kGains[colour];
            float const signal = light * kRange;
            float const shot = signal * kRange / kFullWell;
            float const noise = deviation(random) * std::sqrt(shot + kReadNoise * kReadNoise);
            out[x] =
                    static_cast<uint16_t>(std::clamp(kBlack + signal + noise + 0.5f, 0.0f, kWhite));
        }
    }

    Capture capture;
    capture.width = static_cast<uint32_t>(scene.width);
    capture.height = static_cast<uint32_t>(scene.height);
    BayerImage image;
    image.samples = samples->data();
    image.stride = width;
    capture.image = image;
    capture.calibration = sensorCalibration();
    capture.memory = samples;
    return capture;
}

}  // namespace quen::reprocess
