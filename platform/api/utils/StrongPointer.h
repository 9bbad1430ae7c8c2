#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace android {

template <typename T>
class wp;

/**
 * Strong reference to a reference-counted object (see RefBase): the object lives while there is
 * one.
 *
 * T may be incomplete where a reference is only declared. One reference is not to be changed by two
 * threads at a time; the count it shares with other references may be.
 */
template <typename T>
class sp {
  public:
    sp() = default;
    sp(T* object) : mObject(object) { acquire(); }
    sp(sp const& other) : mObject(other.mObject) { acquire(); }
    sp(sp&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}

    template <typename U>
    sp(U* object) : mObject(object) {
        acquire();
    }
    template <typename U>
    sp(sp<U> const& other) : mObject(other.mObject) {
        acquire();
    }
    template <typename U>
    sp(sp<U>&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}

    ~sp() { release(mObject); }

    sp& operator=(T* object) {
        reset(object);
        return *this;
    }
    sp& operator=(sp const& other) {
        reset(other.mObject);
        return *this;
    }
    sp& operator=(sp&& other) noexcept {
        // The old object goes last: its destructor may come back to this reference.
        release(std::exchange(mObject, std::exchange(other.mObject, nullptr)));
        return *this;
    }

    template <typename U>
    sp& operator=(U* object) {
        reset(object);
        return *this;
    }
    template <typename U>
    sp& operator=(sp<U> const& other) {
        reset(other.mObject);
        return *this;
    }
    template <typename U>
    sp& operator=(sp<U>&& other) noexcept {
        release(std::exchange(mObject, std::exchange(other.mObject, nullptr)));
        return *this;
    }

    void clear() { release(std::exchange(mObject, nullptr)); }

    T& operator*() const { return *mObject; }
    T* operator->() const { return mObject; }
    T* get() const { return mObject; }
    explicit operator bool() const { return mObject != nullptr; }

  private:
    template <typename U>
    friend class sp;
    template <typename U>
    friend class wp;

    void acquire() const {
        if (mObject != nullptr) {
            mObject->incStrong(this);
        }
    }
    void release(T* object) const {
        if (object != nullptr) {
            object->decStrong(this);
        }
    }
    void reset(T* object) {
        if (object != nullptr) {
            object->incStrong(this);
        }
        release(std::exchange(mObject, object));
    }

    T* mObject = nullptr;
};

template <typename T, typename U>
bool operator==(sp<T> const& left, sp<U> const& right) {
    return left.get() == right.get();
}
template <typename T, typename U>
bool operator==(sp<T> const& left, U* right) {
    return left.get() == right;
}
template <typename T, typename U>
bool operator==(T* left, sp<U> const& right) {
    return left == right.get();
}
template <typename T>
bool operator==(sp<T> const& left, std::nullptr_t) {
    return left.get() == nullptr;
}
template <typename T>
bool operator==(std::nullptr_t, sp<T> const& right) {
    return right.get() == nullptr;
}

template <typename T, typename U>
bool operator!=(sp<T> const& left, sp<U> const& right) {
    return !(left == right);
}
template <typename T, typename U>
bool operator!=(sp<T> const& left, U* right) {
    return !(left == right);
}
template <typename T, typename U>
bool operator!=(T* left, sp<U> const& right) {
    return !(left == right);
}
template <typename T>
bool operator!=(sp<T> const& left, std::nullptr_t) {
    return left.get() != nullptr;
}
template <typename T>
bool operator!=(std::nullptr_t, sp<T> const& right) {
    return right.get() != nullptr;
}

/** By address, for ordered containers. */
template <typename T>
bool operator<(sp<T> const& left, sp<T> const& right) {
    return std::less<T*>()(left.get(), right.get());
}

}  // namespace android
