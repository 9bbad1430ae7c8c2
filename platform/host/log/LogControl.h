#pragma once

#include <optional>
#include <string_view>

/**
 * What a program wants of the log, of the camera's lines and Android's alike. Any thread.
 *
 * Errors and warnings are written, to standard error, unless a program says otherwise. The flags of
 * `g_logInfoLv` are all set and are not touched: which lines are wanted is decided by the enable
 * test.
 */
namespace quen::host {

/** How much is logged: the named level and those before it. */
enum class LogLevel { Silent, Error, Warning, Info, Debug };

/** "silent", "error", "warning", "info" or "debug"; nothing for another name. */
std::optional<LogLevel> logLevelByName(std::string_view name);

/** The level of every tag that has none of its own. */
LogLevel logLevel();
void setLogLevel(LogLevel level);

/** @return false, and nothing changed, for a name that is none of a level */
bool setLogLevel(std::string_view name);

/** Gives a tag a level of its own, above or below the others'. */
void setTagLogLevel(std::string_view tag, LogLevel level);

/** Takes every tag's own level back. */
void clearTagLogLevels();

/**
 * Takes the log's lines in the place of standard error.
 *
 * Lines come on the thread that logs, from several threads at a time. A sink must not log, nor
 * replace the sink.
 */
class LogSink {
  public:
    virtual ~LogSink() = default;

    /**
     * A line of the camera (`log_dbg_print`).
     *
     * @param level debug 0, error 1, warning 2, info 3
     * @param text without an end of line
     */
    virtual void write(char const* tag, int level, char const* text) = 0;

    /**
     * A line of Android's log (`__android_log_print` and the like), left out unless overridden. A
     * line that ends the process goes to standard error too.
     *
     * @param priority ANDROID_LOG_*
     */
    virtual void writeAndroid(char const* tag, int priority, char const* text);
};

/**
 * Replaces the sink; null for standard error. Once the call has returned, no thread is in the old
 * sink.
 *
 * @param sink the caller's, to be replaced before it is destroyed
 * @return the sink before, null for standard error
 */
LogSink* setLogSink(LogSink* sink);

}  // namespace quen::host
