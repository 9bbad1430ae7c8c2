#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
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
#include "report/Report.h"
#include "support/Failure.h"

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
void startPlatform(Options const& options, std::shared_ptr<Report> const& report) {
    host::setLogLevel(options.logLevel);
    host::setProperty("vendor.debug.camera.jpeg.timeout",
                      std::to_string(options.request.timeoutSeconds));
    host::registerGraphicsServices();
    host::isp::SoftwareIspOptions isp;
    isp.observer = report;
    // Longer than this client is on its way from a submission to the wait, and no longer than a
    // small picture takes.
    isp.minimumLatency = std::chrono::milliseconds(2);
    host::isp::registerSoftwareIsp(isp);
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
        std::fprintf(stderr, "quen-reprocess: %s\n", failure.what());
        return kUsage;
    }
    auto const report = std::make_shared<Report>(options->info);
    startPlatform(*options, report);
    Reprocessor reprocessor(options->request, *report, keptBuffers(*options));
    return options->demo ? runDemo(*options, reprocessor, *report)
                         : runBatch(*options, reprocessor, *report);
}

}  // namespace
}  // namespace quen::reprocess

int main(int argc, char** argv) {
    quen::reprocess::occupyStandardDescriptors();
    return quen::reprocess::run(argc, argv);
}
