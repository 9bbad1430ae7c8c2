#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/buffers/Picture.h"
#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/** The time of one leg of a request in the ISP. */
struct IspLeg {
    char const* name;  ///< "queue", "develop", "scale", "encode", "hold"; a literal
    std::chrono::microseconds time;
    std::chrono::steady_clock::time_point begin;
};

/** What the ISP did for one request. */
struct IspReport {
    /** In the order of execution; "develop" is everything from unpacking to 4:2:0. */
    std::vector<IspLeg> legs;

    std::string problem;  ///< why the request failed; empty when it did not

    PixelRect crop;      ///< of the input, as used
    bool isRaw = false;  ///< whether a raw image was developed; the next three are set only then
    int rawBits = 0;     ///< depth that the samples were read at
    CalibrationState calibrationState =
            CalibrationState::Absent;  ///< what the input tuning buffer held
    SensorCalibration calibration;     ///< as used

    bool hasCalibrationHeader = false;    ///< whether there was an output tuning buffer to write to
    CalibrationHeader calibrationHeader;  ///< as written to it
};

/**
 * Observes what an ISP device is asked to do and what it does.
 *
 * onConfigured and onRequest run on the caller's thread, onResult on the device's, before the
 * device's callback. The arguments are valid during the call only. An observer must not call the
 * device.
 */
class IspObserver {
  public:
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPResult = vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    virtual ~IspObserver() = default;

    /** A configuration was accepted (OK) or refused. @param problem why; empty when it was not */
    virtual void onConfigured(ISPStreamConfiguration const& config, Status status,
                              std::string const& problem) = 0;

    /** A request was accepted (OK) or refused. @param problem why; empty when it was not */
    virtual void onRequest(ISPRequest const& request, Status status,
                           std::string const& problem) = 0;

    /** A request was executed or abandoned. */
    virtual void onResult(ISPResult const& result, IspReport const& report) = 0;
};

}  // namespace quen::host::isp
