#include "demo/DemoScene.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

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

/** A grey of that value. */
cv::Scalar grey(double value) {
    return {value, value, value};
}

/** Fills the scene with a vertical gradient. */
void drawBackground(cv::Mat& scene) {
    for (int y = 0; y < scene.rows; ++y) {
        double const down = static_cast<double>(y) / scene.rows;
        cv::Scalar const colour(118 + 52 * down, 138 + 24 * down, 164 - 26 * down);
        scene.row(y).setTo(colour);
    }
}

/** Draws the patches of the colour chart. */
void drawPatches(cv::Mat scene) {
    scene.setTo(grey(36));
    int const width = scene.cols / 6;
    int const height = scene.rows / 4;
    for (int i = 0; i < 24; ++i) {
        cv::Rect const patch(i % 6 * width + 14, i / 6 * height + 14, width - 28, height - 28);
        scene(patch).setTo(cv::Scalar(kPatches[i][0], kPatches[i][1], kPatches[i][2]));
    }
}

/** Ramps from dark to light in grey and the primaries, and one through all hues. */
void drawGradients(cv::Mat scene) {
    constexpr double kWeights[4][3] = {
            {1, 1, 1}, {1, 0.25, 0.25}, {0.25, 1, 0.25}, {0.25, 0.25, 1}};
    int const band = scene.rows / 5;
    for (int x = 0; x < scene.cols; ++x) {
        double const along = static_cast<double>(x) / (scene.cols - 1);
        for (int ramp = 0; ramp < 4; ++ramp) {
            cv::Scalar colour;
            for (int channel = 0; channel < 3; ++channel) {
                colour[channel] = 8 + 232 * along * kWeights[ramp][channel];
            }
            scene(cv::Rect(x, ramp * band, 1, band)).setTo(colour);
        }
        cv::Scalar hue;
        for (int channel = 0; channel < 3; ++channel) {
            hue[channel] = 128 + 80 * std::cos(2 * kPi * (along - channel / 3.0));
        }
        scene(cv::Rect(x, 4 * band, 1, scene.rows - 4 * band)).setTo(hue);
    }
}

/** Squares turned by a few degrees, so that their edges cross the pixel grid at every phase. */
void drawSlantedEdges(cv::Mat scene) {
    struct Pair {
        cv::Scalar ground;
        cv::Scalar square;
    };
    std::vector<Pair> const pairs = {
            {grey(214), grey(40)},
            {grey(40), grey(214)},
            {{196, 62, 58}, {228, 226, 220}},
            {{46, 76, 168}, {222, 196, 60}},
            {{60, 142, 78}, {176, 78, 146}},
    };
    int const cell = scene.cols / static_cast<int>(pairs.size());
    for (int i = 0; i < static_cast<int>(pairs.size()); ++i) {
        cv::Mat field = scene(cv::Rect(i * cell, 0, cell, scene.rows));
        field.setTo(pairs[i].ground);
        double const size = std::min(cell, scene.rows) * 0.6;
        cv::RotatedRect const square(cv::Point2f(cell / 2.0f, scene.rows / 2.0f),
                                     cv::Size2f(float(size), float(size)), 5.0f + 8.0f * i);
        cv::Point2f corners[4];
        square.points(corners);
        std::vector<cv::Point> polygon;
        constexpr int kFraction = 4;  // bits of subpixel position
        for (cv::Point2f const& corner : corners) {
            polygon.emplace_back(cvRound(corner.x * (1 << kFraction)),
                                 cvRound(corner.y * (1 << kFraction)));
        }
        cv::fillConvexPoly(field, polygon, pairs[i].square, cv::LINE_AA, kFraction);
    }
}

/** Draws lines of text of falling size. */
void drawText(cv::Mat scene) {
    scene.setTo(grey(232));
    std::string const line = "The quick brown fox jumps over the lazy dog 0123456789";
    int y = 60;
    int turn = 0;
    for (double scale = 2.45; scale > 0.5; scale *= 0.82, ++turn) {
        cv::Scalar const ink = turn % 4 == 2   ? cv::Scalar(150, 30, 40)
                               : turn % 4 == 3 ? cv::Scalar(30, 50, 130)
                                               : grey(24);
        y += cvRound(24 * scale);
        cv::putText(scene, line, cv::Point(30, y), cv::FONT_HERSHEY_SIMPLEX, scale, ink,
                    std::max(1, cvRound(scale * 1.6)), cv::LINE_AA);
        y += cvRound(18 * scale);
    }
}

/** A star whose rays narrow towards the centre, beyond what a camera resolves. */
void drawStar(cv::Mat scene) {
    double const middleX = scene.cols / 2.0;
    double const middleY = scene.rows / 2.0;
    double const radius = std::min(middleX, middleY) * 0.94;
    constexpr double kRays = 48;
    for (int y = 0; y < scene.rows; ++y) {
        for (int x = 0; x < scene.cols; ++x) {
            double const away = std::hypot(x - middleX, y - middleY);
            double const wave = std::cos(kRays * std::atan2(y - middleY, x - middleX));
            // Grey where a pair of rays spans less than four pixels.
            double const contrast = std::clamp(2 * kPi * away / kRays / 4 - 1, 0.0, 1.0);
            double const value = away < radius ? 128 + 92 * contrast * std::tanh(3 * wave) : 200;
            scene.at<cv::Vec3b>(y, x) = cv::Vec3b::all(cv::saturate_cast<uint8_t>(value));
        }
    }
}

/** Rings that grow finer outwards. */
void drawRings(cv::Mat scene) {
    double const finest = 0.16;  // cycles a pixel at the rim
    double const reach = scene.rows / 2.0;
    for (int y = 0; y < scene.rows; ++y) {
        for (int x = 0; x < scene.cols; ++x) {
            double const away = std::hypot(x - scene.cols / 2.0, y - reach);
            double const phase = kPi * finest * away * away / reach;
            double const value = away < reach ? 128 + 80 * std::cos(phase) : 128;
            scene.at<cv::Vec3b>(y, x) = cv::Vec3b::all(cv::saturate_cast<uint8_t>(value));
        }
    }
}

/** Leaves: many small ellipses in greens and browns over each other. */
void drawFoliage(cv::Mat scene) {
    scene.setTo(cv::Scalar(52, 74, 40));
    cv::RNG random(20);
    for (int i = 0; i < 2600; ++i) {
        // One draw a statement: in which order a call evaluates its arguments is the compiler's
        // choice.
        int const y = random.uniform(0, scene.rows);
        int const x = random.uniform(0, scene.cols);
        int const thickness = random.uniform(4, 12);
        int const length = random.uniform(8, 34);
        double const light = random.uniform(0.6, 1.5);
        double const brown = random.uniform(0.0, 1.0) < 0.2 ? 40 : 0;
        cv::Scalar const colour(62 * light + brown, 100 * light, 46 * light);
        cv::ellipse(scene, cv::Point(x, y), cv::Size(length, thickness), random.uniform(0, 180), 0,
                    360, colour, cv::FILLED, cv::LINE_AA);
    }
}

}  // namespace

cv::Mat renderDemoScene() {
    cv::Mat scene(kDemoHeight, kDemoWidth, CV_8UC3);
    drawBackground(scene);
    drawPatches(scene(cv::Rect(120, 120, 1800, 1100)));
    drawGradients(scene(cv::Rect(2080, 120, 1800, 620)));
    drawSlantedEdges(scene(cv::Rect(2080, 820, 1800, 400)));
    drawText(scene(cv::Rect(120, 1340, 2400, 780)));
    drawStar(scene(cv::Rect(2640, 1340, 1240, 780)));
    drawFoliage(scene(cv::Rect(120, 2240, 2400, 640)));
    drawRings(scene(cv::Rect(2640, 2240, 1240, 640)));
    // The blur of a good lens.
    cv::GaussianBlur(scene, scene, cv::Size(), 0.8);
    return scene;
}

}  // namespace quen::reprocess
