#include "command/Batch.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "command/ExitCode.h"
#include "command/FileNames.h"
#include "command/OutputFile.h"
#include "command/Progress.h"
#include "inputs/Inputs.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

using Clock = std::chrono::steady_clock;

/** Seconds since a point in time. */
double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/** Throws when the output of a job is its input. */
void checkNotItself(Job const& job) {
    std::error_code ignored;
    if (std::filesystem::equivalent(job.input, job.output, ignored)) {
        throw Failure("would be overwritten by its own picture", "choose another output");
    }
}

/** The line printed for a finished picture. */
std::string doneLine(Job const& job, Capture const& capture, size_t bytes, double seconds) {
    return format("%s -> %s  %ux%u  %s  %.2f s", job.input.c_str(), job.output.c_str(),
                  capture.width, capture.height, bytesText(bytes).c_str(), seconds);
}

/** Runs jobs one at a time, and prints what became of each. */
class Batch {
  public:
    Batch(Options const& options, Reprocessor& reprocessor, Report& report, Progress& progress)
        : mOptions(options), mReprocessor(reprocessor), mReport(report), mProgress(progress) {}

    /** @return whether the job succeeded */
    bool run(Job const& job) {
        Stopwatch watch;
        std::string problem;
        try {
            mProgress.begin(job.input);
            reprocess(job, watch);
        } catch (Failure const& failure) {
            problem = failure.what();
        } catch (std::bad_alloc const&) {
            problem = "needs more memory than there is";
        } catch (std::exception const& error) {
            problem = std::string("could not be reprocessed: ") + error.what();
        }
        if (!problem.empty()) {
            mProgress.problem("quen-reprocess: " + job.input + ": " + problem);
        }
        if (mOptions.info) {
            mProgress.line(mReport.take(watch));
        }
        mProgress.end();
        return problem.empty();
    }

  private:
    void reprocess(Job const& job, Stopwatch& watch) {
        Clock::time_point const begin = Clock::now();
        checkNotItself(job);
        Capture const capture =
                watch.time("read", [&] { return readCapture(job.input, mOptions.input); });
        Product const product = mReprocessor.run(capture, job.kind, watch);
        watch.time("write", [&] { write(job, product); });
        for (std::string const& note : capture.notes) {
            mProgress.problem("quen-reprocess: " + job.input + ": " + note);
        }
        mProgress.line(doneLine(job, capture, product.bytes.size, secondsSince(begin)));
    }

    static void write(Job const& job, Product const& product) {
        try {
            writeOutputFile(job.output, product.bytes);
        } catch (Failure const& failure) {
            throw Failure("its output " + job.output + " " + failure.what());
        }
    }

    Options const& mOptions;
    Reprocessor& mReprocessor;
    Report& mReport;
    Progress& mProgress;
};

}  // namespace

int runBatch(Options const& options, Reprocessor& reprocessor, Report& report) {
    std::vector<Job> jobs;
    try {
        jobs = planJobs(options);
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s\n", failure.what());
        return kUsage;
    }

    Clock::time_point const begin = Clock::now();
    Progress progress(jobs.size());
    Batch batch(options, reprocessor, report, progress);
    size_t failed = 0;
    for (Job const& job : jobs) {
        failed += batch.run(job) ? 0 : 1;
    }
    if (jobs.size() > 1) {
        progress.line(format("%zu of %zu reprocessed, %zu failed, %.2f s", jobs.size() - failed,
                             jobs.size(), failed, secondsSince(begin)));
    }
    return failed == 0 ? kAllGood : kSomeFailed;
}

}  // namespace quen::reprocess
