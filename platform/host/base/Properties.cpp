#include "host/base/Properties.h"

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include <cutils/properties.h>

#include "host/base/Mutex.h"

namespace {

/** The process's properties. */
struct PropertyTable {
    quen::host::SharedMutex lock;
    /** None is empty. */
    std::map<std::string, std::string, std::less<>> values HOST_GUARDED_BY(lock);
};

/** Never destroyed: a thread may read a property while the process exits. */
PropertyTable& table() {
    static auto* const instance = new PropertyTable;
    return *instance;
}

struct TruthWord {
    char const* word;
    int8_t value;
};

constexpr TruthWord kTruthWords[] = {
        {"0", 0}, {"n", 0}, {"no", 0},  {"false", 0}, {"off", 0},
        {"1", 1}, {"y", 1}, {"yes", 1}, {"true", 1},  {"on", 1},
};

intmax_t readNumber(char const* key, intmax_t lowest, intmax_t highest, intmax_t defaultValue) {
    char text[PROPERTY_VALUE_MAX];
    if (key == nullptr || property_get(key, text, nullptr) == 0) {
        return defaultValue;
    }
    char* end = nullptr;
    errno = 0;
    intmax_t const number = strtoimax(text, &end, 0);
    bool const reads = end != text && errno != ERANGE;
    return reads && number >= lowest && number <= highest ? number : defaultValue;
}

}  // namespace

bool quen::host::setProperty(std::string_view name, std::string_view value) {
    if (name.empty() || value.size() >= PROPERTY_VALUE_MAX) {
        return false;
    }
    PropertyTable& properties = table();
    WriterLock const lock(properties.lock);
    auto const found = properties.values.find(name);
    if (found != properties.values.end()) {
        if (value.empty()) {
            properties.values.erase(found);
        } else {
            found->second = value;
        }
    } else if (!value.empty()) {
        properties.values.emplace(name, value);
    }
    return true;
}

int property_set(char const* key, char const* value) {
    bool const set = key != nullptr && quen::host::setProperty(key, value == nullptr ? "" : value);
    return set ? 0 : -1;
}

int property_get(char const* key, char* value, char const* defaultValue) {
    size_t length = 0;
    {
        PropertyTable& properties = table();
        quen::host::ReaderLock const lock(properties.lock);
        auto const found = properties.values.find(std::string_view(key));
        if (found != properties.values.end()) {
            length = found->second.copy(value, PROPERTY_VALUE_MAX - 1);
        }
    }
    if (length == 0 && defaultValue != nullptr) {
        length = strnlen(defaultValue, PROPERTY_VALUE_MAX - 1);
        memcpy(value, defaultValue, length);
    }
    value[length] = '\0';
    return static_cast<int>(length);
}

int8_t property_get_bool(char const* key, int8_t defaultValue) {
    char text[PROPERTY_VALUE_MAX];
    if (key == nullptr || property_get(key, text, nullptr) == 0) {
        return defaultValue;
    }
    for (TruthWord const& word : kTruthWords) {
        if (strcmp(text, word.word) == 0) {
            return word.value;
        }
    }
    return defaultValue;
}

int64_t property_get_int64(char const* key, int64_t defaultValue) {
    return readNumber(key, INT64_MIN, INT64_MAX, defaultValue);
}

int32_t property_get_int32(char const* key, int32_t defaultValue) {
    return static_cast<int32_t>(readNumber(key, INT32_MIN, INT32_MAX, defaultValue));
}
