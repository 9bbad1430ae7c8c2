#pragma once

#include <cstdint>

/** Bytes of every tuning-data buffer. */
inline constexpr uint32_t kTuningDataBytes = 0x1fa400;

/** Where the data of a handle around a 3A descriptor holds it: see TuningHandle.h. */
inline constexpr int kTuningDescriptorSlot = 1;
