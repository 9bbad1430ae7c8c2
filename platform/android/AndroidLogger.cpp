// Hands the lines of Android's own log library to the host's log: its levels, its sink.

#include <android/log.h>

#include "host/log/LogFilter.h"
#include "host/log/LogOutput.h"

namespace {

using quen::host::LogLevel;

LogLevel levelOf(int priority) {
    switch (priority) {
        case ANDROID_LOG_VERBOSE:
        case ANDROID_LOG_DEBUG:
            return LogLevel::Debug;
        case ANDROID_LOG_WARN:
            return LogLevel::Warning;
        case ANDROID_LOG_ERROR:
        case ANDROID_LOG_FATAL:
            return LogLevel::Error;
        default:
            return LogLevel::Info;
    }
}

/** Receives a line that the library lets pass. Any thread. */
void write(__android_logger_data const* line, char const* text) {
    char const* const tag = line->tag == nullptr ? "" : line->tag;
    if (line->priority == ANDROID_LOG_FATAL) {
        quen::host::outputLastLine(tag, line->priority, text);
    } else if (quen::host::isWanted(tag, levelOf(line->priority))) {
        quen::host::outputAndroidLine(tag, line->priority, text);
    }
}

[[gnu::constructor]] void takeOver() {
    __android_log_set_logger(write);
}

}  // namespace
