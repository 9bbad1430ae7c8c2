#pragma once

#include <cstdint>

#include <hidl/HidlSupport.h>

#include "host/isp/buffers/GraphicBuffer.h"
#include "host/isp/buffers/SensorCalibration.h"

namespace quen::host::isp {

/**
 * The tuning-data buffer beside an image, which carries a sensor calibration; held for as long as
 * the ISP needs it.
 *
 * It comes in one of two forms: as a graphic buffer, or as a handle of one descriptor slot and two
 * integers whose first integer is the descriptor. There may be none. Not thread-safe.
 */
class CalibrationBuffer {
  public:
    using Status = GraphicBuffer::Status;

    CalibrationBuffer() = default;
    CalibrationBuffer(CalibrationBuffer&& other) noexcept;
    CalibrationBuffer& operator=(CalibrationBuffer&& other) noexcept;
    ~CalibrationBuffer();

    /**
     * Opens a tuning buffer: imports the graphic buffer, or duplicates the descriptor.
     *
     * @param handle may be null: there is no buffer then
     * @return OK; ILLEGAL_ARGUMENT when it has neither form, or has fewer bytes than
     *         kCalibrationBufferBytes; RESOURCE_ERROR when that fails
     */
    Status open(android::sp<GraphicBuffer::IMapper> const& mapper, native_handle_t const* handle);

    bool isThere() const { return mDescriptor >= 0 || mGraphic.isHeld(); }

    /**
     * Reads header and calibration.
     *
     * @param calibration set when it is Present, left alone otherwise
     * @return whether the buffer could be read; true with CalibrationState::Absent when there is
     * none
     */
    bool read(CalibrationHeader& header, CalibrationState& state, SensorCalibration& calibration);

    /** Writes header and calibration. @return whether there is a buffer and it could be written */
    bool write(CalibrationHeader const& header, SensorCalibration const& calibration);

  private:
    Status openDescriptor(int descriptor);
    uint8_t* map();
    void unmap(uint8_t* address);
    void closeDescriptor();

    GraphicBuffer mGraphic;
    int mDescriptor = -1;
};

}  // namespace quen::host::isp
