#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/buffers/Picture.h"
#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/** How long one leg of a request's road through the ISP took. */
struct IspLeg {
    char const* name;  ///< "queue", "develop", "scale", "encode", "hold"; a literal
    std::chrono::microseconds time;
};

/** What the ISP did for one request. */
struct IspReport {
    /** In the order in which they were gone; "develop" is everything from unpacking to 4:2:0. */
    std::vector<IspLeg> legs;

    PixelRect crop;      ///< of the input, as used
    bool isRaw = false;  ///< whether an image was developed: only then do the following count
    int rawBits = 0;     ///< depth that the samples were read at
    CalibrationState calibrationState =
            CalibrationState::Absent;  ///< what the input tuning buffer held
    SensorCalibration calibration;     ///< as used

    bool hasCalibrationHeader = false;    ///< whether there was an output tuning buffer to write to
    CalibrationHeader calibrationHeader;  ///< as written to it
};

/**
 * Watches an ISP device at work, for the eyes of an engineer.
 *
 * Configurations and requests are told on the caller's thread, results on the device's own, before
 * the device's callback hears of them. What the arguments point at is valid during the call only.
 * An observer must not call the device.
 */
class IspObserver {
  public:
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPResult = vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    virtual ~IspObserver() = default;

    /** A configuration was asked for, with that outcome. */
    virtual void onConfigured(ISPStreamConfiguration const& config, Status status) = 0;

    /** A request came in and was accepted (OK) or refused. */
    virtual void onRequest(ISPRequest const& request, Status status) = 0;

    /** A request was done. */
    virtual void onResult(ISPResult const& result, IspReport const& report) = 0;
};

}  // namespace quen::host::isp
