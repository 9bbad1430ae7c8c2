#include "demo/DemoSensor.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <opencv2/core.hpp>

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
float const kSensorColours[9] = {
        0.78f, 0.18f, 0.04f, 0.14f, 0.74f, 0.12f, 0.03f, 0.21f, 0.76f,
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
    cv::Mat const toSensor(3, 3, CV_32F, const_cast<float*>(kSensorColours));
    cv::Mat const toSrgb = toSensor.inv();
    std::copy(toSrgb.begin<float>(), toSrgb.end<float>(), calibration.colorMatrix);
    return calibration;
}

}  // namespace

Capture exposeDemoSensor(cv::Mat const& scene) {
    std::array<float, 256> const linear = linearLight();
    size_t const width = static_cast<size_t>(scene.cols);
    auto const samples = std::make_shared<std::vector<uint16_t>>(scene.total());
    cv::Mat noise(1, scene.cols, CV_32F);
    cv::RNG random(12);
    for (int y = 0; y < scene.rows; ++y) {
        random.fill(noise, cv::RNG::NORMAL, 0, 1);
        float const* const deviation = noise.ptr<float>();
        uint8_t const* const row = scene.ptr(y);
        uint16_t* const out = samples->data() + size_t(y) * width;
        for (size_t x = 0; x < width; ++x) {
            size_t const colour = (size_t(y) & 1) + (x & 1);  // red, green, blue along RGGB
            float const* const mix = kSensorColours + 3 * colour;
            uint8_t const* const pixel = row + 3 * x;
            float const light = (mix[0] * linear[pixel[0]] + mix[1] * linear[pixel[1]] +
                                 mix[2] * linear[pixel[2]]) /
                                kGains[colour];
            float const signal = light * kRange;
            float const shot = signal * kRange / kFullWell;
            float const sample =
                    kBlack + signal + deviation[x] * std::sqrt(shot + kReadNoise * kReadNoise);
            out[x] = static_cast<uint16_t>(std::clamp(sample + 0.5f, 0.0f, kWhite));
        }
    }

    Capture capture;
    capture.width = static_cast<uint32_t>(scene.cols);
    capture.height = static_cast<uint32_t>(scene.rows);
    BayerImage image;
    image.samples = samples->data();
    image.stride = width;
    capture.image = image;
    capture.calibration = sensorCalibration();
    capture.memory = samples;
    return capture;
}

}  // namespace quen::reprocess
