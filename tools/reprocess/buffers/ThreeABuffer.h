#pragma once

#include <cstdint>
#include <optional>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Writes a capture's calibration into a 3A buffer, where the library looks for it.
 *
 * @return the buffer's index, for the request's metadata
 * @throws Failure when there is no 3A buffer
 */
int32_t publishCalibration(SensorCalibration const& calibration, int32_t frameNumber);

/** What the ISP wrote to the start of a 3A buffer. */
struct StoredCalibration {
    host::isp::CalibrationHeader header;
    std::optional<SensorCalibration> calibration;  ///< none when the buffer has none
};

/** Reads the 3A buffer of an index; none when there is no such buffer. */
std::optional<StoredCalibration> readCalibration(int32_t index);

}  // namespace quen::reprocess
