#pragma once

#include "demo/RgbPicture.h"

namespace quen::reprocess {

/** Size of the demo's picture: 12 megapixels. */
constexpr int kDemoWidth = 4000;
constexpr int kDemoHeight = 3000;

/**
 * Draws the demo's scene as a perfect camera would show it: colour patches, gradients, slanted
 * edges, text and fine detail, as sharp as a lens resolves. The same on every machine.
 */
RgbPicture renderDemoScene();

}  // namespace quen::reprocess
