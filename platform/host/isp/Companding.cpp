#include "host/isp/Companding.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace quen::host::isp {

Companding::Companding(CaptureFacts const& facts, int bits) {
    float const rescale =
            static_cast<float>((1 << bits) - 1) / static_cast<float>((1 << facts.levelBits) - 1);
    float const smallestGain =
            *std::min_element(std::begin(facts.wbGains), std::end(facts.wbGains));
    size_t const samples = size_t{1} << bits;
    for (int colour = 0; colour < kBayerColours; ++colour) {
        float const black = facts.blackLevel[colour] * rescale;
        float const range = facts.whiteLevel * rescale - black;
        float const gain = facts.wbGains[colour] / smallestGain * facts.exposureGain / range;
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
