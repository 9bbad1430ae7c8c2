#pragma once

#include <cstdint>

#include "report/FrameInfo.h"

// The names of what --info tells, the same in text and JSON.
namespace quen::reprocess {

/** The name of a pixel format; "unknown" for another. */
char const* formatName(int32_t format);

/** The stage that a configuration is for. */
char const* stageName(isphal::ISPStreamConfiguration const& config);

char const* bayerName(host::isp::BayerOrder order);

/** Where the calibration came from that the ISP used. */
char const* originName(host::isp::CalibrationState state);

}  // namespace quen::reprocess
