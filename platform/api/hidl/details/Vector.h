#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <vector>

#include <hidl/details/Pointer.h>

namespace android::hardware {

/**
 * An array in a record: pointer, 32-bit count, owns flag. A copy is deep. Not thread-safe.
 */
template <typename T>
class hidl_vec {
  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = T const*;

    hidl_vec() { static_assert(sizeof(hidl_vec) == 16, "wrong size"); }

    /** `size` items, each T(). */
    explicit hidl_vec(size_t size) { resize(size); }
    hidl_vec(std::initializer_list<T> items) { copy(items.begin(), items.size()); }
    hidl_vec(std::vector<T> const& items) { copy(items.begin(), items.size()); }
    template <typename InputIterator,
              typename = typename std::enable_if_t<std::is_convertible_v<
                      typename std::iterator_traits<InputIterator>::iterator_category,
                      std::input_iterator_tag>>>
    hidl_vec(InputIterator first, InputIterator last) {
        copy(first, static_cast<size_t>(std::distance(first, last)));
    }
    hidl_vec(hidl_vec const& other) { copy(other.begin(), other.size()); }
    hidl_vec(hidl_vec&& other) noexcept { take(other); }
    ~hidl_vec() { release(); }

    hidl_vec& operator=(hidl_vec const& other) {
        if (this != &other) {
            *this = hidl_vec(other);
        }
        return *this;
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }

    operator std::vector<T>() const { return {begin(), end()}; }

    /**
     * Points at `size` items.
     *
     * @param shouldOwn whether `data`, from new[], is to be deleted with this object
     */
    void setToExternal(T* data, size_t size, bool shouldOwn = false) {
        release();
        mBuffer = data;
        mSize = checked(size);
        mOwnsBuffer = shouldOwn;
    }

    /** Changes the count: items that stay keep their values, new ones are T(). */
    void resize(size_t size) {
        uint32_t const newSize = checked(size);
        uint32_t const kept = std::min(mSize, newSize);
        T* const items = new T[newSize]();
        if (mOwnsBuffer) {
            std::move(begin(), begin() + kept, items);
        } else {
            std::copy(begin(), begin() + kept, items);
        }
        release();
        mBuffer = items;
        mSize = newSize;
        mOwnsBuffer = true;
    }

    /** Hands the items over, for delete[]; this object is empty then. */
    T* releaseData() {
        if (!mOwnsBuffer && mSize > 0) {
            resize(mSize);
        }
        T* const items = mBuffer;
        setEmpty();
        return items;
    }

    size_t size() const { return mSize; }
    T* data() { return mBuffer; }
    T const* data() const { return mBuffer; }
    T& operator[](size_t index) { return data()[index]; }
    T const& operator[](size_t index) const { return data()[index]; }

    iterator begin() { return data(); }
    iterator end() { return data() + mSize; }
    const_iterator begin() const { return data(); }
    const_iterator end() const { return data() + mSize; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

    bool operator==(hidl_vec const& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }
    bool operator!=(hidl_vec const& other) const { return !(*this == other); }

  private:
    static uint32_t checked(size_t size) {
        if (size > UINT32_MAX) {
            details::fatal("hidl_vec: more items than a 32-bit count can tell");
        }
        return static_cast<uint32_t>(size);
    }
    template <typename InputIterator>
    void copy(InputIterator first, size_t size) {
        if (size == 0) {
            return;
        }
        mSize = checked(size);
        T* const items = new T[size];
        std::copy_n(first, size, items);
        mBuffer = items;
        mOwnsBuffer = true;
    }
    void take(hidl_vec& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.setEmpty();
    }
    void setEmpty() {
        mBuffer = nullptr;
        mSize = 0;
        mOwnsBuffer = false;
    }
    void release() {
        if (mOwnsBuffer) {
            delete[] data();
        }
    }

    details::hidl_pointer<T> mBuffer;
    uint32_t mSize = 0;
    bool mOwnsBuffer = false;
    uint8_t mPad[3] = {};
};

}  // namespace android::hardware
