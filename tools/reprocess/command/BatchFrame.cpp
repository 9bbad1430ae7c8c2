#include "command/BatchFrame.h"

#include <exception>
#include <filesystem>
#include <new>
#include <utility>

#include "command/OutputFile.h"
#include "inputs/Inputs.h"
#include "inputs/StandardInput.h"
#include "outputs/RgbFile.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Clock = std::chrono::steady_clock;

// What a frame takes at its peak, the ISP's buffers included.
constexpr size_t kBytesPerPixel = 8;

/** A watch whose legs are on the timeline, with the input beside them. */
Stopwatch watchOf(Job const& job, uint32_t number, Trace* trace) {
    if (trace == nullptr) {
        return Stopwatch();
    }
    return Stopwatch(trace, {"frame", number, nullptr}, {"input", 0, trace->keep(job.input)});
}

}  // namespace

BatchFrame::BatchFrame(Job const& job, uint32_t number, Trace* trace)
    : mJob(job), mNumber(number), mWatch(watchOf(job, number, trace)), mProblem(job.problem) {}

/** Runs a stage, unless an earlier one has failed or the input is skipped. */
template <typename Work>
void BatchFrame::attempt(Work const& work) {
    if (mJob.isSkipped || !mProblem.empty()) {
        return;
    }
    try {
        work();
        return;
    } catch (Failure const& failure) {
        mProblem = failure.what();
    } catch (std::bad_alloc const&) {
        mProblem = "needs more memory than there is";
    } catch (std::exception const& error) {
        mProblem = std::string("could not be reprocessed: ") + error.what();
    }
    mFrame = nullptr;
}

size_t BatchFrame::read(Options const& options, Reprocessor& reprocessor) {
    size_t pixels = 0;
    mBegin = Clock::now();
    mDepth = options.depth;
    attempt([&] {
        checkNotItself();
        Capture capture =
                mWatch.time("read", [&] { return readCapture(mJob.input, options.input); });
        mNotes = std::move(capture.notes);
        mWidth = mShownWidth = capture.width;
        mHeight = mShownHeight = capture.height;
        pixels = size_t{mWidth} * mHeight;
        mFrame = reprocessor.prepare(mNumber, std::move(capture), mJob.kind, mWatch);
    });
    size_t const ofFile = isRgb(mJob.kind) ? size_t{3} * static_cast<size_t>(mDepth) / 8 : 0;
    return (kBytesPerPixel + ofFile) * pixels;
}

void BatchFrame::submit(Reprocessor& reprocessor) {
    attempt([&] { reprocessor.submit(*mFrame); });
}

void BatchFrame::finish(Reprocessor& reprocessor) {
    attempt([&] {
        mProduct = reprocessor.finish(*mFrame);
        mFrame = nullptr;
    });
}

BatchFrame::End BatchFrame::write(Report& report, Progress& progress, InfoDocument* document) {
    attempt([&] {
        makeFile();
        mWatch.time("write", [&] { writeProduct(); });
    });
    FrameOutcome const frame = outcome();
    tell(frame, progress);
    std::string const text = report.take(mNumber, frame, mWatch);
    if (document != nullptr) {
        document->add(text);
    } else if (!text.empty() && !mJob.isSkipped) {
        progress.lines(text);
    }
    mProduct = Product();
    return mJob.isSkipped ? End::Skipped : mProblem.empty() ? End::Done : End::Failed;
}

FrameOutcome BatchFrame::outcome() const {
    FrameOutcome outcome;
    outcome.input = mJob.input;
    outcome.output = mJob.output;
    outcome.width = mWidth;
    outcome.height = mHeight;
    outcome.isSkipped = mJob.isSkipped;
    outcome.problem = mProblem;
    outcome.notes = mNotes;
    if (!mProduct.note.empty()) {
        outcome.notes.push_back(mProduct.note);
    }
    if (mProblem.empty()) {
        outcome.outputBytes = mProduct.bytes.size;
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - mBegin).count();
    return outcome;
}

/** Prints the line about the input, after remarks on it. */
void BatchFrame::tell(FrameOutcome const& outcome, Progress& progress) const {
    if (mJob.isSkipped) {
        return;
    }
    for (std::string const& note : mNotes) {
        progress.problem("quen-reprocess: " + mJob.input + ": " + note);
    }
    if (!mProblem.empty()) {
        progress.problem("quen-reprocess: " + mJob.input + ": " + mProblem);
        return;
    }
    if (!mProduct.note.empty()) {
        progress.problem("quen-reprocess: " + mJob.output + ": " + mProduct.note);
    }
    progress.line(format("%s -> %s  %ux%u  %s  %.2f s", mJob.input.c_str(), mJob.output.c_str(),
                         mShownWidth, mShownHeight, bytesText(outcome.outputBytes).c_str(),
                         outcome.seconds));
}

/** Throws when the output is the input. */
void BatchFrame::checkNotItself() const {
    std::error_code ignored;
    if (mJob.input != kStandardInput && mJob.output != kStandardOutput &&
        std::filesystem::equivalent(mJob.input, mJob.output, ignored)) {
        throw Failure("would be overwritten by its own picture", "choose another output");
    }
}

/** Makes the file of an RGB output: here, beside the work on other frames. */
void BatchFrame::makeFile() {
    if (mProduct.planes) {
        mShownWidth = mProduct.planes->width;
        mShownHeight = mProduct.planes->height;
        mProduct =
                mWatch.time("make file", [&] { return makeRgbFile(mProduct, mJob.kind, mDepth); });
    }
}

void BatchFrame::writeProduct() const {
    if (mJob.output == kStandardOutput) {
        try {
            writeStandardOutput(mProduct.bytes);
        } catch (Failure const& failure) {
            throw Failure(std::string("standard output ") + failure.what());
        }
        return;
    }
    try {
        writeOutputFile(mJob.output, mProduct.bytes);
    } catch (Failure const& failure) {
        throw Failure("its output " + mJob.output + " " + failure.what());
    }
}

}  // namespace quen::reprocess
