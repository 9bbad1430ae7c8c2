#include "host/isp/develop/ScaledPlane.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "host/base/Parallel.h"
#include "host/isp/develop/Vectorised.h"

namespace quen::host::isp {

namespace {

constexpr int kBandRows = 32;

// Weights add up to 1 in 14 bits; a column between the passes keeps six bits of fraction. A cubic
// exceeds its samples by a quarter at most: 16 bits hold it.
constexpr int kWeightBits = 14;
constexpr int kOne = 1 << kWeightBits;
constexpr int kFractionBits = 6;

// The slope at a sample, as a part of the step between its neighbours; steeper than the usual half.
constexpr double kCubicSharpness = 0.75;

constexpr int kCubicTaps = 4;

/** The samples of one axis that make each sample of the target. */
struct Taps {
    int count = 0;                 ///< source samples for each of the target
    std::vector<int> first;        ///< by target sample: the first of them
    std::vector<int16_t> weights;  ///< `count` by target sample; their sum is kOne
};

/** The weight of a sample at a distance in a cubic interpolation. */
double cubicWeight(double distance) {
    double const d = std::abs(distance);
    double const a = -kCubicSharpness;
    if (d < 1) {
        return ((a + 2) * d - (a + 3)) * d * d + 1;
    }
    return d < 2 ? ((a * d - 5 * a) * d + 8 * a) * d - 4 * a : 0;
}

/** The weight of the source sample at `position` in a target sample of `scale` around `centre`. */
double weightAt(int position, double centre, double scale) {
    if (scale <= 1) {
        return cubicWeight(position + 0.5 - centre);
    }
    double const begin = std::max<double>(position, centre - scale / 2);
    double const end = std::min<double>(position + 1, centre + scale / 2);
    return std::max(0.0, end - begin);
}

/** Rounds weights so that their sum stays; the largest takes what rounding leaves. */
void round(std::vector<double> const& exact, int16_t* weights) {
    double sum = 0;
    for (double const weight : exact) {
        sum += weight;
    }
    int rest = kOne;
    for (size_t i = 0; i < exact.size(); ++i) {
        weights[i] = static_cast<int16_t>(std::lround(exact[i] / sum * kOne));
        rest -= weights[i];
    }
    int16_t* const largest = std::max_element(weights, weights + exact.size());
    *largest = static_cast<int16_t>(*largest + rest);
}

/** The taps to scale `from` samples to `to`. */
Taps tapsFor(int from, int to) {
    double const scale = static_cast<double>(from) / to;
    double const reach = scale <= 1 ? 2 : scale / 2;
    Taps taps;
    taps.count = std::min(from, static_cast<int>(std::ceil(2 * reach)) + (scale <= 1 ? 0 : 1));
    size_t const count = static_cast<size_t>(taps.count);
    taps.weights.resize(static_cast<size_t>(to) * count);
    std::vector<double> exact(count);
    for (int i = 0; i < to; ++i) {
        double const centre = (i + 0.5) * scale;
        int const begin = static_cast<int>(std::floor(centre - reach + (scale <= 1 ? 0.5 : 0)));
        int const first = std::clamp(begin, 0, from - taps.count);
        std::fill(exact.begin(), exact.end(), 0);
        // Samples beyond the border count for the one at it.
        for (int at = begin; at < begin + std::max(taps.count, kCubicTaps); ++at) {
            int const nearest = std::clamp(at, first, first + taps.count - 1);
            exact[static_cast<size_t>(nearest - first)] += weightAt(at, centre, scale);
        }
        taps.first.push_back(first);
        round(exact, taps.weights.data() + static_cast<size_t>(i) * count);
    }
    return taps;
}

/** Adds a weighted row to the sums of the columns. */
QUEN_VECTORISED
void addRow(uint8_t const* row, int weight, int size, int32_t* sums) {
    for (int i = 0; i < size; ++i) {
        sums[i] += weight * row[i];
    }
}

/** Rounds the sums of the columns to samples with a fraction. */
QUEN_VECTORISED
void roundColumns(int32_t const* sums, int size, int16_t* columns) {
    constexpr int kShift = kWeightBits - kFractionBits;
    for (int i = 0; i < size; ++i) {
        columns[i] = static_cast<int16_t>((sums[i] + (1 << (kShift - 1))) >> kShift);
    }
}

/** Makes a row of the target from columns; `Count` is the taps' own, known to the compiler, or 0.
 */
template <int Count>
void scaleRow(int16_t const* columns, Taps const& taps, int channels, int width, uint8_t* row) {
    constexpr int kShift = kWeightBits + kFractionBits;
    int const count = Count != 0 ? Count : taps.count;
    int16_t const* weights = taps.weights.data();
    for (int x = 0; x < width; ++x, weights += count) {
        int16_t const* const first =
                columns + ptrdiff_t{taps.first[static_cast<size_t>(x)]} * channels;
        for (int channel = 0; channel < channels; ++channel) {
            int32_t sum = 1 << (kShift - 1);
            for (int i = 0; i < count; ++i) {
                sum += weights[i] * first[i * channels + channel];
            }
            *row++ = static_cast<uint8_t>(std::clamp(sum >> kShift, 0, 255));
        }
    }
}

/** Scales bands of rows, in memory of its own. Not thread-safe. */
class BandScaler {
  public:
    BandScaler(Plane const& source, Plane const& target, Taps const& across, Taps const& down)
        : mSource(source),
          mTarget(target),
          mAcross(across),
          mDown(down),
          mSums(static_cast<size_t>(source.width * source.channels)),
          mColumns(mSums.size()) {}

    void scale(int band) {
        int const last = std::min((band + 1) * kBandRows, mTarget.height);
        for (int y = band * kBandRows; y < last; ++y) {
            sumRows(y);
            auto* const scale = mAcross.count == kCubicTaps ? scaleRow<kCubicTaps> : scaleRow<0>;
            scale(mColumns.data(), mAcross, mTarget.channels, mTarget.width,
                  mTarget.data + static_cast<size_t>(y) * mTarget.stride);
        }
    }

  private:
    void sumRows(int y) {
        int const size = static_cast<int>(mSums.size());
        std::fill(mSums.begin(), mSums.end(), 0);
        uint8_t const* row =
                mSource.data +
                static_cast<size_t>(mDown.first[static_cast<size_t>(y)]) * mSource.stride;
        for (int i = 0; i < mDown.count; ++i, row += mSource.stride) {
            addRow(row, mDown.weights[static_cast<size_t>(y * mDown.count + i)], size,
                   mSums.data());
        }
        roundColumns(mSums.data(), size, mColumns.data());
    }

    Plane const& mSource;
    Plane const& mTarget;
    Taps const& mAcross;
    Taps const& mDown;
    std::vector<int32_t> mSums;     // a row of the target, in the columns of the source
    std::vector<int16_t> mColumns;  // the same, rounded
};

}  // namespace

void scalePlane(Plane const& source, Plane const& target) {
    Taps const across = tapsFor(source.width, target.width);
    Taps const down = tapsFor(source.height, target.height);
    inParallel((target.height + kBandRows - 1) / kBandRows, [&] {
        auto const scaler = std::make_shared<BandScaler>(source, target, across, down);
        return [scaler](int band) { scaler->scale(band); };
    });
}

}  // namespace quen::host::isp
