#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <mtkcam/log.h>

#include "host/log/LogControl.h"

namespace quentest {

/**
 * Turns every level of the log on and collects the library's lines, until it is destroyed: then the
 * log is as it was. Lines of other tags are dropped. One at a time; lines may come from any thread.
 *
 * A line reads "<level letter> <message>": what comes before the message, the source line for one,
 * is left out, but has to name the line's level and tag.
 */
class Transcript : public quen::host::LogSink {
  public:
    Transcript() : mOldLevel(quen::host::logLevel()) {
        quen::host::setLogLevel(quen::host::LogLevel::Debug);
        mOldSink = quen::host::setLogSink(this);
    }
    ~Transcript() override {
        quen::host::setLogSink(mOldSink);
        quen::host::setLogLevel(mOldLevel);
    }

    Transcript(Transcript const&) = delete;
    Transcript& operator=(Transcript const&) = delete;

    void write(char const* tag, int level, char const* text) override {
        std::string const name(tag);
        if (name != "quenOfflineDevice" && name != "quenGralloc") {
            return;
        }
        std::string const head = g_logInfoLv[level & 3].prefix + ("[" + name + "] ");
        EXPECT_EQ(std::string(text).substr(0, head.size()), head);
        std::lock_guard<std::mutex> lock(mLock);
        mLines.push_back({text, name, std::string(1, "DEWI"[level & 3]) + " " + messageOf(text),
                          std::this_thread::get_id()});
    }

    /** The lines so far, oldest first. */
    std::vector<std::string> lines() const {
        return linesWhere([](Line const&) { return true; });
    }

    /** Those of one log tag: quenGralloc's are the helpers', quenOfflineDevice's all the others. */
    std::vector<std::string> linesOfTag(std::string const& tag) const {
        return linesWhere([&](Line const& line) { return line.tag == tag; });
    }

    /** The calling thread's lines, or those of all the others. */
    std::vector<std::string> linesOfThisThread(bool ofThis = true) const {
        return linesWhere([&](Line const& line) {
            return (line.thread == std::this_thread::get_id()) == ofThis;
        });
    }

    /** The same lines, as they were written. */
    std::vector<std::string> rawLines() const {
        return linesWhere([](Line const&) { return true; }, &Line::raw);
    }

    /** The lines so far, which are then forgotten. */
    std::vector<std::string> take() {
        std::vector<std::string> result = lines();
        std::lock_guard<std::mutex> lock(mLock);
        mLines.erase(mLines.begin(), mLines.begin() + static_cast<ptrdiff_t>(result.size()));
        return result;
    }

    size_t count(std::string const& text) const {
        return linesWhere([&](Line const& line) { return line.text == text; }).size();
    }

    bool has(std::string const& line) const { return count(line) != 0; }

  private:
    struct Line {
        std::string raw, tag, text;
        std::thread::id thread;
    };

    template <typename Wanted>
    std::vector<std::string> linesWhere(Wanted&& wanted,
                                        std::string Line::*member = &Line::text) const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<std::string> lines;
        for (Line const& line : mLines) {
            if (wanted(line)) {
                lines.push_back(line.*member);
            }
        }
        return lines;
    }

    /** What follows "prefix[tag] file:line function() ". */
    static std::string messageOf(std::string const& text) {
        size_t const tagEnd = text.find("] ");
        size_t const function = text.find("() ", tagEnd == std::string::npos ? 0 : tagEnd);
        return function == std::string::npos ? text : text.substr(function + 3);
    }

    mutable std::mutex mLock;
    std::vector<Line> mLines;  // guarded by mLock
    quen::host::LogLevel mOldLevel;
    quen::host::LogSink* mOldSink;
};

}  // namespace quentest
