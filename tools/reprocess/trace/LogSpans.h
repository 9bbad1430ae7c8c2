#pragma once

#include "host/log/LogControl.h"
#include "trace/Trace.h"

namespace quen::reprocess {

/**
 * Makes spans of the library's operations out of its log: each logs its entry, a line that ends in
 * E, and its exit, one that ends in X. Sees to it that the library logs them, and prints no more of
 * its lines than the log's level says. One object at a time in a process; thread-safe.
 */
class LogSpans : public host::LogSink {
  public:
    /** Takes over the log, whose level is set. @param trace must outlive it */
    explicit LogSpans(Trace& trace);
    ~LogSpans() override;
    LogSpans(LogSpans const&) = delete;
    LogSpans& operator=(LogSpans const&) = delete;

    void write(char const* tag, int level, char const* text) override;
    void writeAndroid(char const* tag, int priority, char const* text) override;

  private:
    void note(std::string_view line);

    Trace& mTrace;
    host::LogLevel const mPrinted;
};

}  // namespace quen::reprocess
