#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace android {

template <typename T>
class wp;

/** Aborts: another thread, or the destructor of the released object, changed a reference. */
[[noreturn]] void sp_report_race();

/**
 * Strong reference to a reference-counted object (see RefBase): keeps the object alive.
 *
 * T may be incomplete where a reference is only declared. Two threads must not change one reference
 * at a time; they may change the count it shares with other references. An assignment releases the
 * old object while the reference still points at it: its destructor sees it there, and must not
 * assign. A reference moved to itself releases its object. Comparisons are by address.
 */
template <typename T>
class sp {
  public:
    sp() = default;
    sp(T* object) : mObject(object) { acquire(mObject); }
    sp(sp const& other) : mObject(other.mObject) { acquire(mObject); }
    sp(sp&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}

    template <typename U>
    sp(U* object) : mObject(object) {
        acquire(mObject);
    }
    template <typename U>
    sp(sp<U> const& other) : mObject(other.mObject) {
        acquire(mObject);
    }
    template <typename U>
    sp(sp<U>&& other) : mObject(std::exchange(other.mObject, nullptr)) {}

    ~sp() {
        if (mObject != nullptr) {
            mObject->decStrong(this);
        }
    }

    sp& operator=(T* object) { return assign(object); }
    sp& operator=(sp const& other) { return assign(other.mObject); }
    sp& operator=(sp&& other) noexcept { return take(other); }

    template <typename U>
    sp& operator=(U* object) {
        return assign(object);
    }
    template <typename U>
    sp& operator=(sp<U> const& other) {
        return assign(other.mObject);
    }
    template <typename U>
    sp& operator=(sp<U>&& other) {
        return take(other);
    }

    void clear() {
        letGo();
        mObject = nullptr;
    }

    T& operator*() const { return *mObject; }
    T* operator->() const { return mObject; }
    T* get() const { return mObject; }
    explicit operator bool() const { return mObject != nullptr; }

    template <typename U>
    bool operator==(sp<U> const& other) const {
        return mObject == other.mObject;
    }
    template <typename U>
    bool operator!=(sp<U> const& other) const {
        return mObject != other.mObject;
    }
    template <typename U>
    bool operator<(sp<U> const& other) const {
        return isLess(mObject, other.mObject);
    }
    template <typename U>
    bool operator>(sp<U> const& other) const {
        return isLess(other.mObject, mObject);
    }
    template <typename U>
    bool operator<=(sp<U> const& other) const {
        return !isLess(other.mObject, mObject);
    }
    template <typename U>
    bool operator>=(sp<U> const& other) const {
        return !isLess(mObject, other.mObject);
    }

    template <typename U>
    bool operator==(wp<U> const& other) const {
        return other == *this;
    }
    template <typename U>
    bool operator!=(wp<U> const& other) const {
        return other != *this;
    }

    // The first two are for nullptr.
    bool operator==(T const* other) const { return mObject == other; }
    bool operator!=(T const* other) const { return mObject != other; }
    template <typename U>
    bool operator==(U const* other) const {
        return mObject == other;
    }
    template <typename U>
    bool operator!=(U const* other) const {
        return mObject != other;
    }
    template <typename U>
    bool operator<(U const* other) const {
        return isLess(mObject, other);
    }
    template <typename U>
    bool operator>(U const* other) const {
        return isLess(other, mObject);
    }
    template <typename U>
    bool operator<=(U const* other) const {
        return !isLess(other, mObject);
    }
    template <typename U>
    bool operator>=(U const* other) const {
        return !isLess(mObject, other);
    }

  private:
    template <typename U>
    friend class sp;
    template <typename U>
    friend class wp;

    template <typename A, typename B>
    static bool isLess(A* left, B* right) {
        return std::less<std::common_type_t<A*, B*>>()(left, right);
    }
    void acquire(T* object) const {
        if (object != nullptr) {
            object->incStrong(this);
        }
    }
    /** Drops the reference to the object; the caller changes the pointer next. */
    void letGo() const {
        T* const old = mObject;
        if (old != nullptr) {
            old->decStrong(this);
        }
        if (mObject != old) {
            sp_report_race();
        }
    }
    sp& assign(T* object) {
        acquire(object);
        letGo();
        mObject = object;
        return *this;
    }
    template <typename U>
    sp& take(sp<U>& other) {
        letGo();
        mObject = other.mObject;
        other.mObject = nullptr;
        return *this;
    }

    T* mObject = nullptr;
};

}  // namespace android
