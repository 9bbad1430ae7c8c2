#include "host/isp/develop/Rendering.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/isp/develop/Vectorised.h"

namespace quen::host::isp {

namespace {

constexpr int kLinearWhite = 8191;

constexpr float kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

/** The sRGB tone curve, linear light 0..1 to 0..255. */
uint8_t toneOf(float light) {
    float const value =
            light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1 / 2.4f) - 0.055f;
    return static_cast<uint8_t>(255 * std::clamp(value, 0.0f, 1.0f) + 0.5f);
}

/** The linear light of a companded sample, clamped to its range. */
inline float linear(int16_t code) {
    float const bounded = std::clamp<int16_t>(code, 0, kCodeWhite);
    return bounded * bounded;
}

/** Applies a matrix to companded samples in place; the result is linear, 0..kLinearWhite. */
QUEN_VECTORISED
void applyMatrix(std::array<float, 9> const& m, RgbHalfRows const& samples, int count) {
    int16_t* __restrict const red = samples[0];
    int16_t* __restrict const green = samples[1];
    int16_t* __restrict const blue = samples[2];
    float const white = kLinearWhite;
    for (int i = 0; i < count; ++i) {
        float const r = linear(red[i]);
        float const g = linear(green[i]);
        float const b = linear(blue[i]);
        float const outR = m[0] * r + m[1] * g + m[2] * b + 0.5f;
        float const outG = m[3] * r + m[4] * g + m[5] * b + 0.5f;
        float const outB = m[6] * r + m[7] * g + m[8] * b + 0.5f;
        red[i] = static_cast<int16_t>(std::max(0.0f, std::min(white, outR)));
        green[i] = static_cast<int16_t>(std::max(0.0f, std::min(white, outG)));
        blue[i] = static_cast<int16_t>(std::max(0.0f, std::min(white, outB)));
    }
}

/** Clamps companded samples to their range, in place. */
QUEN_VECTORISED
void clampCodes(RgbHalfRows const& samples, int count) {
    for (int16_t* const channel : samples) {
        for (int i = 0; i < count; ++i) {
            channel[i] = std::clamp<int16_t>(channel[i], 0, kCodeWhite);
        }
    }
}

}  // namespace

Rendering::Rendering(SensorCalibration const& calibration)
    : mHasMatrix(!std::equal(std::begin(kIdentity), std::end(kIdentity), calibration.colorMatrix)) {
    constexpr float kScale = static_cast<float>(kLinearWhite) / (kCodeWhite * kCodeWhite);
    std::transform(std::begin(calibration.colorMatrix), std::end(calibration.colorMatrix),
                   mMatrix.begin(), [](float value) { return value * kScale; });
    int const white = mHasMatrix ? kLinearWhite : kCodeWhite;
    mTone.resize(static_cast<size_t>(white) + 1);
    for (int i = 0; i <= white; ++i) {
        float const value = static_cast<float>(i) / static_cast<float>(white);
        mTone[static_cast<size_t>(i)] = toneOf(mHasMatrix ? value : value * value);
    }
}

void Rendering::renderRow(RgbHalfRows const& even, RgbHalfRows const& odd, int count,
                          uint32_t* pixels) const {
    for (RgbHalfRows const* const samples : {&even, &odd}) {
        if (mHasMatrix) {
            applyMatrix(mMatrix, *samples, count);
        } else {
            clampCodes(*samples, count);
        }
    }
    uint8_t const* const tone = mTone.data();
    auto const pixel = [tone](RgbHalfRows const& samples, int i) {
        return uint32_t{tone[samples[0][i]]} << 16 | uint32_t{tone[samples[1][i]]} << 8 |
               uint32_t{tone[samples[2][i]]};
    };
    for (int i = 0; i < count; ++i) {
        *pixels++ = pixel(even, i);
        *pixels++ = pixel(odd, i);
    }
}

}  // namespace quen::host::isp
