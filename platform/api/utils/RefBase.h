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
 * and tell that it is gone. A new object has no reference yet: the first strong one calls
 * onFirstRef, unless it comes of a promotion. Who deletes an object that never was held has to see
 * to it that no weak reference is left: the process aborts otherwise, where some phones only log.
 * Any thread may take and drop references.
 */
class RefBase {
  public:
    /** The counts of an object; stays while a weak reference needs it. */
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

    /** Strong references at this moment, 1 << 28 of a fresh object; for debugging. */
    int32_t getStrongCount() const;

  protected:
    RefBase();
    virtual ~RefBase();

    /** The first strong reference has been taken; on the thread that took it. */
    virtual void onFirstRef();

    /** The last strong reference has gone and the object goes next; on the thread that dropped it.
     */
    virtual void onLastStrongRef(void const* id);

  private:
    class Counts;

    RefBase(RefBase const&) = delete;
    RefBase& operator=(RefBase const&) = delete;

    Counts* const mCounts;
};

/**
 * Weak reference to a RefBase: does not keep the object, but tells whether it is still there.
 *
 * A conversion to a virtual base's type needs the object alive. A move copies. Weak references are
 * equal when they are of the same object, gone or not: a new object at an old one's address is
 * another. They order by address, and by object where addresses agree.
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

    /** A strong reference, or null once the object is gone. */
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
