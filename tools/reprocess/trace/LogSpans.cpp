#include "trace/LogSpans.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <android/log.h>

#include "trace/FlowEnd.h"

namespace quen::reprocess {
namespace {

constexpr char kLibrary[] = "quenOfflineDevice";
constexpr int kInfo = 3;

// By the number of a camera line's level.
constexpr host::LogLevel kLevels[] = {host::LogLevel::Debug, host::LogLevel::Error,
                                      host::LogLevel::Warning, host::LogLevel::Info};

/** An operation that this thread is in. */
struct Entered {
    std::string function;
    Trace::Clock::time_point begin;
};

thread_local std::vector<Entered> tEntered;

/** The function that logged a line, "I [tag] file.cpp:12 function() message"; empty for another. */
std::string_view functionOf(std::string_view line) {
    size_t const end = line.find("() ");
    if (end == std::string_view::npos) {
        return {};
    }
    size_t const blank = line.rfind(' ', end);
    size_t const begin = blank == std::string_view::npos ? 0 : blank + 1;
    return line.substr(begin, end - begin);
}

/** The stage that a line names; null for none. */
char const* stageOf(std::string_view line) {
    for (char const* const stage : {"RAW2YUV", "YUV2JPEG"}) {
        if (line.find(stage) != std::string_view::npos) {
            return stage;
        }
    }
    return nullptr;
}

bool endsIn(std::string_view line, std::string_view end) {
    return line.size() >= end.size() && line.substr(line.size() - end.size()) == end;
}

}  // namespace

LogSpans::LogSpans(Trace& trace) : mTrace(trace), mPrinted(host::logLevel()) {
    host::setTagLogLevel(kLibrary, std::max(mPrinted, host::LogLevel::Info));
    host::setLogSink(this);
}

LogSpans::~LogSpans() {
    host::setLogSink(nullptr);
    host::clearTagLogLevels();
}

void LogSpans::write(char const* tag, int level, char const* text) {
    // Lines of other tags come as far as the log's level lets them.
    if (level < 0 || level > kInfo || kLevels[level] <= mPrinted) {
        host::printCameraLine(tag, level, text);
    }
    if (level == kInfo && tag == std::string_view(kLibrary)) {
        note(text);
    }
}

void LogSpans::writeAndroid(char const* tag, int priority, char const* text) {
    if (priority != ANDROID_LOG_FATAL) {  // those the log prints itself
        host::printAndroidLine(tag, priority, text);
    }
}

/** An exit ends the latest entry of its function; entries behind that had no exit. */
void LogSpans::note(std::string_view line) {
    if (endsIn(line, " E")) {
        Entered entered{std::string(functionOf(line)), Trace::Clock::now()};
        endPendingFlow(mTrace, entered.begin);
        tEntered.push_back(std::move(entered));
        return;
    }
    if (!endsIn(line, " X")) {
        return;
    }
    std::string_view const function = functionOf(line);
    auto const found =
            std::find_if(tEntered.rbegin(), tEntered.rend(),
                         [&](Entered const& entered) { return entered.function == function; });
    if (found == tEntered.rend()) {
        return;
    }
    char const* const stage = stageOf(line);
    mTrace.addSpan(TraceSource::Library, mTrace.keep(found->function), found->begin,
                   Trace::Clock::now(), {stage != nullptr ? "stage" : nullptr, 0, stage});
    tEntered.erase(found.base() - 1, tEntered.end());
}

}  // namespace quen::reprocess
