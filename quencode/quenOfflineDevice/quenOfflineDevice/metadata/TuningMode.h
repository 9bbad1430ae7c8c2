#pragma once

#include <cstdint>
#include <string>

namespace quen {

/** Inputs of the choice of tuning mode and feature. */
struct CaptureParameters {
    int64_t currentMode;  ///< bit set
    int32_t currentUiMode;
    int32_t sceneMode;
    int32_t feedbackTuning;  ///< bits that pick variants
    bool isNeedRaw14bit;
};

/** No feature code. */
inline constexpr int32_t kNoFeature = 0;

/** A tuning mode and its own feature code, if it has one. */
struct TuningChoice {
    int32_t tuningMode;
    int32_t feature;  ///< or kNoFeature
};

/** Chooses the ISP tuning mode of a raw request; 0 when no capture mode asks for one. */
TuningChoice chooseTuningMode(CaptureParameters const& parameters);

/**
 * Chooses the ISP feature code of a raw request, or kNoFeature.
 *
 * @param appName the application that runs
 */
int32_t chooseFeature(CaptureParameters const& parameters, std::string const& appName);

}  // namespace quen
