#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

#include <hidl/HidlSupport.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android::hardware {

/** Outcome of the transport of a call. Success takes no memory. */
class Status final {
  public:
    enum Exception : int32_t {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,
    };

    static Status ok() { return Status(); }
    static Status fromExceptionCode(int32_t exceptionCode);
    static Status fromExceptionCode(int32_t exceptionCode, char const* message);

    /** A failed transaction with that error; success for OK. */
    static Status fromStatusT(status_t status);

    Status() = default;

    bool isOk() const { return mException == EX_NONE; }
    int32_t exceptionCode() const { return mException; }

    /** The transaction's error; OK unless the exception is EX_TRANSACTION_FAILED. */
    status_t transactionError() const {
        return mException == EX_TRANSACTION_FAILED ? mErrorCode : static_cast<status_t>(OK);
    }
    char const* exceptionMessage() const { return mMessage.c_str(); }

    /** "No error", or "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: <message>'". */
    std::string description() const;

  private:
    Status(int32_t exception, status_t errorCode, char const* message)
        : mException(exception), mErrorCode(errorCode), mMessage(message) {}

    int32_t mException = EX_NONE;
    status_t mErrorCode = OK;
    std::string mMessage;
};

std::ostream& operator<<(std::ostream& stream, Status const& status);

namespace details {

/**
 * The transport's outcome in a Return. Aborts the process when a failure is dropped or overwritten
 * unchecked: isOk checks it, isDeadObject only a failure of that kind. A move takes the obligation
 * along.
 */
class return_status {
  public:
    return_status() = default;
    return_status(Status const& status) : mStatus(status) {}
    return_status(return_status&& other) noexcept { swap(other); }
    return_status& operator=(return_status&& other) noexcept {
        checkDropped();
        swap(other);
        return *this;
    }
    ~return_status() { checkDropped(); }

    bool isOk() const {
        mLookedAt = true;
        return mStatus.isOk();
    }
    bool isDeadObject() const {
        bool const isDead = mStatus.transactionError() == DEAD_OBJECT;
        mLookedAt = mLookedAt || isDead;
        return isDead;
    }

    /** As isOk, without checking a failure. */
    bool isOkUnchecked() const { return mStatus.isOk(); }

    /** Text of the outcome; does not check a failure. */
    std::string description() const { return mStatus.description(); }

  protected:
    /** Aborts when there is no value to read. */
    void assertOk() const {
        if (!isOk()) {
            onNoValue();
        }
    }

  private:
    void swap(return_status& other) noexcept {
        std::swap(mStatus, other.mStatus);
        std::swap(mLookedAt, other.mLookedAt);
    }
    void checkDropped() const {
        if (!mLookedAt && !mStatus.isOk()) {
            onDropped();
        }
    }
    [[noreturn]] void onNoValue() const;
    [[noreturn]] void onDropped() const;

    Status mStatus;
    mutable bool mLookedAt = false;
};

}  // namespace details

/**
 * Result of a HIDL call: a value, or the transport's failure. Aborts the process when the value of
 * a failed call is read, or when an unchecked failure is dropped.
 */
template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : mValue(value) {}
    Return(Status status) : details::return_status(status) {}

    operator T() const {
        assertOk();
        return mValue;
    }

    /** The value, or `fallback` when the call failed. */
    T withDefault(T fallback) { return isOk() ? mValue : fallback; }

  private:
    T mValue{};
};

template <typename T>
class Return<sp<T>> : public details::return_status {
  public:
    Return(sp<T> value) : mValue(value) {}
    Return(T* value) : mValue(value) {}
    template <typename U>
    Return(sp<U> value) : mValue(value) {}
    template <typename U>
    Return(U* value) : mValue(value) {}
    Return(Status status) : details::return_status(status) {}

    operator sp<T>() const {
        assertOk();
        return mValue;
    }
    sp<T> withDefault(sp<T> fallback) { return isOk() ? mValue : fallback; }

  private:
    sp<T> mValue;
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() = default;
    Return(Status const& status) : details::return_status(status) {}
};

/** Success of a call without a value. */
inline Return<void> Void() {
    return Return<void>();
}

}  // namespace android::hardware
