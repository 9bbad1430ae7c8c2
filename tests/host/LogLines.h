#pragma once

#include <string>
#include <vector>

#include "host/log/LogControl.h"

namespace quentest {

// Collects what is logged as "<kind> <tag> <level> <text>". Its end leaves the log as it was.
class LogLines : public quen::host::LogSink {
  public:
    LogLines() { quen::host::setLogSink(this); }
    ~LogLines() override {
        quen::host::setLogSink(nullptr);
        quen::host::setLogLevel(mLevel);
    }
    void write(char const* tag, int level, char const* text) override {
        put("camera", tag, level, text);
    }
    void writeAndroid(char const* tag, int priority, char const* text) override {
        put("android", tag, priority, text);
    }

    std::vector<std::string> lines;

  private:
    void put(std::string const& kind, char const* tag, int level, char const* text) {
        lines.push_back(kind + " " + tag + " " + std::to_string(level) + " " + text);
    }

    quen::host::LogLevel const mLevel = quen::host::logLevel();
};

}  // namespace quentest
