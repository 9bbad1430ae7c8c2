#include "host/log/LogFilter.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::host {
namespace {

struct LevelName {
    std::string_view name;
    LogLevel level;
};

constexpr LevelName kLevelNames[] = {
        {"silent", LogLevel::Silent}, {"error", LogLevel::Error}, {"warning", LogLevel::Warning},
        {"info", LogLevel::Info},     {"debug", LogLevel::Debug},
};

constexpr LogLevel kDefaultLevel = LogLevel::Warning;

using TagLevels = std::vector<std::pair<std::string, LogLevel>>;

std::atomic<LogLevel> gLevel{kDefaultLevel};
std::atomic<TagLevels const*> gTagLevels{nullptr};  // null when no tag has a level of its own

Mutex gChangeLock;  // for changes of gLevel, gTagLevels and gWantedLevels, which are read without

LogLevel levelOf(TagLevels const* tags, std::string_view tag) {
    if (tags != nullptr) {
        for (auto const& [name, level] : *tags) {
            if (name == tag) {
                return level;
            }
        }
    }
    return gLevel.load(std::memory_order_relaxed);
}

void publishLocked(TagLevels const* tags) HOST_REQUIRES(gChangeLock) {
    LogLevel highest = gLevel.load(std::memory_order_relaxed);
    uint32_t byTag = 0;
    if (tags != nullptr) {
        byTag = kByTag;
        for (auto const& entry : *tags) {
            highest = std::max(highest, entry.second);
        }
    }
    gTagLevels.store(tags, std::memory_order_release);
    gWantedLevels.store(static_cast<uint32_t>(highest) | byTag, std::memory_order_release);
}

/** Keeps a table until the process exits: a thread may be reading it, and tables are few. */
TagLevels const* keepLocked(TagLevels levels) HOST_REQUIRES(gChangeLock) {
    static auto* const kept = new std::vector<std::unique_ptr<TagLevels const>>;
    kept->push_back(std::make_unique<TagLevels const>(std::move(levels)));
    return kept->back().get();
}

}  // namespace

std::atomic<uint32_t> gWantedLevels{static_cast<uint32_t>(kDefaultLevel)};

bool isWantedByTag(char const* tag, LogLevel level) {
    return level <= levelOf(gTagLevels.load(std::memory_order_acquire), tag);
}

std::optional<LogLevel> logLevelByName(std::string_view name) {
    for (LevelName const& known : kLevelNames) {
        if (known.name == name) {
            return known.level;
        }
    }
    return std::nullopt;
}

LogLevel logLevel() {
    return gLevel.load(std::memory_order_relaxed);
}

void setLogLevel(LogLevel level) {
    MutexLock const lock(gChangeLock);
    gLevel.store(level, std::memory_order_relaxed);
    publishLocked(gTagLevels.load(std::memory_order_relaxed));
}

bool setLogLevel(std::string_view name) {
    std::optional<LogLevel> const level = logLevelByName(name);
    if (level) {
        setLogLevel(*level);
    }
    return level.has_value();
}

void setTagLogLevel(std::string_view tag, LogLevel level) {
    MutexLock const lock(gChangeLock);
    TagLevels const* const before = gTagLevels.load(std::memory_order_relaxed);
    TagLevels levels = before == nullptr ? TagLevels() : *before;
    auto const found = std::find_if(levels.begin(), levels.end(),
                                    [&](auto const& entry) { return entry.first == tag; });
    if (found == levels.end()) {
        levels.emplace_back(tag, level);
    } else {
        found->second = level;
    }
    publishLocked(keepLocked(std::move(levels)));
}

void clearTagLogLevels() {
    MutexLock const lock(gChangeLock);
    publishLocked(nullptr);
}

}  // namespace quen::host
