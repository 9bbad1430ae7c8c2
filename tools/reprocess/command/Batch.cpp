#include "command/Batch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "command/BatchFrame.h"
#include "command/ExitCode.h"
#include "command/FileNames.h"
#include "command/Interruption.h"
#include "command/Pipeline.h"
#include "command/Progress.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Clock = std::chrono::steady_clock;

/** The frames of a batch as the stages of a pipeline; prints what becomes of each. */
class Batch final : public PipelineStages {
  public:
    Batch(Options const& options, Reprocessor& reprocessor, Report& report,
          std::vector<Job> const& jobs)
        : mOptions(options),
          mReprocessor(reprocessor),
          mReport(report),
          mJobs(jobs),
          mProgress(jobs.size()) {
        uint32_t number = 0;
        for (Job const& job : jobs) {
            mFrames.push_back(std::make_unique<BatchFrame>(job, ++number));
        }
        mProgress.begin(jobs.front().input);
    }

    size_t read(size_t frame) override { return mFrames[frame]->read(mOptions, mReprocessor); }
    void submit(size_t frame) override { mFrames[frame]->submit(mReprocessor); }
    void finish(size_t frame) override { mFrames[frame]->finish(mReprocessor); }

    void write(size_t frame) override {
        mFailed += mFrames[frame]->write(mReport, mProgress) ? 0 : 1;
        mFrames[frame] = nullptr;
        mProgress.end();
        if (frame + 1 < mFrames.size()) {
            mProgress.begin(mJobs[frame + 1].input);
        }
    }

    bool isStopped() override { return Interruption::hasCome(); }

    /** One frame after the other, on this thread. @return how many */
    size_t runInTurn() {
        size_t frame = 0;
        for (; frame < mFrames.size() && !isStopped(); ++frame) {
            read(frame);
            submit(frame);
            finish(frame);
            write(frame);
        }
        return frame;
    }

    size_t failed() const { return mFailed; }
    Progress& progress() { return mProgress; }

  private:
    Options const& mOptions;
    Reprocessor& mReprocessor;
    Report& mReport;
    std::vector<Job> const& mJobs;
    Progress mProgress;
    std::vector<std::unique_ptr<BatchFrame>> mFrames;
    size_t mFailed = 0;
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

size_t processors() {
    return std::max(1u, std::thread::hardware_concurrency());
}

/** How many inputs are in work at a time: unless it is given, one a processor. */
size_t jobsOf(Options const& options) {
    return std::min(options.jobs != 0 ? options.jobs : processors(), options.inputs.size());
}

}  // namespace

BatchResources resourcesFor(Options const& options) {
    BatchResources resources;
    if (options.inputs.size() > 1) {
        resources.keptBuffers = 3;  // a mosaic, a picture and a JPEG
        resources.buffersAhead = std::numeric_limits<size_t>::max();
    }
    // Half of the processors for the frame that is encoded: much of that is one thread's work,
    // which decides when the next one begins.
    if (jobsOf(options) > 1) {
        resources.developThreads = static_cast<int>((processors() + 1) / 2);
    }
    return resources;
}

int runBatch(Options const& options, Reprocessor& reprocessor, Report& report) {
    std::vector<Job> jobs;
    try {
        jobs = planJobs(options);
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s\n", failure.what());
        return kUsage;
    }
    // Of the whole list: every shard names an output as all others do.
    size_t const listed = jobs.size();
    jobs = options.shard.of(jobs);
    if (jobs.empty()) {
        std::printf("shard %s has none of %zu inputs: nothing to do\n",
                    options.shard.text().c_str(), listed);
        return kAllGood;
    }

    Clock::time_point const begin = Clock::now();
    size_t failed = 0;
    size_t run = 0;
    {
        Interruption const interruption;
        Batch batch(options, reprocessor, report, jobs);
        size_t const atOnce = jobsOf(options);
        run = atOnce > 1 ? Pipeline(jobs.size(), atOnce, memoryToUse(), batch).run()
                         : batch.runInTurn();
        failed = batch.failed();
        if (jobs.size() > 1) {
            std::chrono::duration<double> const taken = Clock::now() - begin;
            std::string text = format("%zu of %zu reprocessed, %zu failed, %.2f s", run - failed,
                                      jobs.size(), failed, taken.count());
            if (run < jobs.size()) {
                text += format("; %zu not begun: interrupted", jobs.size() - run);
            }
            batch.progress().line(text);
        }
    }
    Interruption::follow();
    return failed == 0 ? kAllGood : kSomeFailed;
}

}  // namespace quen::reprocess
