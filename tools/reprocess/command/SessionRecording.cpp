#include "command/SessionRecording.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "command/ExitCode.h"
#include "quenRecorder/RecordedIsp.h"
#include "quenRecorder/Recorder.h"
#include "terminal/Printable.h"

namespace quen::reprocess {

using recorder::Pictures;
using recorder::Recorder;

bool startRecording(Options const& options) {
    if (options.record.empty()) {
        return true;
    }
    int error = 0;
    auto const started =
            Recorder::start(options.record.c_str(),
                            options.recordPictures ? Pictures::Whole : Pictures::Hashes, error);
    if (started == nullptr) {
        std::fprintf(stderr, "quen-reprocess: --record: %s cannot be written: %s\n",
                     printable(options.record).c_str(), std::strerror(error));
        return false;
    }
    recorder::recordIsp(started);
    Recorder::setCurrent(started);
    return true;
}

int finishRecording(Options const& options, int exitCode) {
    auto const started = Recorder::current();
    Recorder::setCurrent(nullptr);
    std::string const problem = started == nullptr ? std::string() : started->finish();
    if (problem.empty()) {
        return exitCode;
    }
    std::fprintf(stderr, "quen-reprocess: the recording %s is not whole: %s\n",
                 printable(options.record).c_str(), problem.c_str());
    return exitCode == kAllGood ? kSomeFailed : exitCode;
}

}  // namespace quen::reprocess
