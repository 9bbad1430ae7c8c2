#pragma once

#include <cstdint>

#include <utils/StrongPointer.h>

namespace android {

/**
 * Base of reference-counted objects, usually a virtual one.
 *
 * The object deletes itself with its last strong reference (sp); weak references (wp) outlive it
 * and tell that it is gone. A new object has no reference yet: the first strong one calls
 * onFirstRef. Any thread may take and drop references.
 */
class RefBase {
  public:
    /** The counts of an object; stays while a weak reference needs it. */
    class weakref_type {
      public:
        void incWeak(void const* id);
        void decWeak(void const* id);

        /** Takes a strong reference unless the last one has gone. */
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

    /** Strong references at this moment; for debugging. */
    int32_t getStrongCount() const;

    RefBase(RefBase const&) = delete;
    RefBase& operator=(RefBase const&) = delete;

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

    Counts* const mCounts;
};

/**
 * Weak reference to a RefBase: does not keep the object, but tells whether it is still there.
 *
 * A conversion to a virtual base's type needs the object alive.
 */
template <typename T>
class wp {
  public:
    wp() = default;
    wp(T* object) : mObject(object), mCounts(countsOf(object)) {}
    wp(sp<T> const& other) : wp(other.get()) {}
    wp(wp const& other) : mObject(other.mObject), mCounts(other.mCounts) { acquire(); }
    wp(wp&& other) noexcept
        : mObject(std::exchange(other.mObject, nullptr)),
          mCounts(std::exchange(other.mCounts, nullptr)) {}

    template <typename U>
    wp(U* object) : mObject(object), mCounts(countsOf(object)) {}
    template <typename U>
    wp(sp<U> const& other) : wp(other.get()) {}
    template <typename U>
    wp(wp<U> const& other) : mObject(other.mObject), mCounts(other.mCounts) {
        acquire();
    }

    ~wp() { release(); }

    wp& operator=(wp other) noexcept {
        std::swap(mObject, other.mObject);
        std::swap(mCounts, other.mCounts);
        return *this;
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

    /** Of the same object, gone or not; a new object at an old one's address is another. */
    template <typename U>
    bool operator==(wp<U> const& other) const {
        return mCounts == other.mCounts;
    }
    template <typename U>
    bool operator!=(wp<U> const& other) const {
        return mCounts != other.mCounts;
    }

  private:
    template <typename U>
    friend class wp;

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
