#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include "support/Golden.h"

using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Status;
using testing::ElementsAre;

namespace {

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

Status lost() {
    return Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED, "stand-in lost");
}

}  // namespace

TEST(HidlHandle, PointsAtANativeHandleAndClonesItWhenCopied) {
    native_handle_t* const handle = native_handle_create(1, 2);
    int const original = handle->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    handle->data[2] = 6;
    int cloned = -1;
    {
        hidl_handle pointing(handle);
        hidl_handle const copy(pointing);
        EXPECT_EQ(handle, pointing.getNativeHandle());
        EXPECT_NE(handle, copy.getNativeHandle());
        cloned = copy->data[0];
        EXPECT_NE(original, cloned);
        EXPECT_EQ(6, copy->data[2]);
        EXPECT_EQ(fcntl(cloned, F_GETFD) & FD_CLOEXEC, 0);

        hidl_handle assigned;
        assigned = copy;
        hidl_handle const moved(std::move(assigned));
        EXPECT_EQ(assigned.getNativeHandle(), nullptr);
        EXPECT_TRUE(isOpen(moved->data[0]));

        hidl_vec<hidl_handle> handles{copy};
        int const kept = handles[0]->data[0];
        EXPECT_NE(kept, hidl_vec<hidl_handle>(handles)[0]->data[0]);
        handles.resize(2);
        EXPECT_EQ(kept, handles[0]->data[0]);
        EXPECT_EQ(handles[1].getNativeHandle(), nullptr);
    }
    EXPECT_FALSE(isOpen(cloned));
    EXPECT_TRUE(isOpen(original));
    {
        hidl_handle owner;
        owner.setTo(handle, true);
        hidl_handle& alias = owner;
        owner = alias;
        EXPECT_EQ(handle, owner.getNativeHandle());
    }
    EXPECT_FALSE(isOpen(original));
}

TEST(NativeHandle, RefusesSizesAlignmentAndVersionsThatAreNotIts) {
    EXPECT_EQ(native_handle_create(NATIVE_HANDLE_MAX_FDS + 1, 0), nullptr);
    EXPECT_EQ(native_handle_create(0, NATIVE_HANDLE_MAX_INTS + 1), nullptr);
    EXPECT_EQ(native_handle_create(-1, 0), nullptr);
    native_handle_t* const largest =
            native_handle_create(NATIVE_HANDLE_MAX_FDS, NATIVE_HANDLE_MAX_INTS);
    EXPECT_NE(largest, nullptr);
    native_handle_delete(largest);
    native_handle_t* const half = native_handle_create(2, 0);
    half->data[0] = STDIN_FILENO;
    half->data[1] = 1 << 20;
    int const lowest = dup(STDIN_FILENO);
    close(lowest);
    EXPECT_EQ(native_handle_clone(half), nullptr);
    EXPECT_FALSE(isOpen(lowest)) << "what was cloned by then is closed";
    native_handle_delete(half);
    alignas(native_handle_t) char storage[sizeof(native_handle_t) + 8];
    EXPECT_EQ(native_handle_init(storage + 1, 1, 0), nullptr);
    native_handle_t* const handle = native_handle_init(storage, 1, 0);
    handle->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    handle->version = 0;
    EXPECT_EQ(native_handle_close(handle), -EINVAL);
    EXPECT_EQ(native_handle_delete(handle), -EINVAL);
    EXPECT_TRUE(isOpen(handle->data[0]));
    handle->version = sizeof(native_handle_t);
    EXPECT_EQ(native_handle_close(handle), 0);
    EXPECT_FALSE(isOpen(handle->data[0]));
    errno = ENOENT;
    EXPECT_EQ(native_handle_close(handle), 0);
    EXPECT_EQ(errno, ENOENT) << "that of the close";
}

TEST(HidlHandleDeathTest, AbortsWhenACloneFails) {
    native_handle_t* const handle = native_handle_create(1, 0);
    handle->data[0] = 1 << 20;
    EXPECT_EQ(native_handle_clone(handle), nullptr);
    hidl_handle const pointing(handle);
    EXPECT_DEATH(hidl_handle copy(pointing), "cannot clone a handle of 1 descriptors");
    native_handle_delete(handle);
}

TEST(HidlVec, CopiesDeeplyAndPointsOnDemand) {
    std::vector<int> items = {1, 2, 3};
    hidl_vec<int> pointing;
    pointing.setToExternal(items.data(), items.size());
    hidl_vec<int> copy = pointing;
    items[0] = 9;
    EXPECT_THAT(pointing, ElementsAre(9, 2, 3));
    EXPECT_THAT(copy, ElementsAre(1, 2, 3));
    hidl_vec<int> const moved = std::move(copy);
    EXPECT_EQ(copy.data(), moved.data()) << "still pointed at, and no longer owned";
    EXPECT_THAT(static_cast<std::vector<int>>(moved), ElementsAre(1, 2, 3));

    // Elements stay through a change of the count, which makes external items the vector's own.
    pointing.resize(5);
    items[1] = 8;
    EXPECT_THAT(pointing, ElementsAre(9, 2, 3, 0, 0));
    pointing.resize(1);
    EXPECT_THAT(pointing, ElementsAre(9));

    struct Record {
        hidl_handle handle;
        int64_t number;
    };
    for (int turn = 0; turn < 8; ++turn) {
        hidl_vec<Record> records(3);
        EXPECT_EQ(0, records[0].number | records[1].number | records[2].number);
        records[0].number = records[1].number = records[2].number = -1;
    }
}

TEST(TransportReturn, CarriesAValueOrAStatus) {
    EXPECT_EQ(7, static_cast<int>(Return<int>(7)));
    EXPECT_EQ(1, Return<int>(lost()).withDefault(1));
    (void)Return<int>(3);  // a success may be dropped
    Return<int> outcome = lost();
    Return<int> heir = std::move(outcome);  // and the duty to look at it
    EXPECT_FALSE(heir.isOkUnchecked());
    EXPECT_FALSE(heir.isOk());
    EXPECT_FALSE(heir.isDeadObject());
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'OK: stand-in lost'", heir.description());
    EXPECT_TRUE(Return<void>(Status::fromStatusT(android::DEAD_OBJECT)).isDeadObject());
    EXPECT_TRUE(Status::fromStatusT(android::OK).isOk());
    std::pair<Status, char const*> const texts[] = {
            {Status::fromStatusT(android::TIMED_OUT),
             "Status(EX_TRANSACTION_FAILED): 'TIMED_OUT: '"},
            {Status::fromStatusT(-5), "Status(EX_TRANSACTION_FAILED): '-5 Input/output error: '"},
            {Status::fromExceptionCode(-77, "odd"), "Status(-77): 'odd'"}};
    for (auto const& [status, text] : texts) {
        EXPECT_EQ(status.description(), text);
    }
}

// golden/errors.txt was compared with utils/Errors.h and hidl/Status.h, code by code.
TEST(TransportReturn, NamesEveryErrorAndException) {
    std::vector<std::string> lines;
    for (int const error : {-1, -2, -11, -12, -17, -19, -22, -32, -38, -61, -74, -75, -110}) {
        lines.push_back(std::to_string(error) + ' ' + Status::fromStatusT(error).description());
    }
    for (int code = 0; code < 10; ++code) {
        lines.push_back(std::to_string(code) + ' ' +
                        Status::fromStatusT(android::UNKNOWN_ERROR + code).description());
    }
    for (int const code : {-128, -8, -7, -6, -5, -4, -3, -2, -1, 0, 1}) {
        std::ostringstream text;
        text << code << ' ' << Status::fromExceptionCode(code, nullptr);
        lines.push_back(text.str());
    }
    quentest::expectGolden("errors", lines);
}

TEST(TransportReturnDeathTest, AbortsOnAFailureNobodyLookedAt) {
    EXPECT_DEATH({ Return<void> const dropped = lost(); }, "dropped.*stand-in lost");
    EXPECT_DEATH({ (void)Return<void>(lost()).isDeadObject(); }, "dropped.*stand-in lost")
            << "it died of something else";
    EXPECT_DEATH({ (void)Return<void>(lost()).isOkUnchecked(); }, "dropped.*stand-in lost");
    EXPECT_DEATH(
            {
                Return<void> overwritten = lost();
                overwritten = android::hardware::Void();
            },
            "dropped.*stand-in lost");
    Return<int> const failed = lost();
    EXPECT_FALSE(failed.isOk());
    EXPECT_DEATH((void)static_cast<int>(failed), "value of a failed HIDL call.*stand-in lost");
}
