#pragma once

#include <algorithm>
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
        mRaw.emplace_back(text);
        mTags.push_back(name);
        mLines.push_back(std::string(1, "DEWI"[level & 3]) + " " + messageOf(text));
        mThreads.push_back(std::this_thread::get_id());
    }

    /** The lines so far, oldest first. */
    std::vector<std::string> lines() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mLines;
    }

    /** Those of one log tag: quenGralloc's are the helpers', quenOfflineDevice's all the others. */
    std::vector<std::string> linesOfTag(std::string const& tag) const {
        return linesWhere([&](size_t i) { return mTags[i] == tag; });
    }

    /** The calling thread's lines, or those of all the others. */
    std::vector<std::string> linesOfThisThread(bool ofThis = true) const {
        return linesWhere(
                [&](size_t i) { return (mThreads[i] == std::this_thread::get_id()) == ofThis; });
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
        mTags.clear();
        mThreads.clear();
        return std::exchange(mLines, {});
    }

    size_t count(std::string const& line) const {
        std::lock_guard<std::mutex> lock(mLock);
        return static_cast<size_t>(std::count(mLines.begin(), mLines.end(), line));
    }

    bool has(std::string const& line) const { return count(line) != 0; }

  private:
    template <typename Wanted>
    std::vector<std::string> linesWhere(Wanted&& wanted) const {
        std::lock_guard<std::mutex> lock(mLock);
        std::vector<std::string> lines;
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (wanted(i)) {
                lines.push_back(mLines[i]);
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
    std::vector<std::string> mLines;        // guarded by mLock
    std::vector<std::string> mRaw;          // guarded by mLock
    std::vector<std::string> mTags;         // guarded by mLock
    std::vector<std::thread::id> mThreads;  // guarded by mLock
    quen::host::LogLevel mOldLevel;
    quen::host::LogSink* mOldSink;
};

}  // namespace quentest
