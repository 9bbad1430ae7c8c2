#pragma once

#include <cstdint>

#include <hidl/HidlSupport.h>

#include "host/isp/GraphicBuffer.h"
#include "host/isp/TuningData.h"

namespace quen::host::isp {

/**
 * The tuning-data buffer beside an image, kept for as long as the ISP needs it.
 *
 * It comes in one of two forms: as a graphic buffer, or as a handle of one descriptor slot and two
 * integers whose first integer is the descriptor. There may be none. One thread at a time.
 */
class TuningBuffer {
  public:
    using Status = GraphicBuffer::Status;

    TuningBuffer() = default;
    TuningBuffer(TuningBuffer&& other) noexcept;
    TuningBuffer& operator=(TuningBuffer&& other) noexcept;
    ~TuningBuffer();

    /**
     * Takes hold of a tuning buffer: of the graphic buffer, or of a duplicate of the descriptor.
     *
     * @param handle may be null: there is no buffer then
     * @return OK; ILLEGAL_ARGUMENT when it is neither form, or has fewer bytes than
     *         kTuningBufferBytes; RESOURCE_ERROR when it cannot be held
     */
    Status open(android::sp<GraphicBuffer::IMapper> const& mapper, native_handle_t const* handle);

    bool isThere() const { return mDescriptor >= 0 || mGraphic.isHeld(); }

    /**
     * Reads header and facts.
     *
     * @param facts set when they are Present, left alone otherwise
     * @return whether the buffer could be read; true with FactsState::Absent when there is none
     */
    bool read(TuningHeader& header, FactsState& state, CaptureFacts& facts);

    /** Writes header and facts. @return whether there is a buffer and it could be written */
    bool write(TuningHeader const& header, CaptureFacts const& facts);

  private:
    Status openDescriptor(int descriptor);
    uint8_t* map();
    void unmap(uint8_t* address);
    void closeDescriptor();

    GraphicBuffer mGraphic;
    int mDescriptor = -1;
};

}  // namespace quen::host::isp
