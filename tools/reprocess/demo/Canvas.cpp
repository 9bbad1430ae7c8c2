#include "demo/Canvas.h"

namespace quen::reprocess {

void Canvas::fillRect(int x, int y, int width, int height, Colour const& colour) {
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            setPixel(column, row, colour);
        }
    }
}

void Canvas::drawLine(double fromX, double fromY, double toX, double toY, double thickness,
                      Colour const& colour) {
    double const alongX = toX - fromX;
    double const alongY = toY - fromY;
    double const length = std::max(std::hypot(alongX, alongY), 1e-9);
    fillShape((fromX + toX) / 2, (fromY + toY) / 2, (length + thickness) / 2, colour,
              [&](double x, double y) {
                  double const part =
                          ((x - fromX) * alongX + (y - fromY) * alongY) / (length * length);
                  double const nearest = std::clamp(part, 0.0, 1.0);
                  return std::hypot(x - fromX - nearest * alongX, y - fromY - nearest * alongY) -
                         thickness / 2;
              });
}

void Canvas::blend(int x, int y, double covered, Colour const& colour) {
    if (x < 0 || y < 0 || x >= mWidth || y >= mHeight) {
        return;
    }
    uint8_t* const pixel = mPicture.row(mY + y) + ptrdiff_t{3} * (mX + x);
    for (size_t channel = 0; channel < colour.size(); ++channel) {
        double const value = pixel[channel] + covered * (colour[channel] - pixel[channel]);
        pixel[channel] = static_cast<uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5);
    }
}

}  // namespace quen::reprocess
