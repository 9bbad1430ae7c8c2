#pragma once

// What the ISP takes. A client that asks beforehand is spared the refusal of a configuration, which
// ends its process.
namespace quen::host::isp {

/** Smallest width and height of an input, in pixels. */
constexpr int kSmallestInputSide = 8;

/** Largest width and height of any stream, in pixels: what a JPEG can hold. */
constexpr int kLargestSide = 65500;

/** Pixels that the width of packed 10-bit samples is a multiple of. */
constexpr int kPackedGroup = 4;

}  // namespace quen::host::isp
