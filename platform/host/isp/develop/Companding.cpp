#include "host/isp/develop/Companding.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace quen::host::isp {

Companding::Companding(SensorCalibration const& calibration, int bits) {
    float const rescale = static_cast<float>((1 << bits) - 1) /
                          static_cast<float>((1 << calibration.levelBits) - 1);
    float const smallestGain =
            *std::min_element(std::begin(calibration.wbGains), std::end(calibration.wbGains));
    size_t const samples = size_t{1} << bits;
    for (int colour = 0; colour < kBayerColours; ++colour) {
        float const black = calibration.blackLevel[colour] * rescale;
        float const range = calibration.whiteLevel * rescale - black;
        float const gain =
                calibration.wbGains[colour] / smallestGain * calibration.exposureGain / range;
        std::vector<int16_t>& table = mTables[colour];
        table.resize(samples);
        for (size_t sample = 0; sample < samples; ++sample) {
            float const light = (static_cast<float>(sample) - black) * gain;
            float const code = kCodeWhite * std::sqrt(std::clamp(light, 0.0f, 1.0f));
            table[sample] = static_cast<int16_t>(code + 0.5f);
        }
    }
}

}  // namespace quen::host::isp
