#include "command/Batch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "command/BatchFrame.h"
#include "command/ExitCode.h"
#include "command/Interruption.h"
#include "command/OpenFiles.h"
#include "command/Pipeline.h"
#include "command/Progress.h"
#include "report/InfoDocument.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Clock = std::chrono::steady_clock;

/** The frames of a batch as the stages of a pipeline; prints what becomes of each. */
class Batch final : public PipelineStages {
  public:
    Batch(Options const& options, Reprocessor& reprocessor, Report& report, Trace* trace,
          std::vector<Job> const& jobs)
        : mOptions(options),
          mReprocessor(reprocessor),
          mReport(report),
          mTrace(trace),
          mJobs(jobs),
          mProgress(jobs.size(), takesStandardOutput(options) ? stderr : stdout) {
        uint32_t number = 0;
        for (Job const& job : jobs) {
            mFrames.push_back(std::make_unique<BatchFrame>(job, ++number, trace));
        }
        if (!jobs.empty()) {
            mProgress.begin(jobs.front().input);
        }
    }

    size_t read(size_t frame) override {
        nameThread(ThreadKind::Reader);
        return mFrames[frame]->read(mOptions, mReprocessor);
    }

    void submit(size_t frame) override { mFrames[frame]->submit(mReprocessor); }
    void finish(size_t frame) override { mFrames[frame]->finish(mReprocessor); }

    void write(size_t frame) override {
        nameThread(ThreadKind::Writer);
        bool const isDocument = mOptions.info == InfoFormat::Json;
        ++mEnds[mFrames[frame]->write(mReport, mProgress, isDocument ? &mDocument : nullptr)];
        mFrames[frame] = nullptr;
        mProgress.end();
        if (frame + 1 < mFrames.size()) {
            mProgress.begin(mJobs[frame + 1].input);
        }
    }

    bool isStopped() override { return Interruption::hasCome(); }

    /** One frame after the other, on this thread. */
    void runInTurn() {
        for (size_t frame = 0; frame < mFrames.size() && !isStopped(); ++frame) {
            read(frame);
            submit(frame);
            finish(frame);
            write(frame);
        }
    }

    /** Prints what became of all. @return the exit code */
    int finish(double seconds) {
        RunSummary summary;
        summary.inputs = mJobs.size();
        summary.reprocessed = mEnds[BatchFrame::End::Done];
        summary.failed = mEnds[BatchFrame::End::Failed];
        summary.skipped = mEnds[BatchFrame::End::Skipped];
        summary.notBegun = summary.inputs - summary.reprocessed - summary.failed - summary.skipped;
        summary.seconds = seconds;
        if (mOptions.info == InfoFormat::Json) {
            mDocument.finish(summary);
        }
        tell(summary);
        return summary.failed == 0 ? kAllGood : kSomeFailed;
    }

  private:
    void nameThread(ThreadKind kind) {
        if (mTrace != nullptr) {
            mTrace->nameThread(kind);
        }
    }

    void tell(RunSummary const& summary) {
        if (summary.inputs == 1 && summary.skipped == 1) {
            mProgress.line(mJobs.front().input + ": skipped, for " + mJobs.front().output +
                           " is there");
        }
        if (summary.inputs <= 1) {
            return;
        }
        std::string text = format("%zu of %zu reprocessed, %zu failed", summary.reprocessed,
                                  summary.inputs, summary.failed);
        if (summary.skipped > 0) {
            text += format(", %zu skipped: their outputs are there", summary.skipped);
        }
        text += format(", %.2f s", summary.seconds);
        if (summary.notBegun > 0) {
            text += format("; %zu not begun: interrupted", summary.notBegun);
        }
        mProgress.line(text);
    }

    Options const& mOptions;
    Reprocessor& mReprocessor;
    Report& mReport;
    Trace* const mTrace;
    std::vector<Job> const& mJobs;
    Progress mProgress;
    InfoDocument mDocument;
    std::vector<std::unique_ptr<BatchFrame>> mFrames;
    std::map<BatchFrame::End, size_t> mEnds;  // how many frames came to which
};

/** Bytes of memory that the batch may take: half of what is available, all when that is unknown. */
size_t memoryToUse() {
    std::ifstream file("/proc/meminfo");
    std::string name;
    size_t kilobytes = 0;
    std::string unit;
    while (file >> name >> kilobytes) {
        std::getline(file, unit);
        if (name == "MemAvailable:") {
            return kilobytes * 1024 / 2;
        }
    }
    return std::numeric_limits<size_t>::max();
}

/**
 * The shard's jobs. What cannot be read is in every shard: a machine that lacks a part of the
 * inputs has another list than the others, whichever share is its own.
 */
std::vector<Job> jobsOfShard(std::vector<Job> const& planned, Shard const& shard) {
    std::vector<Job> jobs;
    for (size_t i = 0; i < planned.size(); ++i) {
        bool const isLost = !planned[i].problem.empty() && !planned[i].isSkipped;
        if (shard.has(i) || isLost) {
            jobs.push_back(planned[i]);
        }
    }
    return jobs;
}

/**
 * How many inputs are in work at a time. Unless it is given, one more than there are processors:
 * much of the work on the first one is a single thread's.
 */
size_t jobsOf(Options const& options) {
    size_t const processors = std::max(1u, std::thread::hardware_concurrency());
    size_t const wanted = options.jobs != 0 ? options.jobs : processors + 1;
    return std::min({wanted, jobsByOpenFiles(), options.inputs.size()});
}

}  // namespace

size_t keptBuffersFor(Options const& options) {
    return options.inputs.size() > 1 ? 3 : 0;  // a mosaic, a picture and a JPEG
}

int runBatch(Options const& options, std::vector<Job> const& planned, Reprocessor& reprocessor,
             Report& report, Trace* trace) {
    std::vector<Job> const jobs = jobsOfShard(planned, options.shard);
    if (jobs.empty()) {
        std::fprintf(stderr, "quen-reprocess: shard %s has none of %zu inputs: nothing to do\n",
                     options.shard.text().c_str(), planned.size());
    }

    Clock::time_point const begin = Clock::now();
    Interruption const interruption;
    Batch batch(options, reprocessor, report, trace, jobs);
    size_t const atOnce = jobsOf(options);
    if (atOnce > 1 && !jobs.empty()) {
        Pipeline(jobs.size(), atOnce, memoryToUse(), batch).run();
    } else {
        batch.runInTurn();
    }
    return batch.finish(std::chrono::duration<double>(Clock::now() - begin).count());
}

}  // namespace quen::reprocess
