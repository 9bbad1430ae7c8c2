#pragma once

#include <cstdint>
#include <optional>

#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Leaves a capture's facts where the library looks for them: in a 3A buffer.
 *
 * @return the buffer's index, for the request's metadata
 * @throws Failure when there is no buffer to be had
 */
int32_t publishTuningData(CaptureFacts const& facts, int32_t frameNumber);

/** What the ISP wrote at the beginning of a 3A buffer. */
struct TuningReport {
    host::isp::TuningHeader header;
    std::optional<CaptureFacts> facts;  ///< none when the buffer has none
};

/** Reads a 3A buffer; none when there is none of that index. */
std::optional<TuningReport> readTuningData(int32_t index);

}  // namespace quen::reprocess
