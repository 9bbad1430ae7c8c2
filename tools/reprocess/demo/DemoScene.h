#pragma once

#include <opencv2/core/mat.hpp>

namespace quen::reprocess {

/** Size of the demo's picture: 12 megapixels. */
constexpr int kDemoWidth = 4000;
constexpr int kDemoHeight = 3000;

/**
 * Draws the demo's scene as a perfect camera would show it: colour patches, gradients, slanted
 * edges, text and fine detail, as sharp as a lens resolves. The same on every machine.
 *
 * @return 8-bit sRGB, channels in the order red, green, blue
 */
cv::Mat renderDemoScene();

}  // namespace quen::reprocess
