#pragma once

#include <cstdint>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

namespace quen::host::isp {

/**
 * A client's graphic buffer, imported by the ISP: it stays valid without the client's handle.
 * Unlocked and freed when destroyed. Not thread-safe.
 */
class GraphicBuffer {
  public:
    using IMapper = android::hardware::graphics::mapper::V4_0::IMapper;
    using PlaneLayout = aidl::android::hardware::graphics::common::PlaneLayout;
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    GraphicBuffer() = default;
    GraphicBuffer(GraphicBuffer&& other) noexcept;
    GraphicBuffer& operator=(GraphicBuffer&& other) noexcept;
    ~GraphicBuffer();

    /**
     * Imports a raw handle and reads its plane layouts; releases the buffer held before.
     *
     * @return OK; ILLEGAL_ARGUMENT for a null handle and for one that is no buffer; RESOURCE_ERROR
     *         when the mapper fails
     */
    Status import(android::sp<IMapper> const& mapper, native_handle_t const* handle);

    bool isHeld() const { return mBuffer != nullptr; }

    /** Plane layouts of the buffer. */
    std::vector<PlaneLayout> const& planes() const { return mPlanes; }

    /**
     * Locks the whole buffer for reading and writing, unless it is locked already.
     *
     * @return its address; null when it cannot be locked
     */
    uint8_t* lock();

    /** Unlocks, and waits until the CPU's writes are done. */
    void unlock();

  private:
    Status readPlanes();
    void reset();

    android::sp<IMapper> mMapper;
    void* mBuffer = nullptr;
    uint8_t* mAddress = nullptr;  ///< while locked
    std::vector<PlaneLayout> mPlanes;
};

}  // namespace quen::host::isp
