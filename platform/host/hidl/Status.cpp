#include <hidl/Status.h>

#include <cstring>

#include <android/log.h>

namespace android::hardware {
namespace {

struct ExceptionName {
    int32_t code;
    char const* name;
};

constexpr ExceptionName kExceptionNames[] = {
        {Status::EX_NONE, "EX_NONE"},
        {Status::EX_SECURITY, "EX_SECURITY"},
        {Status::EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"},
        {Status::EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"},
        {Status::EX_NULL_POINTER, "EX_NULL_POINTER"},
        {Status::EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"},
        {Status::EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"},
        {Status::EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"},
        {Status::EX_HAS_REPLY_HEADER, "EX_HAS_REPLY_HEADER"},
        {Status::EX_TRANSACTION_FAILED, "EX_TRANSACTION_FAILED"},
};

struct ErrorName {
    status_t error;
    char const* name;
};

constexpr ErrorName kErrorNames[] = {
        {OK, "OK"},
        {UNKNOWN_ERROR, "UNKNOWN_ERROR"},
        {NO_MEMORY, "NO_MEMORY"},
        {INVALID_OPERATION, "INVALID_OPERATION"},
        {BAD_VALUE, "BAD_VALUE"},
        {BAD_TYPE, "BAD_TYPE"},
        {NAME_NOT_FOUND, "NAME_NOT_FOUND"},
        {PERMISSION_DENIED, "PERMISSION_DENIED"},
        {NO_INIT, "NO_INIT"},
        {ALREADY_EXISTS, "ALREADY_EXISTS"},
        {DEAD_OBJECT, "DEAD_OBJECT"},
        {FAILED_TRANSACTION, "FAILED_TRANSACTION"},
        {BAD_INDEX, "BAD_INDEX"},
        {NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
        {WOULD_BLOCK, "WOULD_BLOCK"},
        {TIMED_OUT, "TIMED_OUT"},
        {UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
        {FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
        {UNEXPECTED_NULL, "UNEXPECTED_NULL"},
};

std::string exceptionText(int32_t code) {
    for (ExceptionName const& known : kExceptionNames) {
        if (known.code == code) {
            return known.name;
        }
    }
    return std::to_string(code);
}

std::string errorText(status_t error) {
    for (ErrorName const& known : kErrorNames) {
        if (known.error == error) {
            return known.name;
        }
    }
    return std::to_string(error) + " " + strerror(-error);
}

}  // namespace

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return fromExceptionCode(exceptionCode, "");
}

Status Status::fromExceptionCode(int32_t exceptionCode, char const* message) {
    return Status(exceptionCode, OK, message == nullptr ? "" : message);
}

Status Status::fromStatusT(status_t status) {
    return status == OK ? Status() : Status(EX_TRANSACTION_FAILED, status, "");
}

std::string Status::description() const {
    if (isOk()) {
        return "No error";
    }
    std::string text = "Status(" + exceptionText(mException) + "): '";
    if (mException == EX_TRANSACTION_FAILED) {
        text += errorText(mErrorCode) + ": ";
    }
    return text + mMessage + "'";
}

std::ostream& operator<<(std::ostream& stream, Status const& status) {
    return stream << status.description();
}

void details::return_status::onNoValue() const {
    __android_log_assert(nullptr, "HidlStatus", "the value of a failed HIDL call was read: %s",
                         description().c_str());
}

void details::return_status::onDropped() const {
    __android_log_assert(nullptr, "HidlStatus",
                         "a failed HIDL call was dropped that nobody has looked at: %s",
                         description().c_str());
}

}  // namespace android::hardware
