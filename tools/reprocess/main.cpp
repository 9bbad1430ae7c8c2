#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "client/Reprocessor.h"
#include "client/RequestMetadata.h"
#include "command/Batch.h"
#include "command/ExitCode.h"
#include "command/FileNames.h"
#include "command/Interruption.h"
#include "command/OpenFiles.h"
#include "command/Options.h"
#include "command/OutputFile.h"
#include "command/RunFiles.h"
#include "command/SessionRecording.h"
#include "command/StandardStreams.h"
#include "demo/Demo.h"
#include "host/base/Properties.h"
#include "host/gralloc/GraphicsServices.h"
#include "host/isp/device/SoftwareIspModule.h"
#include "host/log/LogControl.h"
#include "report/Report.h"
#include "support/Failure.h"
#include "terminal/Printable.h"
#include "trace/IspSpans.h"
#include "trace/LogSpans.h"
#include "trace/TraceFile.h"

namespace quen::reprocess {
namespace {

/**
 * Reads the time zone once, before there are threads. Without TZ the C library reads its file again
 * whenever a time is converted, one thread after the other.
 */
void fixTimeZone() {
    ::setenv("TZ", ":/etc/localtime", 0);
    ::tzset();
}

/** Registers the services and sets the properties that the library finds on a phone. */
void startPlatform(Options const& options,
                   std::shared_ptr<host::isp::IspObserver> const& observer) {
    fixTimeZone();
    host::setLogLevel(options.logLevel);
    host::setProperty("vendor.debug.camera.jpeg.timeout",
                      std::to_string(options.request.timeoutSeconds));
    host::registerGraphicsServices();
    host::isp::SoftwareIspOptions isp;
    isp.observer = observer;
    // Longer than this client is on its way from a submission to the wait, and no longer than a
    // small picture takes.
    isp.minimumLatency = std::chrono::milliseconds(1);
    host::isp::registerSoftwareIsp(isp);
}

/** Develops what the command line asks for. @return the exit code */
int develop(Options const& options, std::vector<Job> const& jobs, Report& report, Trace* trace) {
    Reprocessor reprocessor(options.request, report, keptBuffersFor(options));
    return options.demo ? runDemo(options, reprocessor, report, trace)
                        : runBatch(options, jobs, reprocessor, report, trace);
}

/** Does what the command line asks for, recorded if it says so. @return the exit code */
int work(Options const& options, std::vector<Job> const& jobs, Report& report, Trace* trace) {
    if (!startRecording(options)) {
        return kUsage;
    }
    return finishRecording(options, develop(options, jobs, report, trace));
}

/** Writes the timeline. @return the exit code: one that tells of a timeline that is not there */
int writeTrace(std::string const& path, Trace& trace, int exitCode) {
    Trace::Contents const contents = trace.take();
    if (contents.leftOut > 0) {
        std::fprintf(stderr,
                     "quen-reprocess: %s: is of the run's beginning; %zu events are left out\n",
                     printable(path).c_str(), contents.leftOut);
    }
    try {
        std::string const text = traceText(contents);
        writeOutputFile(path, {reinterpret_cast<uint8_t const*>(text.data()), text.size()});
        return exitCode;
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: the timeline %s %s\n", printable(path).c_str(),
                     printable(failure.what()).c_str());
    }
    return exitCode == kAllGood ? kSomeFailed : exitCode;
}

/**
 * Plans the run, and makes the folders of its outputs once nothing is left to refuse.
 *
 * @throws Failure
 */
std::vector<Job> plan(Options const& options) {
    Plan plan;
    if (options.demo) {
        plan.jobs.push_back({"", options.output, OutputKind::Jpeg, false, ""});
    } else {
        plan = planJobs(options);
    }
    checkRunFiles(options, plan);
    makeFolders(plan.folders);
    return std::move(plan.jobs);
}

/** The exit code of a run that was asked to print something: one that tells where that is lost. */
int checkNotClosed(int exitCode) {
    if (!isStandardOutputClosed()) {
        return exitCode;
    }
    std::fprintf(stderr, "quen-reprocess: standard output cannot be written: it is closed\n");
    return exitCode == kAllGood ? kSomeFailed : exitCode;
}

/** Runs the tool. @return the exit code */
int run(int argc, char** argv) {
    int exitCode = kAllGood;
    std::optional<Options> const options = parseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode == kAllGood ? checkNotClosed(exitCode) : exitCode;
    }
    std::vector<Job> jobs;
    try {
        RequestMetadata const any(options->request, 0, 0);  // checks the assignments once for all
        jobs = plan(*options);
        raiseOpenFiles();
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s\n", printable(failure.what()).c_str());
        return kUsage;
    }
    auto const report = std::make_shared<Report>(options->info);
    if (options->trace.empty()) {
        startPlatform(*options, report);
        exitCode = work(*options, jobs, *report, nullptr);
    } else {
        auto const trace = std::make_shared<Trace>();
        trace->nameThread(ThreadKind::Client);
        startPlatform(*options, std::make_shared<IspSpans>(trace, report));
        {
            LogSpans const spans(*trace);
            exitCode = work(*options, jobs, *report, trace.get());
        }
        exitCode = writeTrace(options->trace, *trace, exitCode);
    }
    if (options->info != InfoFormat::None && options->output != kStandardOutput) {
        exitCode = checkNotClosed(exitCode);
    }
    Interruption::follow();
    return exitCode;
}

/** Runs the tool; whatever is thrown ends in words and an exit code. */
int runGuarded(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "quen-reprocess: cannot go on: %s\n", printable(error.what()).c_str());
        return kSomeFailed;
    }
}

/** The exit code, when what was printed has arrived; else one that tells of the loss. */
int checkPrinted(int exitCode) {
    std::cout.flush();
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout) {
        return exitCode;
    }
    std::fprintf(stderr, "quen-reprocess: standard output cannot be written%s%s\n",
                 errno != 0 ? ": " : "", errno != 0 ? std::strerror(errno) : "");
    return exitCode == kAllGood ? kSomeFailed : exitCode;
}

}  // namespace
}  // namespace quen::reprocess

int main(int argc, char** argv) {
    quen::reprocess::occupyStandardStreams();
    // Beyond the limit of a file's size a write fails, which is told, rather than the process.
    ::signal(SIGXFSZ, SIG_IGN);
    return quen::reprocess::checkPrinted(quen::reprocess::runGuarded(argc, argv));
}
