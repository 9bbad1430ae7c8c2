#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include <hidl/details/Pointer.h>

namespace android::hardware {

/** A zero-terminated text in a record. Comparisons and streams stop at its first zero byte. */
class hidl_string {
  public:
    hidl_string() { setEmpty(); }
    hidl_string(char const* text) : hidl_string(std::string_view(text == nullptr ? "" : text)) {}
    hidl_string(char const* text, size_t length) : hidl_string(std::string_view(text, length)) {}
    hidl_string(std::string const& text) : hidl_string(std::string_view(text)) {}
    hidl_string(hidl_string const& other) : hidl_string(other.view()) {}
    hidl_string(hidl_string&& other) noexcept { take(other); }
    ~hidl_string() { release(); }

    hidl_string& operator=(hidl_string const& other) {
        if (this != &other) {
            *this = hidl_string(other);
        }
        return *this;
    }
    hidl_string& operator=(hidl_string&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    hidl_string& operator=(char const* text) { return *this = hidl_string(text); }
    hidl_string& operator=(std::string const& text) { return *this = hidl_string(text); }

    operator std::string() const { return {mBuffer, mSize}; }

    char const* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear() {
        release();
        setEmpty();
    }

    /** Points at a text that outlives this object; `data[size]` must be zero. */
    void setToExternal(char const* data, size_t size) {
        if (size > UINT32_MAX || data[size] != '\0') {
            details::fatal("hidl_string: the text has no end at its size");
        }
        release();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = false;
    }

  private:
    explicit hidl_string(std::string_view text) {
        setEmpty();
        if (text.empty()) {
            return;
        }
        if (text.size() >= UINT32_MAX) {
            details::fatal("hidl_string: the text is too long");
        }
        char* const buffer = new char[text.size() + 1];
        text.copy(buffer, text.size());
        buffer[text.size()] = '\0';
        mBuffer = buffer;
        mSize = static_cast<uint32_t>(text.size());
        mOwnsBuffer = true;
    }
    std::string_view view() const { return {mBuffer, mSize}; }
    void setEmpty() {
        mBuffer = "";
        mSize = 0;
        mOwnsBuffer = false;
    }
    void take(hidl_string& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.setEmpty();
    }
    void release() {
        if (mOwnsBuffer) {
            delete[] static_cast<char const*>(mBuffer);
        }
    }

    details::hidl_pointer<char const> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
    [[maybe_unused]] uint8_t mPad[3] = {};
};

static_assert(sizeof(hidl_string) == 16, "wrong size");
static_assert(alignof(hidl_string) == 8, "wrong alignment");

inline bool operator==(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) == 0;
}
inline bool operator==(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) == 0;
}
inline bool operator==(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) == 0;
}
inline bool operator!=(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) != 0;
}
inline bool operator!=(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) != 0;
}
inline bool operator!=(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) != 0;
}
inline bool operator<(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) < 0;
}
inline bool operator<(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) < 0;
}
inline bool operator<(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) < 0;
}
inline bool operator<=(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) <= 0;
}
inline bool operator<=(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) <= 0;
}
inline bool operator<=(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) <= 0;
}
inline bool operator>(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) > 0;
}
inline bool operator>(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) > 0;
}
inline bool operator>(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) > 0;
}
inline bool operator>=(hidl_string const& left, hidl_string const& right) {
    return strcmp(left.c_str(), right.c_str()) >= 0;
}
inline bool operator>=(hidl_string const& left, char const* right) {
    return strcmp(left.c_str(), right) >= 0;
}
inline bool operator>=(char const* left, hidl_string const& right) {
    return strcmp(left, right.c_str()) >= 0;
}
inline std::ostream& operator<<(std::ostream& stream, hidl_string const& text) {
    return stream << text.c_str();
}

}  // namespace android::hardware
