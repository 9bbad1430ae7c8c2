#include "inputs/Corrections.h"

#include <algorithm>

#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {

void applyCorrections(InputOptions const& options, SensorCalibration& calibration) {
    if (options.black) {
        std::copy(options.black->begin(), options.black->end(), calibration.blackLevel);
    }
    if (options.wb) {
        auto const& [red, green, blue] = *options.wb;
        calibration.wbGains[kRed] = red;
        calibration.wbGains[kGreenOfRedRows] = green;
        calibration.wbGains[kGreenOfBlueRows] = green;
        calibration.wbGains[kBlue] = blue;
    }
    if (options.matrix) {
        std::copy(options.matrix->begin(), options.matrix->end(), calibration.colorMatrix);
    }
    calibration.whiteLevel = options.white.value_or(calibration.whiteLevel);
    float const largest = static_cast<float>((1 << calibration.levelBits) - 1);
    if (calibration.whiteLevel > largest) {
        throw Failure(format("has samples up to %.0f, and --white says %.0f", largest,
                             calibration.whiteLevel),
                      "check --white, or give the depth with --bits");
    }
    float const black =
            *std::max_element(std::begin(calibration.blackLevel), std::end(calibration.blackLevel));
    if (black >= calibration.whiteLevel) {
        throw Failure(format("would be all black: its black level of %.0f is not below its white "
                             "level of %.0f",
                             black, calibration.whiteLevel),
                      "give the true ones with --black and --white");
    }
}

}  // namespace quen::reprocess
