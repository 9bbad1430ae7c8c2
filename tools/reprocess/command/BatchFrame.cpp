#include "command/BatchFrame.h"

#include <exception>
#include <filesystem>
#include <new>
#include <utility>

#include "command/OutputFile.h"
#include "inputs/Inputs.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Clock = std::chrono::steady_clock;

// What a frame takes at its peak, the ISP's buffers included.
constexpr size_t kBytesPerPixel = 8;

}  // namespace

/** Runs a stage, unless an earlier one has failed. */
template <typename Work>
void BatchFrame::attempt(Work const& work) {
    if (!mProblem.empty()) {
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
    attempt([&] {
        checkNotItself();
        Capture capture =
                mWatch.time("read", [&] { return readCapture(mJob.input, options.input); });
        mNotes = std::move(capture.notes);
        mSize = format("%ux%u", capture.width, capture.height);
        pixels = size_t{capture.width} * capture.height;
        mFrame = reprocessor.prepare(mNumber, std::move(capture), mJob.kind, mWatch);
    });
    return kBytesPerPixel * pixels;
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

bool BatchFrame::write(Report& report, Progress& progress) {
    attempt([&] { mWatch.time("write", [&] { writeProduct(); }); });
    bool const isDone = mProblem.empty();
    if (isDone) {
        for (std::string const& note : mNotes) {
            progress.problem("quen-reprocess: " + mJob.input + ": " + note);
        }
        if (!mProduct.note.empty()) {
            progress.problem("quen-reprocess: " + mJob.output + ": " + mProduct.note);
        }
        std::chrono::duration<double> const taken = Clock::now() - mBegin;
        progress.line(format("%s -> %s  %s  %s  %.2f s", mJob.input.c_str(), mJob.output.c_str(),
                             mSize.c_str(), bytesText(mProduct.bytes.size).c_str(), taken.count()));
    } else {
        progress.problem("quen-reprocess: " + mJob.input + ": " + mProblem);
    }
    std::string const text = report.take(mNumber, mWatch);
    if (!text.empty()) {
        progress.line(text);
    }
    mProduct = Product();
    return isDone;
}

/** Throws when the output is the input. */
void BatchFrame::checkNotItself() const {
    std::error_code ignored;
    if (std::filesystem::equivalent(mJob.input, mJob.output, ignored)) {
        throw Failure("would be overwritten by its own picture", "choose another output");
    }
}

void BatchFrame::writeProduct() const {
    try {
        writeOutputFile(mJob.output, mProduct.bytes);
    } catch (Failure const& failure) {
        throw Failure("its output " + mJob.output + " " + failure.what());
    }
}

}  // namespace quen::reprocess
