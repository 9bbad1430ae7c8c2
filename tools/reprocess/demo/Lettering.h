#pragma once

#include <string_view>

#include "demo/Canvas.h"

namespace quen::reprocess {

/**
 * Writes a line of text with letters of straight strokes.
 *
 * @param x, y where its base line begins
 * @param height of a capital letter, in pixels
 * @param thickness of a stroke, in pixels
 */
void drawText(Canvas& canvas, std::string_view text, double x, double y, double height,
              double thickness, Colour const& ink);

}  // namespace quen::reprocess
