#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>

#include "client/Reprocessor.h"
#include "client/RequestMetadata.h"
#include "command/Batch.h"
#include "command/ExitCode.h"
#include "command/Options.h"
#include "demo/Demo.h"
#include "host/base/Properties.h"
#include "host/gralloc/GraphicsServices.h"
#include "host/isp/device/SoftwareIspModule.h"
#include "host/log/LogControl.h"
#include "quenRecorder/RecordedIsp.h"
#include "quenRecorder/Recorder.h"
#include "report/Report.h"
#include "support/Failure.h"
#include "support/Text.h"

namespace quen::reprocess {
namespace {

/**
 * Opens /dev/null for standard streams that are closed: a file opened later would take their place,
 * and messages would end up in it.
 */
void occupyStandardDescriptors() {
    int fd = 0;
    do {
        fd = ::open("/dev/null", O_RDWR);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd > STDERR_FILENO) {
        ::close(fd);
    }
}

/** Registers the services and sets the properties that the library finds on a phone. */
void startPlatform(Options const& options, BatchResources const& resources,
                   std::shared_ptr<Report> const& report) {
    host::setLogLevel(options.logLevel);
    host::setProperty("vendor.debug.camera.jpeg.timeout",
                      std::to_string(options.request.timeoutSeconds));
    host::GraphicsServices const graphics = host::registerGraphicsServices();
    graphics.allocator->keepReserve(resources.buffersAhead);
    host::isp::SoftwareIspOptions isp;
    isp.observer = report;
    isp.developThreads = resources.developThreads;
    // Longer than this client is on its way from a submission to the wait, and no longer than a
    // small picture takes.
    isp.minimumLatency = std::chrono::milliseconds(1);
    host::isp::registerSoftwareIsp(isp);
}

/**
 * Has everything from now on recorded, when that is wanted.
 *
 * @throws Failure when the file cannot be written
 */
void startRecording(Options const& options) {
    if (options.record.empty()) {
        return;
    }
    using recorder::Pictures;
    int error = 0;
    auto const started = recorder::Recorder::start(
            options.record.c_str(), options.recordPictures ? Pictures::Whole : Pictures::Hashes,
            error);
    if (started == nullptr) {
        throw Failure("--record: " + options.record + " cannot be written: " + strerror(error));
    }
    recorder::recordIsp(started);
    recorder::Recorder::setCurrent(started);
}

/** Ends the recording, if there is one. @return the exit code, when the recording is whole */
int finishRecording(Options const& options, int exitCode) {
    auto const started = recorder::Recorder::current();
    recorder::Recorder::setCurrent(nullptr);
    std::string const problem = started == nullptr ? std::string() : started->finish();
    if (problem.empty()) {
        return exitCode;
    }
    std::fprintf(stderr, "quen-reprocess: the recording %s is not whole: %s\n",
                 printable(options.record).c_str(), problem.c_str());
    return exitCode == kAllGood ? kSomeFailed : exitCode;
}

/** Runs the tool. @return the exit code */
int run(int argc, char** argv) {
    int exitCode = kAllGood;
    std::optional<Options> const options = parseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    try {
        RequestMetadata(options->request, 0, 0);  // checks the assignments once for all files
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s\n", printable(failure.what()).c_str());
        return kUsage;
    }
    auto const report = std::make_shared<Report>(options->info);
    BatchResources const resources = resourcesFor(*options);
    startPlatform(*options, resources, report);
    try {
        startRecording(*options);
    } catch (Failure const& failure) {
        std::fprintf(stderr, "quen-reprocess: %s\n", printable(failure.what()).c_str());
        return kUsage;
    }
    Reprocessor reprocessor(options->request, *report, resources.keptBuffers);
    int const done = options->demo ? runDemo(*options, reprocessor, *report)
                                   : runBatch(*options, reprocessor, *report);
    return finishRecording(*options, done);
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
    quen::reprocess::occupyStandardDescriptors();
    // Beyond the limit of a file's size a write fails, which is told, rather than the process.
    ::signal(SIGXFSZ, SIG_IGN);
    return quen::reprocess::checkPrinted(quen::reprocess::runGuarded(argc, argv));
}
