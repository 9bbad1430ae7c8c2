#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <memory>
#include <set>

#include <gtest/gtest.h>
#include <quen/Quen3AInfoManager.h>

#include "host/threea/ThreeAStore.h"

using quen::host::setThreeAStore;
using quen::host::SharedMemoryThreeAStore;

namespace {

constexpr unsigned int kBytes = SharedMemoryThreeAStore::kBufferBytes;

class ThreeA : public testing::Test {
  protected:
    // A pool of each test's own.
    void SetUp() override { setThreeAStore(nullptr); }
    void TearDown() override { setThreeAStore(nullptr); }

    static QIF3ABufferInfo get() {
        QIF3ABufferInfo info;
        EXPECT_EQ(Quen3AInfoManager::Get3AInfoBuf(&info, kBytes), 0);
        return info;
    }
};

TEST_F(ThreeA, BuffersAreSharedAndFoundByIndex) {
    QIF3ABufferInfo const info = get();
    EXPECT_EQ(info.bufferIndex, 1);
    EXPECT_EQ(info.size, kBytes);
    int found = -1;
    ASSERT_EQ(Quen3AInfoManager::GetTuningData(&found, 1), 0);
    auto* const written = static_cast<char*>(
            mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED, info.fd, 0));
    auto* const read = static_cast<char*>(mmap(nullptr, kBytes, PROT_READ, MAP_SHARED, found, 0));
    ASSERT_NE(written, MAP_FAILED);
    ASSERT_NE(read, MAP_FAILED);
    written[kBytes - 1] = 77;
    EXPECT_EQ(read[kBytes - 1], 77);
    munmap(written, kBytes);
    munmap(read, kBytes);
    EXPECT_NE(ftruncate(found, 1), 0) << "shrunk under a reader";
    EXPECT_NE(ftruncate(found, kBytes + 1), 0);
    QIF3ABufferInfo small;
    EXPECT_EQ(Quen3AInfoManager::Get3AInfoBuf(&small, 1), 0);
    EXPECT_EQ(small.size, kBytes);
}

TEST_F(ThreeA, RefusalsLeaveTheCallersRecordsAlone) {
    QIF3ABufferInfo info;
    EXPECT_LT(Quen3AInfoManager::Get3AInfoBuf(&info, kBytes + 1), 0);
    EXPECT_EQ(info.fd, -1);
    EXPECT_LT(Quen3AInfoManager::Get3AInfoBuf(nullptr, kBytes), 0);
    int descriptor = -1;
    for (unsigned int index :
         {0U, 1U, SharedMemoryThreeAStore::kBuffers + 1, UINT32_MAX}) {  // 1 is not handed out yet
        EXPECT_LT(Quen3AInfoManager::GetTuningData(&descriptor, index), 0);
        EXPECT_EQ(descriptor, -1);
    }
    EXPECT_LT(Quen3AInfoManager::GetTuningData(nullptr, static_cast<unsigned>(get().bufferIndex)),
              0);
}

TEST_F(ThreeA, FullPoolTakesTheBufferLeastRecentlyHandedOut) {
    std::set<int> descriptors;
    for (unsigned int i = 1; i <= SharedMemoryThreeAStore::kBuffers; ++i) {
        QIF3ABufferInfo const info = get();
        EXPECT_EQ(info.bufferIndex, static_cast<int32_t>(i));
        descriptors.insert(info.fd);
    }
    EXPECT_EQ(descriptors.size(), SharedMemoryThreeAStore::kBuffers);
    // A request that reads buffer 1 must not be given it to write to.
    int descriptor = -1;
    ASSERT_EQ(Quen3AInfoManager::GetTuningData(&descriptor, 1), 0);
    EXPECT_EQ(get().bufferIndex, 2);
    EXPECT_EQ(Quen3AInfoManager::GetTuningData(&descriptor, SharedMemoryThreeAStore::kBuffers), 0);
    EXPECT_EQ(descriptors.count(get().fd), 1u);

    setThreeAStore(nullptr);
    for (int closed : descriptors) {
        EXPECT_EQ(fcntl(closed, F_GETFD), -1);
    }
    auto const own = std::make_shared<SharedMemoryThreeAStore>();
    setThreeAStore(own);
    EXPECT_EQ(setThreeAStore(nullptr), own);
}

TEST_F(ThreeA, DescriptorsStayClearOfTheStandardStreams) {
    int const kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    close(STDERR_FILENO);
    int const descriptor = get().fd;
    EXPECT_EQ(fcntl(STDERR_FILENO, F_GETFD), -1) << "left open";
    int const restored = dup2(kept, STDERR_FILENO);
    close(kept);
    EXPECT_GE(descriptor, 3);
    EXPECT_EQ(restored, STDERR_FILENO);
}

}  // namespace
