#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <cutils/native_handle.h>

namespace quen {

/** Bytes of every tuning-data buffer. */
inline constexpr uint32_t kTuningDataBytes = 0x1fa400;

/** Position of the 3A descriptor in such a handle's data. */
inline constexpr int kTuningDescriptorSlot = 1;

/**
 * The native handles that one request builds around 3A descriptors; freed with the object.
 *
 * Such a handle reaches the request's records without ownership: what copies it clones it, and
 * closing it would close the descriptor slot, which holds no descriptor of ours. The object has to
 * outlive the request's local records. The descriptors stay untouched. One thread.
 */
class TuningHandles {
  public:
    TuningHandles() = default;
    ~TuningHandles();

    TuningHandles(TuningHandles const&) = delete;
    TuningHandles& operator=(TuningHandles const&) = delete;

    /**
     * Builds a handle around a 3A descriptor: one descriptor slot holding 0, then two integers, the
     * descriptor (where the result side looks for it) and 0.
     *
     * @return owned by this object; null without memory
     */
    native_handle_t* wrap(int descriptor);

  private:
    // A request has one input and, nearly always, one output: no list is allocated for them.
    std::array<native_handle_t*, 2> mFirst = {};
    std::vector<native_handle_t*> mFurther;
};

}  // namespace quen
