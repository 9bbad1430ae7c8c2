#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>

#include <utils/StrongPointer.h>

namespace android {

/**
 * Base of reference-counted objects, usually a virtual one.
 *
 * The object deletes itself with its last strong reference (sp); weak references (wp) outlive it
 * and tell that it is gone. A new object has no reference: the first strong one calls onFirstRef,
 * unless a promotion took it. Whoever deletes an object that was never held must drop all weak
 * references first: the process aborts otherwise, where some phones only log. Any thread may take
 * and drop references.
 */
class RefBase {
  public:
    /** Counts of an object; exists as long as a weak reference does. */
    class weakref_type {
      public:
        void incWeak(void const* id);
        void decWeak(void const* id);

        /** Takes a strong reference unless the last one has gone; onFirstRef is not called. */
        bool attemptIncStrong(void const* id);

      protected:
        weakref_type() = default;
        ~weakref_type() = default;
    };

    /** `id` names the reference for debugging; nothing reads it. */
    void incStrong(void const* id) const;
    void decStrong(void const* id) const;

    /** Takes a weak reference; the caller drops it with decWeak. */
    weakref_type* createWeak(void const* id) const;
    weakref_type* getWeakRefs() const;

    /** Current number of strong references, 1 << 28 for an object never held; for debugging. */
    int32_t getStrongCount() const;

  protected:
    RefBase();
    virtual ~RefBase();

    /** Called after the first strong reference was taken, on the thread that took it. */
    virtual void onFirstRef();

    /**
     * Called after the last strong reference was dropped and before the object is destroyed, on the
     * thread that dropped it.
     */
    virtual void onLastStrongRef(void const* id);

  private:
    class Counts;

    RefBase(RefBase const&) = delete;
    RefBase& operator=(RefBase const&) = delete;

    Counts* const mCounts;
};

/**
 * Weak reference to a RefBase: does not keep the object alive, but tells whether it is.
 *
 * Converting to a virtual base's type needs the object alive. A move copies. Weak references are
 * equal when they refer to the same object, gone or not: a new object at the address of an old one
 * differs from it. They order by address, then by object.
 */
template <typename T>
class wp {
  public:
    wp() = default;
    wp(T* object) : mObject(object), mCounts(countsOf(object)) {}
    wp(wp const& other) : mObject(other.mObject), mCounts(other.mCounts) { acquire(); }
    explicit wp(sp<T> const& other) : wp(other.get()) {}

    template <typename U>
    wp(U* object) : mObject(object), mCounts(countsOf(object)) {}
    template <typename U>
    wp(sp<U> const& other) : wp(other.get()) {}
    template <typename U>
    wp(wp<U> const& other) : mObject(other.mObject), mCounts(other.mCounts) {
        acquire();
    }

    ~wp() { release(); }

    wp& operator=(wp const& other) {
        wp copy(other);
        std::swap(mObject, copy.mObject);
        std::swap(mCounts, copy.mCounts);
        return *this;
    }
    wp& operator=(T* object) { return *this = wp(object); }
    wp& operator=(sp<T> const& other) { return *this = wp(other); }

    template <typename U>
    wp& operator=(U* object) {
        return *this = wp(object);
    }
    template <typename U>
    wp& operator=(sp<U> const& other) {
        return *this = wp(other);
    }
    template <typename U>
    wp& operator=(wp<U> const& other) {
        return *this = wp(other);
    }

    void clear() { *this = wp(); }

    /** Returns a strong reference, or null once the object is gone. */
    sp<T> promote() const {
        sp<T> strong;
        if (mCounts != nullptr && mCounts->attemptIncStrong(&strong)) {
            strong.mObject = mObject;
        }
        return strong;
    }

    /** For comparing only: the object may be gone. */
    T* unsafe_get() const { return mObject; }

    template <typename U>
    bool operator==(wp<U> const& other) const {
        return mCounts == other.mCounts;
    }
    template <typename U>
    bool operator!=(wp<U> const& other) const {
        return !(*this == other);
    }
    template <typename U>
    bool operator<(wp<U> const& other) const {
        return mObject == other.mObject ? isLess(mCounts, other.mCounts)
                                        : isLess(mObject, other.mObject);
    }
    template <typename U>
    bool operator>(wp<U> const& other) const {
        return other < *this;
    }
    template <typename U>
    bool operator<=(wp<U> const& other) const {
        return !(other < *this);
    }
    template <typename U>
    bool operator>=(wp<U> const& other) const {
        return !(*this < other);
    }

    template <typename U>
    bool operator==(sp<U> const& other) const {
        return other.get() == nullptr ? mObject == nullptr : mCounts == other->getWeakRefs();
    }
    template <typename U>
    bool operator!=(sp<U> const& other) const {
        return !(*this == other);
    }

    // With a plain pointer the address alone counts. The first two are for nullptr.
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
    friend class wp;

    template <typename A, typename B>
    static bool isLess(A* left, B* right) {
        return std::less<std::common_type_t<A*, B*>>()(left, right);
    }
    template <typename U>
    RefBase::weakref_type* countsOf(U* object) const {
        return object == nullptr ? nullptr : object->createWeak(this);
    }
    void acquire() const {
        if (mCounts != nullptr) {
            mCounts->incWeak(this);
        }
    }
    void release() const {
        if (mCounts != nullptr) {
            mCounts->decWeak(this);
        }
    }

    T* mObject = nullptr;
    RefBase::weakref_type* mCounts = nullptr;
};

}  // namespace android
