#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "demo/RgbPicture.h"

namespace quen::reprocess {

/** Red, green and blue, 0 to 255. */
using Colour = std::array<double, 3>;

/** A grey of that value. */
constexpr Colour grey(double value) {
    return {value, value, value};
}

/** A rectangle of a picture that is drawn on. Points beyond it are left out. */
class Canvas {
  public:
    /** Everything of a picture, which must outlive the canvas. */
    explicit Canvas(RgbPicture& picture) : Canvas(picture, 0, 0, picture.width, picture.height) {}

    /** A rectangle of this canvas. */
    Canvas part(int x, int y, int width, int height) const {
        return Canvas(mPicture, mX + x, mY + y, width, height);
    }

    int width() const { return mWidth; }
    int height() const { return mHeight; }

    void fill(Colour const& colour) { fillRect(0, 0, mWidth, mHeight, colour); }
    void fillRect(int x, int y, int width, int height, Colour const& colour);

    void setPixel(int x, int y, Colour const& colour) { blend(x, y, 1, colour); }

    /**
     * Fills a shape with smooth edges.
     *
     * @param x, y, reach the shape lies within `reach` of that point along either axis
     * @param distance called with the x and y of points: how far outside of the shape they are, in
     *        pixels, negative inside
     */
    template <typename Distance>
    void fillShape(double x, double y, double reach, Colour const& colour,
                   Distance const& distance) {
        int const right = std::min(static_cast<int>(x + reach) + 2, mWidth);
        int const bottom = std::min(static_cast<int>(y + reach) + 2, mHeight);
        for (int row = std::max(static_cast<int>(y - reach) - 1, 0); row < bottom; ++row) {
            for (int column = std::max(static_cast<int>(x - reach) - 1, 0); column < right;
                 ++column) {
                double const covered = 0.5 - distance(column + 0.5, row + 0.5);
                if (covered > 0) {
                    blend(column, row, std::min(covered, 1.0), colour);
                }
            }
        }
    }

    /** Draws a straight line with round ends. */
    void drawLine(double fromX, double fromY, double toX, double toY, double thickness,
                  Colour const& colour);

  private:
    Canvas(RgbPicture& picture, int x, int y, int width, int height)
        : mPicture(picture), mX(x), mY(y), mWidth(width), mHeight(height) {}

    void blend(int x, int y, double covered, Colour const& colour);

    RgbPicture& mPicture;
    int const mX;
    int const mY;
    int const mWidth;
    int const mHeight;
};

}  // namespace quen::reprocess
