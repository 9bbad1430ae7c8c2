#include "demo/Demo.h"

#include <cstdio>
#include <exception>

#include "command/ExitCode.h"
#include "command/OutputFile.h"
#include "demo/DemoScene.h"
#include "demo/DemoSensor.h"
#include "demo/Psnr.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

constexpr double kLeastDecibels = 30;

/** Runs the demo and prints its figures. @return the exit code */
int develop(Options const& options, Reprocessor& reprocessor, Stopwatch& watch) {
    RgbPicture const scene = watch.time("render scene", [] { return renderDemoScene(); });
    Capture const capture = watch.time("expose sensor", [&] { return exposeDemoSensor(scene); });
    Product const product = reprocessor.run(capture, OutputKind::Jpeg, watch);
    watch.time("write", [&] { writeOutputFile(options.output, product.bytes); });
    Psnr const psnr = watch.time("compare", [&] { return comparePicture(product.bytes, scene); });
    std::printf("%s  %ux%u  %s\n", printable(options.output).c_str(), capture.width, capture.height,
                bytesText(product.bytes.size).c_str());
    std::printf(
            "PSNR %.2f dB against the scene (8-bit sRGB, all channels; R %.2f, G %.2f, B %.2f)\n",
            psnr.decibels, psnr.channel[0], psnr.channel[1], psnr.channel[2]);
    if (psnr.decibels < kLeastDecibels) {
        std::fprintf(stderr, "quen-reprocess: the demo's picture is below %.0f dB\n",
                     kLeastDecibels);
        return kDemoTooPoor;
    }
    return kAllGood;
}

}  // namespace

int runDemo(Options const& options, Reprocessor& reprocessor, Report& report) {
    Stopwatch watch;
    int exitCode = kSomeFailed;
    try {
        exitCode = develop(options, reprocessor, watch);
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s: %s\n", printable(options.output).c_str(),
                     failure.what());
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quen-reprocess: the demo failed: %s\n", error.what());
    }
    if (options.info) {
        std::printf("%s\n", report.take(1, watch).c_str());
    }
    return exitCode;
}

}  // namespace quen::reprocess
