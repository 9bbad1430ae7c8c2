#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sync/sync.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "host/GrallocTest.h"

namespace {

using namespace android::gralloc4;

using quentest::Error;
using quentest::hidl_handle;
using quentest::IMapper;
using testing::Each;
using GrallocMapper = quentest::GrallocTest;

TEST_F(GrallocMapper, ImportsAnyCopyOfAHandleAndNothingElse) {
    hidl_handle const raw = allocate(64, 2, PixelFormat::RAW16);
    void* const first = import(raw);
    void* const second = import(hidl_handle(raw));
    EXPECT_NE(first, second);
    uint8_t* const written = lock(first);
    EXPECT_THAT(std::vector<uint8_t>(written, written + 256), Each(0));
    EXPECT_EQ(lock(second), written) << "mapped once";

    import(hidl_handle(), Error::BAD_BUFFER);
    // Integers that contradict each other or stand for nothing; their order is the handle's own.
    for (int const slot : {0, 1, 3, 4, 5, 10, 11, 12, 13}) {
        SCOPED_TRACE(slot);
        hidl_handle const changed = raw;
        const_cast<native_handle_t*>(changed.getNativeHandle())->data[1 + slot] += 1 << 10;
        import(changed, Error::BAD_BUFFER);
    }
    dup2(allocate(64, 1, PixelFormat::RAW16)->data[0], raw->data[0]);
    import(raw, Error::BAD_BUFFER);  // its memory is too small
}

TEST_F(GrallocMapper, RefusesBuffersInTheWrongState) {
    void* const buffer = import(allocate(100, 50, PixelFormat::YCRCB_420_SP));
    EXPECT_EQ(get(buffer, MetadataType_Name, decodeName), "test picture");
    get(buffer, {"vendor.properties", 15}, Error::UNSUPPORTED);
    get(buffer, {GRALLOC4_STANDARD_METADATA_TYPE, 99}, Error::UNSUPPORTED);

    IMapper::Rect const bad[] = {{-1, 0, 4, 4}, {0, 0, -4, 4}, {97, 0, 4, 4},
                                 {0, 47, 4, 4}, {0, 0, 4, -4}, {INT32_MAX, 0, INT32_MAX, 1}};
    for (IMapper::Rect const& area : bad) {
        lock(buffer, area, Error::BAD_VALUE);
    }
    for (uint64_t const usage : {0x0, 0x20000, 0x20033}) {
        lock(buffer, kWhole, Error::BAD_VALUE, hidl_handle(), usage);
    }
    EXPECT_EQ(mapper->rereadLockedBuffer(buffer), Error::BAD_BUFFER);
    call<hidl_handle>(Error::BAD_BUFFER, &MemfdMapper::flushLockedBuffer, buffer);
    unlock(buffer, Error::BAD_BUFFER);

    uint8_t* const address = lock(buffer, {0, 0, 100, 50});
    EXPECT_EQ(mapper->rereadLockedBuffer(buffer), Error::NONE);
    call<hidl_handle>(Error::NONE, &MemfdMapper::flushLockedBuffer, buffer);
    EXPECT_EQ(lock(buffer, {99, 49, 1, 1}), address);
    import(allocate(1, 1, PixelFormat::BLOB));
    quen::host::BufferCounts const counts = mapper->counts();
    EXPECT_TRUE(counts.imports == 2 && counts.mappings == 1 && counts.locks == 2);
    unlock(buffer);
    EXPECT_EQ(free(buffer), Error::BAD_BUFFER) << "still locked";
    unlock(buffer);
    unlock(buffer, Error::BAD_BUFFER);
    EXPECT_EQ(free(buffer), Error::NONE);

    EXPECT_EQ(free(buffer), Error::BAD_BUFFER);
    lock(buffer, kWhole, Error::BAD_BUFFER);
    get(buffer, MetadataType_PlaneLayouts, Error::BAD_BUFFER);
}

TEST_F(GrallocMapper, GivesBackMemoryAndDescriptors) {
    auto const inUse = [] {
        std::ifstream maps("/proc/self/maps");
        std::string const text((std::istreambuf_iterator<char>(maps)), {});
        auto const descriptors = std::filesystem::directory_iterator("/proc/self/fd");
        return std::make_pair(std::distance(begin(descriptors), end(descriptors)),
                              text.find("/memfd:") != std::string::npos);
    };
    auto const before = inUse();
    EXPECT_FALSE(before.second);
    hidl_handle raw = allocate(64, 2, PixelFormat::RAW16);
    void* const freed = import(raw);
    lock(freed);
    lock(import(raw));
    EXPECT_TRUE(inUse().second);
    unlock(freed);
    free(freed);
    mapper = nullptr;
    raw = hidl_handle();
    EXPECT_EQ(inUse(), before);
}

TEST_F(GrallocMapper, WaitsForAcquireFencesAndGivesReleaseFences) {
    void* const buffer = import(allocate(16, 16, PixelFormat::RAW16));
    hidl_handle fence;
    fence.setTo(native_handle_create(1, 0), true);
    int const event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const_cast<native_handle_t*>(fence.getNativeHandle())->data[0] = event;
    std::thread signaller([event] {
        usleep(20000);  // so that a lock that does not wait is through by then
        EXPECT_EQ(eventfd_write(event, 1), 0);
    });
    lock(buffer, kWhole, Error::NONE, fence);
    eventfd_t value = 0;
    EXPECT_EQ(eventfd_read(event, &value), 0) << "waited for, and still its owner's";
    signaller.join();
    EXPECT_EQ(unlock(buffer).getNativeHandle(), nullptr);
    void* const freed = import(allocate(16, 16, PixelFormat::RAW16));
    std::thread freer([&] {
        usleep(20000);
        EXPECT_EQ(free(freed), Error::NONE);
        EXPECT_EQ(eventfd_write(event, 1), 0);
    });
    lock(freed, kWhole, Error::BAD_BUFFER, fence);
    freer.join();

    native_handle_t* const twoFences = native_handle_create(2, 0);
    twoFences->data[0] = twoFences->data[1] = eventfd(1, EFD_CLOEXEC);
    lock(buffer, kWhole, Error::BAD_VALUE, hidl_handle(twoFences));
    close(twoFences->data[0]);
    native_handle_delete(twoFences);

    native_handle_t* const noFence = native_handle_create(0, 0);
    lock(buffer, kWhole, Error::NONE, hidl_handle(noFence));
    unlock(buffer);
    native_handle_delete(noFence);

    mapper->setReleaseFences(true);
    lock(buffer);
    hidl_handle const released = unlock(buffer);
    ASSERT_NE(released.getNativeHandle(), nullptr);
    EXPECT_EQ(eventfd_read(released->data[0], &value), 0) << "signalled already";
}

TEST(Fences, AreLookedAtAndMerged) {
    int const waiting = eventfd(0, EFD_CLOEXEC);
    int const signalled = eventfd(1, EFD_CLOEXEC);
    auto const statusOf = [](int fd) {
        std::unique_ptr<struct sync_file_info, decltype(&sync_file_info_free)> const info(
                sync_file_info(fd), sync_file_info_free);
        return info == nullptr ? -1 : info->status;
    };
    EXPECT_EQ(statusOf(waiting), 0);
    EXPECT_EQ(statusOf(signalled), 1);
    EXPECT_EQ(sync_merge("none", waiting, waiting), -1);
    EXPECT_EQ(sync_merge("none", signalled, -1), -1);
    errno = 0;
    EXPECT_EQ(sync_wait(waiting, 1), -1);
    EXPECT_EQ(errno, ETIME);
    signal(SIGUSR1, [](int) {});
    std::thread interrupter([waiter = pthread_self(), waiting] {
        usleep(10000);  // so that the wait has begun
        pthread_kill(waiter, SIGUSR1);
        usleep(10000);
        eventfd_write(waiting, 1);
    });
    EXPECT_EQ(sync_wait(waiting, -1), 0) << "a signal is no end of it";
    interrupter.join();
    eventfd_t value = 0;
    eventfd_read(waiting, &value);
    int const reversed = sync_merge("both", waiting, signalled);
    EXPECT_EQ(statusOf(reversed), 0);
    close(reversed);
    EXPECT_EQ(statusOf(reversed), -1) << "closed";
    int const alike = sync_merge("alike", signalled, signalled);
    EXPECT_EQ(statusOf(alike), 1);
    close(alike);
    int const merged = sync_merge("both", signalled, waiting);
    EXPECT_EQ(statusOf(merged), 0);
    EXPECT_EQ(eventfd_write(waiting, 1), 0);
    EXPECT_EQ(statusOf(merged), 1);
    for (int const fd : {waiting, signalled, merged}) {
        close(fd);
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(statusOf(ends[1]), -1) << "failed: nobody reads it any more";
    close(ends[1]);
}

}  // namespace
