#include "host/isp/Refinement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace quen::host::isp {

namespace {

// Where noise is measured: a mid grey, and the tone curve's steepness there.
constexpr float kMidGrey = 0.18f;
constexpr float kToneSlope = 1.195f;
constexpr float kThresholdInSigmas = 3;
constexpr int kMaxThreshold = 30;

constexpr float kStrongSharpening = 16;

// A mean of nine, and a step of the sharpening, in 1/256.
constexpr int kMeanWeight = 28;
constexpr int kShift = 8;
constexpr int kHalf = 1 << (kShift - 1);

int thresholdOf(float sigma, float strength) {
    float const steps = kThresholdInSigmas * sigma * strength;
    return static_cast<int>(std::min<float>(steps + 0.5f, kMaxThreshold));
}

inline void gather(int neighbour, int centre, int threshold, int16_t& near, int16_t& far) {
    int16_t const difference = static_cast<int16_t>(neighbour - centre);
    bool const isNear = std::abs(difference) <= threshold;
    near = static_cast<int16_t>(near + (isNear ? difference : 0));
    far = static_cast<int16_t>(far + (isNear ? 0 : difference));
}

inline uint8_t refined(int centre, int near, int far, int sharpening) {
    int const step = static_cast<int16_t>(near * kMeanWeight - far * sharpening);
    return static_cast<uint8_t>(std::clamp(centre + ((step + kHalf) >> kShift), 0, 255));
}

/** One sample with its neighbours' columns given: at the ends they are the sample's own. */
inline uint8_t refineSample(uint8_t const* above, uint8_t const* row, uint8_t const* below,
                            int left, int column, int right, int threshold, int sharpening) {
    int const centre = row[column];
    int16_t near = 0;
    int16_t far = 0;
    gather(above[left], centre, threshold, near, far);
    gather(above[column], centre, threshold, near, far);
    gather(above[right], centre, threshold, near, far);
    gather(row[left], centre, threshold, near, far);
    gather(row[right], centre, threshold, near, far);
    gather(below[left], centre, threshold, near, far);
    gather(below[column], centre, threshold, near, far);
    gather(below[right], centre, threshold, near, far);
    return refined(centre, near, far, sharpening);
}

}  // namespace

Refinement refinementFor(CaptureFacts const& facts) {
    float const* const gains = facts.wbGains;
    auto const [smallest, largest] = std::minmax({gains[0], gains[1], gains[2], gains[3]});
    float const light = kMidGrey / facts.exposureGain;
    float const sigma = 255 * kToneSlope * facts.exposureGain *
                        std::sqrt(facts.noiseShot * light + facts.noiseRead);
    Refinement refinement;
    refinement.lumaThreshold = thresholdOf(sigma, facts.denoiseStrength);
    refinement.chromaThreshold = thresholdOf(sigma * largest / smallest, facts.denoiseStrength);
    refinement.sharpening =
            static_cast<int>(kStrongSharpening * std::min(facts.sharpening, 1.0f) + 0.5f);
    return refinement;
}

void refineRow(uint8_t const* above, uint8_t const* row, uint8_t const* below, int width,
               int threshold, int sharpening, uint8_t* __restrict target) {
    int const last = width - 1;
    target[0] = refineSample(above, row, below, 0, 0, std::min(1, last), threshold, sharpening);
    for (int column = 1; column < last; ++column) {
        target[column] = refineSample(above, row, below, column - 1, column, column + 1, threshold,
                                      sharpening);
    }
    if (last > 0) {
        target[last] = refineSample(above, row, below, last - 1, last, last, threshold, sharpening);
    }
}

}  // namespace quen::host::isp
