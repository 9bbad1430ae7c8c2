#pragma once

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
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
 * is left out, but has to name the line's level and the tag that goes with its source file.
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
        EXPECT_EQ(name, strstr(text, "Helper.cpp:") ? "quenGralloc" : "quenOfflineDevice") << text;
        std::lock_guard<std::mutex> lock(mLock);
        mRaw.emplace_back(text);
        mLines.push_back(std::string(1, "DEWI"[level & 3]) + " " + messageOf(text));
        mThreads.push_back(std::this_thread::get_id());
    }

    /** The lines so far, oldest first. */
    std::vector<std::string> lines() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mLines;
    }

    /** The calling thread's lines, or those of all the others. */
    std::vector<std::string> linesOfThisThread(bool ofThis = true) const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<std::string> lines;
        for (size_t i = 0; i < mLines.size(); ++i) {
            if ((mThreads[i] == std::this_thread::get_id()) == ofThis) {
                lines.push_back(mLines[i]);
            }
        }
        return lines;
    }

    /** The same lines, as they were written. */
    std::vector<std::string> rawLines() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mRaw;
    }

    /** The lines so far, which are then forgotten. */
    std::vector<std::string> take() {
        std::lock_guard<std::mutex> lock(mLock);
        mRaw.clear();
        mThreads.clear();
        return std::exchange(mLines, {});
    }

    size_t count(std::string const& line) const {
        std::lock_guard<std::mutex> lock(mLock);
        return static_cast<size_t>(std::count(mLines.begin(), mLines.end(), line));
    }

    bool has(std::string const& line) const { return count(line) != 0; }

  private:
    /** What follows "prefix[tag] file:line function() ". */
    static std::string messageOf(std::string const& text) {
        size_t const tagEnd = text.find("] ");
        size_t const function = text.find("() ", tagEnd == std::string::npos ? 0 : tagEnd);
        return function == std::string::npos ? text : text.substr(function + 3);
    }

    mutable std::mutex mLock;
    std::vector<std::string> mLines;        // guarded by mLock
    std::vector<std::string> mRaw;          // guarded by mLock
    std::vector<std::thread::id> mThreads;  // guarded by mLock
    quen::host::LogLevel mOldLevel;
    quen::host::LogSink* mOldSink;
};

}  // namespace quentest
