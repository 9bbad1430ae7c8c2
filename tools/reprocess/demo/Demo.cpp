#include "demo/Demo.h"

#include <chrono>
#include <cstdio>
#include <exception>

#include "command/ExitCode.h"
#include "command/OutputFile.h"
#include "demo/DemoScene.h"
#include "demo/DemoSensor.h"
#include "demo/Psnr.h"
#include "report/InfoDocument.h"
#include "support/Failure.h"
#include "support/Text.h"
#include "terminal/Printable.h"

namespace quen::reprocess {
namespace {

constexpr double kLeastDecibels = 30;

void writePicture(std::string const& output, Bytes picture) {
    output == kStandardOutput ? writeStandardOutput(picture) : writeOutputFile(output, picture);
}

/** Prints the demo's figures. */
void tell(Options const& options, FrameOutcome const& outcome) {
    std::FILE* const lines = takesStandardOutput(options) ? stderr : stdout;
    auto const& psnr = *outcome.psnr;
    std::fprintf(lines, "%s  %ux%u  %s\n", printable(options.output).c_str(), outcome.width,
                 outcome.height, bytesText(outcome.outputBytes).c_str());
    std::fprintf(
            lines,
            "PSNR %.2f dB against the scene (8-bit sRGB, all channels; R %.2f, G %.2f, B %.2f)\n",
            psnr[0], psnr[1], psnr[2], psnr[3]);
}

/** Runs the demo. @return the exit code */
int develop(Options const& options, Reprocessor& reprocessor, Stopwatch& watch,
            FrameOutcome& outcome) {
    if (options.output != kStandardOutput) {
        checkOutputFile(options.output);
    }
    RgbPicture const scene = watch.time("render scene", [] { return renderDemoScene(); });
    Capture const capture = watch.time("expose sensor", [&] { return exposeDemoSensor(scene); });
    Product const product = reprocessor.run(capture, OutputKind::Jpeg, watch);
    watch.time("write", [&] { writePicture(options.output, product.bytes); });
    Psnr const psnr = watch.time("compare", [&] { return comparePicture(product.bytes, scene); });
    outcome.width = capture.width;
    outcome.height = capture.height;
    outcome.outputBytes = product.bytes.size;
    outcome.psnr = {psnr.decibels, psnr.channel[0], psnr.channel[1], psnr.channel[2]};
    tell(options, outcome);
    if (psnr.decibels < kLeastDecibels) {
        std::fprintf(stderr, "quen-reprocess: the demo's picture is below %.0f dB\n",
                     kLeastDecibels);
        return kDemoTooPoor;
    }
    return kAllGood;
}

/** Prints what --info tells. */
void tellInfo(Options const& options, FrameOutcome const& outcome, std::string const& info) {
    if (options.info == InfoFormat::Json) {
        InfoDocument document;
        document.add(info);
        bool const isDone = outcome.problem.empty();
        document.finish({1, isDone ? 1u : 0u, isDone ? 0u : 1u, 0, 0, outcome.seconds});
    } else if (options.info == InfoFormat::Text) {
        std::fprintf(takesStandardOutput(options) ? stderr : stdout, "%s\n", info.c_str());
    }
}

}  // namespace

int runDemo(Options const& options, Reprocessor& reprocessor, Report& report, Trace* trace) {
    auto const begin = std::chrono::steady_clock::now();
    Stopwatch watch(trace);
    FrameOutcome outcome;
    outcome.input = "demo";
    outcome.output = options.output;
    int exitCode = kSomeFailed;
    try {
        exitCode = develop(options, reprocessor, watch, outcome);
    } catch (std::exception const& error) {
        outcome.problem = error.what();
        std::fprintf(stderr, "quen-reprocess: %s: %s\n", printable(options.output).c_str(),
                     printable(outcome.problem).c_str());
    }
    std::chrono::duration<double> const taken = std::chrono::steady_clock::now() - begin;
    outcome.seconds = taken.count();
    tellInfo(options, outcome, report.take(1, outcome, watch));
    return exitCode;
}

}  // namespace quen::reprocess
