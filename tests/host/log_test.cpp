#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mtkcam/log.h>

#include "host/LogLines.h"
#include "host/log/LogControl.h"

using quen::host::LogLevel;
using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

LogLevel const kLevelAtStart = quen::host::logLevel();

// The letters that the enable test allows.
std::string allowed(char const* tag) {
    std::string letters;
    for (char const letter : {'E', 'W', 'I', 'D', 'X'}) {
        if (mtkcam_testLog(tag, letter)) {
            letters += letter;
        }
    }
    return letters;
}

// A digit for each of Android's priorities: whether it is wanted.
std::string loggablePriorities() {
    std::string digits;
    for (int priority = ANDROID_LOG_UNKNOWN; priority < ANDROID_LOG_SILENT; ++priority) {
        digits += std::to_string(__android_log_is_loggable(priority, "quen", ANDROID_LOG_INFO));
    }
    return digits;
}

}  // namespace

TEST(LogTest, LevelsAreSetByNameAndByTag) {
    EXPECT_EQ(LogLevel::Warning, kLevelAtStart);
    EXPECT_EQ("EW", allowed("quen"));
    quen::host::setTagLogLevel("loud", LogLevel::Silent);
    quen::host::setTagLogLevel("loud", LogLevel::Debug);  // the later one counts
    quen::host::setTagLogLevel("quiet", LogLevel::Error);
    std::tuple<char const*, char const*, char const*> const levels[] = {
            {"debug", "EWID", "11111111"},
            {"info", "EWI", "11001111"},
            {"warning", "EW", "00000111"},
            {"error", "E", "00000011"},
            {"silent", "", "00000000"}};
    for (auto const& [name, letters, loggable] : levels) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(quen::host::setLogLevel(name));
        EXPECT_EQ(letters, allowed("quen"));
        EXPECT_EQ(loggable, loggablePriorities());
        EXPECT_EQ("EWID", allowed("loud"));
        EXPECT_EQ(letters, allowed("louder"));
        EXPECT_EQ("E", allowed("quiet"));
    }
    EXPECT_FALSE(quen::host::setLogLevel("Debug"));
    EXPECT_EQ(LogLevel::Silent, quen::host::logLevel());
    quen::host::clearTagLogLevels();
    EXPECT_EQ("", allowed("loud"));
    quen::host::setLogLevel(LogLevel::Warning);
}

TEST(LogTest, ASinkTakesBothKindsOfLines) {
    quentest::LogLines log;
    log_dbg_print("quen", 1, "E [quen] text");
    EXPECT_GT(__android_log_print(ANDROID_LOG_ERROR, "quen", "%s %d", "failed", 3), 0);
    EXPECT_GT(__android_log_write(ANDROID_LOG_WARN, nullptr, "no tag"), 0);
    EXPECT_GT(__android_log_write(ANDROID_LOG_WARN, "quen", nullptr), 0);
    EXPECT_LE(__android_log_print(ANDROID_LOG_INFO, "quen", "unwanted"), 0);
    EXPECT_EQ(__android_log_is_loggable(ANDROID_LOG_INFO, "quen", ANDROID_LOG_DEBUG), 0);
    EXPECT_EQ(__android_log_is_loggable(ANDROID_LOG_WARN, nullptr, ANDROID_LOG_ERROR), 1);
    std::string const longText(2000, 'x');
    __android_log_print(ANDROID_LOG_ERROR, "quen", "%s", longText.c_str());
    EXPECT_THAT(log.lines, ElementsAre("camera quen 1 E [quen] text", "android quen 6 failed 3",
                                       "android  5 no tag", "android quen 5 ",
                                       "android quen 6 " + longText.substr(0, 1023)));
}

TEST(LogTest, StandardErrorGetsWholeLinesFromEveryThread) {
    testing::internal::CaptureStderr();
    auto const write = [](std::string const& text) {
        for (int line = 0; line < 300; ++line) {
            log_dbg_print("quen", 2, (text + "\r\n").c_str());
        }
    };
    std::thread other(write, std::string(200, 'a'));
    write(std::string(900, 'b'));
    other.join();
    std::istringstream output(testing::internal::GetCapturedStderr());
    auto const whole =
            MatchesRegex("[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3} +[0-9]+ W quen: (a{200}|b{900})");
    int count = 0;
    for (std::string line; std::getline(output, line); ++count) {
        ASSERT_THAT(line, whole);
    }
    EXPECT_EQ(600, count);
    testing::internal::CaptureStderr();
    log_dbg_print("quen", 2, std::string(5000, 'x').c_str());
    std::string const cut = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(cut.size() == 4096 && cut.back() == '\n');
    EXPECT_STREQ(get_filename("a/b/c.cpp"), "c.cpp");
    EXPECT_STREQ(get_filename("c.cpp"), "c.cpp");
}

TEST(LogTest, StandardErrorGetsTheLetterOfTheLevel) {
    quen::host::setLogLevel(LogLevel::Debug);
    testing::internal::CaptureStderr();
    for (int level = 0; level < 5; ++level) {
        log_dbg_print("quen", level, "x");
    }
    for (int priority = ANDROID_LOG_VERBOSE; priority < ANDROID_LOG_FATAL; ++priority) {
        __android_log_write(priority, "quen", "x");
    }
    std::istringstream output(testing::internal::GetCapturedStderr());
    std::string letters;
    for (std::string line; std::getline(output, line);) {
        letters += line.at(line.find(" quen: x") - 1);
    }
    EXPECT_EQ(letters, "DEWI?VDIWE");

    int const kept = dup(STDERR_FILENO);
    close(STDERR_FILENO);
    errno = ENOENT;
    log_dbg_print("quen", 1, "nowhere to go");
    EXPECT_EQ(errno, ENOENT);
    dup2(kept, STDERR_FILENO);
    close(kept);
    quen::host::setLogLevel(LogLevel::Warning);
}

TEST(LogDeathTest, AnAssertionSpeaksAndEndsTheProcess) {
    quen::host::setLogLevel(LogLevel::Silent);
    EXPECT_DEATH(__android_log_assert("1", "quen", "(%s){#%d}\r\n", "init", 7),
                 "[0-9:.]+ +[0-9]+ F quen: \\(init\\)\\{#7\\}");
    EXPECT_DEATH(__android_log_assert("x == 1", "quen", nullptr), "Assertion failed: x == 1");
    EXPECT_DEATH(__android_log_assert(nullptr, "quen", nullptr), "quen: Unspecified assertion");
    quen::host::setLogLevel(LogLevel::Warning);
}
