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

namespace details {

/** Iterator of a hidl_vec, of `T` or `T const`; not convertible to a plain pointer. */
template <typename T>
class vec_iterator {
  public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::remove_const_t<T>;
    using difference_type = ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    vec_iterator(T* place) : mPlace(place) {}

    T& operator*() const { return *mPlace; }
    T* operator->() const { return mPlace; }
    T& operator[](size_t index) const { return mPlace[index]; }

    vec_iterator& operator++() { return *this += 1; }
    vec_iterator& operator--() { return *this -= 1; }
    vec_iterator operator++(int) { return mPlace++; }
    vec_iterator operator--(int) { return mPlace--; }
    vec_iterator& operator+=(ptrdiff_t count) {
        mPlace += count;
        return *this;
    }
    vec_iterator& operator-=(ptrdiff_t count) { return *this += -count; }
    vec_iterator operator+(ptrdiff_t count) const { return mPlace + count; }
    vec_iterator operator-(ptrdiff_t count) const { return mPlace - count; }
    ptrdiff_t operator-(vec_iterator const& other) const { return mPlace - other.mPlace; }
    friend vec_iterator operator+(ptrdiff_t count, vec_iterator const& place) {
        return place + count;
    }

    bool operator==(vec_iterator const& other) const { return mPlace == other.mPlace; }
    bool operator!=(vec_iterator const& other) const { return mPlace != other.mPlace; }
    bool operator<(vec_iterator const& other) const { return mPlace < other.mPlace; }
    bool operator>(vec_iterator const& other) const { return mPlace > other.mPlace; }
    bool operator<=(vec_iterator const& other) const { return mPlace <= other.mPlace; }
    bool operator>=(vec_iterator const& other) const { return mPlace >= other.mPlace; }

  private:
    T* mPlace;
};

}  // namespace details

/**
 * An array in a record: pointer, 32-bit count, owns flag. A copy is deep. A vector that was moved
 * from, or whose data was released, still points at the items, which it no longer owns. Not
 * thread-safe.
 *
 * Unlike the phone's: a move to itself changes nothing, and a change of the count copies items that
 * the vector does not own, where the phone moves them.
 */
template <typename T>
class hidl_vec {
  public:
    using value_type = T;
    using iterator = details::vec_iterator<T>;
    using const_iterator = details::vec_iterator<T const>;

    hidl_vec() { static_assert(sizeof(hidl_vec) == 16, "wrong size"); }

    /** `size` items, each T(). */
    hidl_vec(size_t size) { resize(size); }
    hidl_vec(std::initializer_list<T> const items) { copy(items.begin(), items.end()); }
    hidl_vec(std::vector<T> const& items) { copy(items.begin(), items.end()); }
    template <typename InputIterator,
              typename = typename std::enable_if_t<std::is_convertible_v<
                      typename std::iterator_traits<InputIterator>::iterator_category,
                      std::input_iterator_tag>>>
    hidl_vec(InputIterator first, InputIterator last) {
        copy(first, last);
    }
    hidl_vec(hidl_vec const& other) { copy(other.begin(), other.end()); }
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
    hidl_vec& operator=(std::vector<T> const& items) { return *this = hidl_vec(items); }
    hidl_vec& operator=(std::initializer_list<T> const items) { return *this = hidl_vec(items); }

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
            std::move(data(), data() + kept, items);
        } else {
            std::copy(data(), data() + kept, items);
        }
        release();
        mBuffer = items;
        mSize = newSize;
        mOwnsBuffer = true;
    }

    /** Gives up the ownership of the items, for delete[]; still points at them. */
    T* releaseData() {
        if (!mOwnsBuffer && mSize > 0) {
            resize(mSize);
        }
        mOwnsBuffer = false;
        return mBuffer;
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

    iterator find(T const& item) { return std::find(begin(), end(), item); }
    const_iterator find(T const& item) const { return std::find(begin(), end(), item); }
    bool contains(T const& item) const { return find(item) != end(); }

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
    void copy(InputIterator first, InputIterator last) {
        uint32_t const size = checked(static_cast<size_t>(std::distance(first, last)));
        if (size == 0) {
            return;
        }
        T* const items = new T[size]();
        std::transform(first, last, items, [](auto const& item) { return static_cast<T>(item); });
        mBuffer = items;
        mSize = size;
        mOwnsBuffer = true;
    }
    void take(hidl_vec& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mOwnsBuffer = false;
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
