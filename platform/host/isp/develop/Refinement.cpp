#include "host/isp/develop/Refinement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/isp/develop/Vectorised.h"

namespace quen::host::isp {

namespace {

// Noise is estimated at mid grey, with the slope of the tone curve there.
constexpr float kMidGrey = 0.18f;
constexpr float kToneSlope = 1.195f;
constexpr float kThresholdInSigmas = 3;
constexpr int kMaxThreshold = 30;

constexpr float kStrongSharpening = 16;

// A mean of nine, and a step of the sharpening, in 1/256.
constexpr int kMeanWeight = 28;
constexpr int kShift = 8;
constexpr int kHalf = 1 << (kShift - 1);

// Samples per run: a multiple of every vector size. A scalar remainder would take as long as a
// third of the row.
constexpr int kRun = 64;

/** Threshold in 8-bit steps for noise of a standard deviation. */
int thresholdOf(float sigma, float strength) {
    float const steps = kThresholdInSigmas * sigma * strength;
    return static_cast<int>(std::min<float>(steps + 0.5f, kMaxThreshold));
}

/**
 * Sums over the eight neighbours of a sample: `all` of them; `near`, with the sample itself in
 * place of those that differ by more than the threshold. Compares bytes, so that a vector holds the
 * most.
 */
struct NeighbourSums {
    uint16_t all = 0;
    uint16_t near = 0;

    void add(uint8_t neighbour, uint8_t centre, uint8_t threshold) {
        uint8_t const larger = std::max(neighbour, centre);
        uint8_t const smaller = std::min(neighbour, centre);
        bool const isNear = static_cast<uint8_t>(larger - smaller) <= threshold;
        // A mask: g++ does not vectorise a conditional here.
        uint8_t const mask = static_cast<uint8_t>(isNear ? 0xff : 0);
        all = static_cast<uint16_t>(all + neighbour);
        near = static_cast<uint16_t>(near + (((neighbour ^ centre) & mask) ^ centre));
    }
};

/** One sample with its neighbours' columns given: at the ends they are the sample's own. */
inline uint8_t refineSample(uint8_t const* above, uint8_t const* row, uint8_t const* below,
                            int left, int column, int right, uint8_t threshold, int sharpening) {
    uint8_t const centre = row[column];
    NeighbourSums sums;
    sums.add(above[left], centre, threshold);
    sums.add(above[column], centre, threshold);
    sums.add(above[right], centre, threshold);
    sums.add(row[left], centre, threshold);
    sums.add(row[right], centre, threshold);
    sums.add(below[left], centre, threshold);
    sums.add(below[column], centre, threshold);
    sums.add(below[right], centre, threshold);
    int16_t const near = static_cast<int16_t>(sums.near - 8 * centre);
    int16_t const far = static_cast<int16_t>(sums.all - sums.near);
    int16_t const step = static_cast<int16_t>(near * kMeanWeight - far * sharpening);
    int16_t const moved = static_cast<int16_t>(centre + ((step + kHalf) >> kShift));
    return static_cast<uint8_t>(std::clamp<int16_t>(moved, 0, 255));
}

}  // namespace

Refinement refinementFor(SensorCalibration const& calibration) {
    float const* const gains = calibration.wbGains;
    auto const [smallest, largest] = std::minmax({gains[0], gains[1], gains[2], gains[3]});
    float const light = kMidGrey / calibration.exposureGain;
    float const sigma = 255 * kToneSlope * calibration.exposureGain *
                        std::sqrt(calibration.noiseShot * light + calibration.noiseRead);
    Refinement refinement;
    refinement.lumaThreshold = thresholdOf(sigma, calibration.denoiseStrength);
    refinement.chromaThreshold =
            thresholdOf(sigma * largest / smallest, calibration.denoiseStrength);
    refinement.sharpening =
            static_cast<int>(kStrongSharpening * std::min(calibration.sharpening, 1.0f) + 0.5f);
    return refinement;
}

QUEN_VECTORISED
void refineRow(uint8_t const* above, uint8_t const* row, uint8_t const* below, int width,
               int threshold, int sharpening, uint8_t* __restrict target) {
    uint8_t const limit = static_cast<uint8_t>(threshold);
    int const last = width - 1;
    auto const refineRun = [&](int first, int count) {
        for (int column = first; column < first + count; ++column) {
            target[column] = refineSample(above, row, below, column - 1, column, column + 1, limit,
                                          sharpening);
        }
    };
    target[0] = refineSample(above, row, below, 0, 0, std::min(1, last), limit, sharpening);
    if (last > kRun) {
        for (int column = 1; column < last - kRun; column += kRun) {
            refineRun(column, kRun);
        }
        refineRun(last - kRun, kRun);  // overlaps the previous run
    } else {
        refineRun(1, last - 1);
    }
    if (last > 0) {
        target[last] = refineSample(above, row, below, last - 1, last, last, limit, sharpening);
    }
}

}  // namespace quen::host::isp
