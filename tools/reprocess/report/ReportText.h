#pragma once

#include <string>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/buffers/SensorCalibration.h"
#include "host/isp/device/IspObserver.h"

#include "report/FrameInfo.h"

// The traffic of the ISP's interface as text for --info: lines, each with its newline.
namespace quen::reprocess {

/** A configuration: its streams, session settings and answer. */
std::string configurationText(isphal::ISPStreamConfiguration const& config, isphal::Status status);

/** A request: its buffers, settings and answer. */
std::string requestText(isphal::ISPRequest const& request, isphal::Status status);

/** A result: crop, calibration, metadata and times. */
std::string resultText(isphal::ISPResult const& result, host::isp::IspReport const& report);

std::string calibrationText(host::isp::SensorCalibration const& calibration);

std::string calibrationHeaderText(host::isp::CalibrationHeader const& header);

/** The lines, indented by two more blanks. */
std::string indented(std::string const& lines);

}  // namespace quen::reprocess
