#include "demo/DemoScene.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <vector>

#include "demo/Canvas.h"
#include "demo/Lettering.h"

namespace quen::reprocess {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Patches of a colour chart in 8-bit sRGB: skin and sky colours, primaries, a row of greys.
constexpr uint8_t kPatches[24][3] = {
        {114, 80, 66},   {198, 150, 130}, {92, 122, 158}, {90, 108, 66},   {132, 128, 176},
        {104, 188, 170}, {216, 124, 46},  {74, 92, 166},  {192, 84, 98},   {94, 60, 108},
        {160, 188, 64},  {228, 162, 44},  {52, 62, 146},  {72, 148, 74},   {172, 54, 60},
        {236, 200, 36},  {186, 86, 148},  {22, 134, 164}, {242, 242, 240}, {202, 202, 202},
        {160, 160, 160}, {122, 122, 122}, {84, 84, 84},   {50, 50, 50},
};

/** Fills the scene with a vertical gradient. */
void drawBackground(Canvas scene) {
    for (int y = 0; y < scene.height(); ++y) {
        double const down = static_cast<double>(y) / scene.height();
        scene.fillRect(0, y, scene.width(), 1, {118 + 52 * down, 138 + 24 * down, 164 - 26 * down});
    }
}

/** Draws the patches of the colour chart. */
void drawPatches(Canvas scene) {
    scene.fill(grey(36));
    int const width = scene.width() / 6;
    int const height = scene.height() / 4;
    for (int i = 0; i < 24; ++i) {
        uint8_t const(&patch)[3] = kPatches[i];
        scene.fillRect(i % 6 * width + 14, i / 6 * height + 14, width - 28, height - 28,
                       {double(patch[0]), double(patch[1]), double(patch[2])});
    }
}

/** Ramps from dark to light in grey and the primaries, and one through all hues. */
void drawGradients(Canvas scene) {
    constexpr double kWeights[4][3] = {
            {1, 1, 1}, {1, 0.25, 0.25}, {0.25, 1, 0.25}, {0.25, 0.25, 1}};
    int const band = scene.height() / 5;
    for (int x = 0; x < scene.width(); ++x) {
        double const along = static_cast<double>(x) / (scene.width() - 1);
        Colour colour;
        for (int ramp = 0; ramp < 4; ++ramp) {
            for (size_t channel = 0; channel < 3; ++channel) {
                colour[channel] = 8 + 232 * along * kWeights[ramp][channel];
            }
            scene.fillRect(x, ramp * band, 1, band, colour);
        }
        for (size_t channel = 0; channel < 3; ++channel) {
            colour[channel] = 128 + 80 * std::cos(2 * kPi * (along - double(channel) / 3));
        }
        scene.fillRect(x, 4 * band, 1, scene.height() - 4 * band, colour);
    }
}

/** Squares turned by a few degrees, so that their edges cross the pixel grid at every phase. */
void drawSlantedEdges(Canvas scene) {
    struct Pair {
        Colour ground;
        Colour square;
    };
    constexpr Pair kPairs[] = {
            {grey(214), grey(40)},
            {grey(40), grey(214)},
            {{196, 62, 58}, {228, 226, 220}},
            {{46, 76, 168}, {222, 196, 60}},
            {{60, 142, 78}, {176, 78, 146}},
    };
    int const cell = scene.width() / static_cast<int>(std::size(kPairs));
    double const half = std::min(cell, scene.height()) * 0.3;
    int x = 0;
    double degrees = 5;
    for (Pair const& pair : kPairs) {
        Canvas field = scene.part(x, 0, cell, scene.height());
        field.fill(pair.ground);
        double const middleX = cell / 2.0;
        double const middleY = scene.height() / 2.0;
        double const cosine = std::cos(degrees * kPi / 180);
        double const sine = std::sin(degrees * kPi / 180);
        field.fillShape(middleX, middleY, 1.5 * half, pair.square, [&](double px, double py) {
            double const along = (px - middleX) * cosine + (py - middleY) * sine;
            double const across = (py - middleY) * cosine - (px - middleX) * sine;
            return std::max(std::abs(along), std::abs(across)) - half;
        });
        x += cell;
        degrees += 8;
    }
}

/** Writes lines of text of falling size. */
void drawLines(Canvas scene) {
    constexpr Colour kInks[] = {grey(24), grey(24), {150, 30, 40}, {30, 50, 130}};
    scene.fill(grey(232));
    double y = 60;
    int turn = 0;
    for (double height = 52; height > 10.5; height *= 0.82, ++turn) {
        y += 1.14 * height;
        drawText(scene, "The quick brown fox jumps over the lazy dog 0123456789", 30, y, height,
                 std::max(1.0, height / 13), kInks[turn % 4]);
        y += 0.86 * height;
    }
}

/** A star whose rays narrow towards the centre, beyond what a camera resolves. */
void drawStar(Canvas scene) {
    double const middleX = scene.width() / 2.0;
    double const middleY = scene.height() / 2.0;
    double const radius = std::min(middleX, middleY) * 0.94;
    constexpr double kRays = 48;
    for (int y = 0; y < scene.height(); ++y) {
        for (int x = 0; x < scene.width(); ++x) {
            double const away = std::hypot(x - middleX, y - middleY);
            double const wave = std::cos(kRays * std::atan2(y - middleY, x - middleX));
            // Grey where a pair of rays spans less than four pixels.
            double const contrast = std::clamp(2 * kPi * away / kRays / 4 - 1, 0.0, 1.0);
            double const value = away < radius ? 128 + 92 * contrast * std::tanh(3 * wave) : 200;
            scene.setPixel(x, y, grey(value));
        }
    }
}

/** Rings that grow finer outwards. */
void drawRings(Canvas scene) {
    double const finest = 0.16;  // cycles a pixel at the rim
    double const reach = scene.height() / 2.0;
    for (int y = 0; y < scene.height(); ++y) {
        for (int x = 0; x < scene.width(); ++x) {
            double const away = std::hypot(x - scene.width() / 2.0, y - reach);
            double const phase = kPi * finest * away * away / reach;
            double const value = away < reach ? 128 + 80 * std::cos(phase) : 128;
            scene.setPixel(x, y, grey(value));
        }
    }
}

/** Fills an ellipse; `length` and `thickness` are the halves of its axes. */
void fillEllipse(Canvas& scene, double x, double y, double length, double thickness, double turn,
                 Colour const& colour) {
    double const cosine = std::cos(turn);
    double const sine = std::sin(turn);
    scene.fillShape(x, y, std::max(length, thickness), colour, [&](double px, double py) {
        double const along = ((px - x) * cosine + (py - y) * sine) / length;
        double const across = ((py - y) * cosine - (px - x) * sine) / thickness;
        double const radius = std::hypot(along, across);
        // To first order: how far the radius is from 1, by its slope.
        double const slope = std::hypot(along / length, across / thickness);
        return (radius - 1) * radius / std::max(slope, 1e-9);
    });
}

/** Leaves: many small ellipses in greens and browns over each other. */
void drawFoliage(Canvas scene) {
    scene.fill({52, 74, 40});
    // The standard library's distributions may differ between machines; its generators do not.
    std::mt19937 random(20);
    auto const uniform = [&](double least, double most) {
        return least + (most - least) * static_cast<double>(random()) / 4294967296.0;
    };
    for (int i = 0; i < 2600; ++i) {
        // One draw a statement: in which order a call evaluates its arguments is the compiler's
        // choice.
        double const x = uniform(0, scene.width());
        double const y = uniform(0, scene.height());
        double const thickness = uniform(4, 12);
        double const length = uniform(8, 34);
        double const light = uniform(0.6, 1.5);
        double const brown = uniform(0, 1) < 0.2 ? 40 : 0;
        double const turn = uniform(0, kPi);
        fillEllipse(scene, x, y, length, thickness, turn,
                    {62 * light + brown, 100 * light, 46 * light});
    }
}

// A Gaussian of 0.8 pixels, in 1/256.
constexpr uint32_t kBlur[] = {6, 58, 128, 58, 6};
constexpr size_t kBlurReach = std::size(kBlur) / 2;
constexpr size_t kChannels = 3;

/** Blurs a row of columns; it goes on as at its ends, in a margin of `kBlurReach` pixels. */
void blurRow(std::vector<uint32_t>& columns, size_t size, uint8_t* out) {
    constexpr size_t kMargin = kChannels * kBlurReach;
    for (size_t i = 0; i < kMargin; ++i) {
        columns[i] = columns[kMargin + i % kChannels];
        columns[kMargin + size + i] = columns[size + i % kChannels + kMargin - kChannels];
    }
    for (size_t i = 0; i < size; ++i) {
        uint32_t sum = 1 << 15;
        for (size_t k = 0; k < std::size(kBlur); ++k) {
            sum += kBlur[k] * columns[i + k * kChannels];
        }
        out[i] = static_cast<uint8_t>(sum >> 16);
    }
}

/** The blur of a good lens. */
RgbPicture blurred(RgbPicture const& sharp) {
    RgbPicture result(sharp.width, sharp.height);
    size_t const size = kChannels * static_cast<size_t>(sharp.width);
    std::vector<uint32_t> columns(size + 2 * kChannels * kBlurReach);
    for (int y = 0; y < sharp.height; ++y) {
        std::fill(columns.begin(), columns.end(), 0);
        for (size_t k = 0; k < std::size(kBlur); ++k) {
            int const near = y + static_cast<int>(k) - static_cast<int>(kBlurReach);
            uint8_t const* const row = sharp.row(std::clamp(near, 0, sharp.height - 1));
            for (size_t i = 0; i < size; ++i) {
                columns[kChannels * kBlurReach + i] += kBlur[k] * row[i];
            }
        }
        blurRow(columns, size, result.row(y));
    }
    return result;
}

}  // namespace

RgbPicture renderDemoScene() {
    RgbPicture picture(kDemoWidth, kDemoHeight);
    Canvas const scene(picture);
    drawBackground(scene);
    drawPatches(scene.part(120, 120, 1800, 1100));
    drawGradients(scene.part(2080, 120, 1800, 620));
    drawSlantedEdges(scene.part(2080, 820, 1800, 400));
    drawLines(scene.part(120, 1340, 2400, 780));
    drawStar(scene.part(2640, 1340, 1240, 780));
    drawFoliage(scene.part(120, 2240, 2400, 640));
    drawRings(scene.part(2640, 2240, 1240, 640));
    return blurred(picture);
}

}  // namespace quen::reprocess
