#pragma once

#include <cstdint>

/** Gralloc usage bits of the CPU. */
inline constexpr uint64_t kCpuReadOften = 0x3;
inline constexpr uint64_t kCpuWriteOften = 0x30;
inline constexpr uint64_t kCpuReadWriteOften = kCpuReadOften | kCpuWriteOften;
