#include <quenGralloc/MapperHelper.h>

#include <gmock/gmock.h>
#include <sync/sync.h>
#include <unistd.h>

#include <array>

#include <android/log.h>

#include "support/Lines.h"
#include "support/PlaneLayouts.h"

static std::vector<useconds_t> gSlept;
static std::vector<int> gWaited;  // descriptor and time-out, wait by wait
static bool gCanDuplicate = true;

// In the place of the C library's and the platform's.
extern "C" int usleep(useconds_t microseconds) {
    gSlept.push_back(microseconds);
    return 0;
}
extern "C" int dup(int fd) noexcept {
    return gCanDuplicate ? fcntl(fd, F_DUPFD, 0) : -1;
}
extern "C" int sync_wait(int fd, int timeout) {
    gWaited.insert(gWaited.end(), {fd, timeout});
    return 0;
}

namespace {

using namespace quentest;
using testing::ElementsAre;

class MapperHelperTest : public testing::Test {
  protected:
    HookedMapper& mapper() { return *mGraphics.mapper; }

    Graphics& mGraphics = Graphics::fresh();
    MapperHelper mHelper = MapperHelper::getInstance();
    native_handle_t mBuffer{};
};

TEST_F(MapperHelperTest, ImportGoesOnForFiveAttempts) {
    native_handle_t imported{};
    struct Case {
        int failures, attempts;
        bool transportWorks;
    };
    for (Case const& c :
         {Case{0, 1, true}, {2, 3, true}, {4, 5, true}, {5, 5, true}, {5, 5, false}}) {
        int attempts = 0;
        mapper().onImport = [&](hidl_handle const& raw, auto const& cb) -> Return<void> {
            EXPECT_EQ(raw.getNativeHandle(), &mBuffer);
            ++attempts;
            if (!c.transportWorks) {
                return lostTransport();
            }
            // The error code is not looked at.
            cb(Error::BAD_BUFFER, attempts > c.failures ? &imported : nullptr);
            return android::hardware::Void();
        };
        native_handle const* handle = &mBuffer;
        Transcript transcript;
        gSlept.clear();
        mHelper.importBuffer(handle);
        EXPECT_EQ(gSlept, std::vector<useconds_t>(static_cast<size_t>(c.failures), 5000));
        EXPECT_EQ(attempts, c.attempts);
        EXPECT_EQ(handle, c.failures < 5 ? &imported : nullptr);
        std::string expected;
        for (int attempt = 1; attempt <= c.attempts; ++attempt) {
            bool const isNull = attempt <= c.failures;
            expected += "I debug MapperHelper import is succeeded " +
                        std::to_string(c.transportWorks) + ", outBufferHandle " +
                        testing::PrintToString(&mBuffer) + ", importedHandle " +
                        (isNull ? "(nil)" : testing::PrintToString(&imported)) +
                        "\nI debug current improtBufferTimes " + std::to_string(5 - attempt) +
                        ", importedBuffer is nullptr " +
                        (isNull ? "1\nI debug wait 5ms and import buffer again\n" : "0\n");
        }
        EXPECT_EQ(transcript.linesOfTag("quenGralloc"), linesOf(expected));
    }
}

TEST_F(MapperHelperTest, DescriptorsAndFreesReportTheTransportAlone) {
    Transcript transcript;
    mHelper.freeBuffer(nullptr);
    EXPECT_THAT(transcript.linesOfTag("quenGralloc"), ElementsAre());
    EXPECT_THAT(mapper().calls, ElementsAre());
    mapper().onFree = [] { return Error::BAD_BUFFER; };
    mHelper.freeBuffer(&mBuffer);
    mapper().onFree = losing();
    mHelper.freeBuffer(&mBuffer);
    EXPECT_THAT(mapper().freed, ElementsAre(&mBuffer, &mBuffer));

    hidl_vec<uint8_t> descriptor;
    mapper().onCreateDescriptor = giving(Error::BAD_VALUE, hidl_vec<uint8_t>{1, 2, 3});
    mHelper.createDescriptor({}, descriptor);
    mapper().onCreateDescriptor = losing();
    mHelper.createDescriptor({}, descriptor);
    EXPECT_THAT(descriptor, ElementsAre(1, 2, 3));
    mapper().onCreateDescriptor = giving(Error::NONE, hidl_vec<uint8_t>());
    mHelper.createDescriptor({}, descriptor);
    EXPECT_THAT(descriptor, ElementsAre());
    EXPECT_THAT(transcript.linesOfTag("quenGralloc"),
                ElementsAre("I MapperHlper freeBuffer is OK 1", "I MapperHlper freeBuffer is OK 0",
                            "I MapperHelper createDescriptor is succeeded 1",
                            "I MapperHelper createDescriptor is succeeded 0",
                            "I MapperHelper createDescriptor is succeeded 1"));
}

TEST_F(MapperHelperTest, LockConsumesItsFenceAndReportsNothing) {
    struct Case {
        bool fenced, transportWorks;
        void* address;
        char const* line;
    };
    auto* const some = reinterpret_cast<void*>(0x123456789ABC);  // its low half is printed
    auto* const before = reinterpret_cast<void*>(0x5);
    close(0);  // a fence may well be descriptor 0
    for (Case const& c : {Case{true, true, some, "D lock addr(0x56789ABC)"},
                          {true, true, nullptr, "D lock addr(0x0)"},
                          {true, false, before, "E lock fail!"},
                          {false, true, some, "D lock addr(0x56789ABC)"}}) {
        Fence fence;
        mapper().onLock = [&](hidl_handle const& given, auto const& cb) -> Return<void> {
            native_handle_t const* const raw = given.getNativeHandle();
            EXPECT_EQ(raw != nullptr, c.fenced);
            if (raw != nullptr) {
                EXPECT_THAT((std::array{raw->numFds, raw->numInts, raw->data[0]}),
                            ElementsAre(1, 0, fence.fd));
                EXPECT_TRUE(fence.isOpen());
            }
            return c.transportWorks ? giving(Error::BAD_BUFFER, c.address)(cb)
                                    : Return<void>(lostTransport());
        };
        void* address = before;
        Transcript transcript;
        EXPECT_EQ(mHelper.lock(&mBuffer, 0x33, {1, 2, 3, 4}, c.fenced ? fence.fd : -1, address), 0);
        EXPECT_EQ(address, c.address);
        EXPECT_EQ(fence.isOpen(), !c.fenced);
        EXPECT_THAT(transcript.linesOfTag("quenGralloc"), ElementsAre(c.line));
    }
    EXPECT_EQ(open("/dev/null", O_RDONLY), 0);
}

TEST_F(MapperHelperTest, LayoutsBecomeAddressesOrAreRefused) {
    struct Case {
        char const* layouts;
        char const* ycbcr;  // result; y, cb and cr as offsets; strides of luma and chroma, step
    };
    std::array<uint8_t, 4096> memory;
    Transcript const quiet;
    for (Case const& c : {
                 Case{"", "0: - - -, 0 0 0"},
                 {"Y0 0 8 64  V0U8 640 16 64", "0: 0 641 640, 64 64 2"},
                 {"Y0 0 8 64  U0V8 640 16 72", "0: 0 640 641, 64 72 2"},
                 {"Y0 0 8 64  U0 640 8 32  V0 800 8 32", "0: 0 640 800, 64 32 1"},
                 {"V0 0 8 16  U0 160 8 16  Y16 320 8 32", "0: 322 160 0, 32 16 1"},
                 {"Y0 0 8 64", "0: 0 - -, 64 0 0"},
                 {"Y8 9223372036854775806 8 64", "0: 9223372036854775807 - -, 64 0 0"},
                 {"X3A8Y0 0 8 64", "0: 0 - -, 64 0 0"},  // others' and alpha: passed over
                 {"y0 0 8 64", "-22: - - -, 0 0 0"},     // 10-bit luma
                 {"Y0 0 16 64", "-22: - - -, 0 0 0"},    // luma two bytes apart
                 {"Y0 0 8 64  Y0 640 8 32", "-22: 0 - -, 64 0 0"},   // luma twice
                 {"Y0 0 8 64  U4 640 8 32", "-22: 0 - -, 64 0 0"},   // off a byte
                 {"Y0 0 8 64  A4 640 8 32", "-22: 0 - -, 64 0 0"},   // even where it is unused
                 {"Y0 0 8 64  U0 640 12 32", "-22: 0 - -, 64 0 0"},  // chroma a byte and a half,
                 {"Y0 0 8 64  V0 640 24 32", "-22: 0 - -, 64 0 0"},  // three bytes apart
                 {"Y0 0 8 64  U0 640 8 32  V0 800 8 48", "-22: 0 640 -, 64 32 1"},
                 {"Y0 0 8 64  U0 640 8 32  V0 800 16 32", "-22: 0 640 -, 64 32 1"},
                 {"Y0 0 8 64  U0 640 8 0  V0 800 8 32", "-22: 0 640 -, 64 0 1"},
                 {"Y0 0 8 64  U0U8 640 16 64", "-22: 0 640 -, 64 64 2"},
                 {"Y0 0 8 64  V0V8 640 16 64", "-22: 0 - 640, 64 64 2"},
         }) {
        mapper().onGet = giving(Error::NONE, layoutsOf(c.layouts));
        mapper().onLock = giving(Error::NONE, static_cast<void*>(memory.data()));
        mapper().calls.clear();
        Fence const fence;
        android_ycbcr ycbcr;
        memset(&ycbcr, 0xEE, sizeof(ycbcr));
        std::ostringstream text;
        text << mHelper.lockYCbCr_4_0(&mBuffer, 0x30, {0, 0, 64, 10}, fence.fd, ycbcr) << ":";
        for (void* const address : {ycbcr.y, ycbcr.cb, ycbcr.cr}) {
            address ? text << " " << static_cast<uint8_t*>(address) - memory.data() : text << " -";
        }
        text << ", " << ycbcr.ystride << " " << ycbcr.cstride << " " << ycbcr.chroma_step;
        EXPECT_EQ(text.str(), c.ycbcr) << c.layouts;
        EXPECT_THAT(mapper().calls, ElementsAre("lock"));  // and left locked when it is refused
        EXPECT_FALSE(fence.isOpen());
        EXPECT_EQ(ycbcr.reserved[0] & 0xFF, 0xEEu);

        mapper().onLock = losing();  // the same answer, without addresses
        EXPECT_EQ(mHelper.lockYCbCr_4_0(&mBuffer, 0x30, {}, -1, ycbcr), std::stoi(c.ycbcr));
        EXPECT_TRUE(ycbcr.y == nullptr && ycbcr.cb == nullptr && ycbcr.cr == nullptr);
    }
}

/** Keeps the lines of Android's log, too. */
class AndroidLog : public Transcript {
  public:
    void writeAndroid(char const* tag, int priority, char const* message) override {
        android.push_back(std::string(tag) + (priority == ANDROID_LOG_ERROR ? ": " : "? ") +
                          message);
    }
    Lines android;
};

TEST_F(MapperHelperTest, LayoutsThatCannotBeHadLockNothing) {
    std::vector<MapperHelper::PlaneLayout> layouts;
    mapper().onGet = losing();
    AndroidLog log;
    EXPECT_EQ(mHelper.getPlaneLayouts(&mBuffer, nullptr), -22);
    EXPECT_THAT(log.android, ElementsAre());
    EXPECT_EQ(mHelper.getPlaneLayouts(&mBuffer, &layouts), 5);
    mapper().onGet = giving(Error::UNSUPPORTED, hidl_vec<uint8_t>());
    android_ycbcr ycbcr;
    ycbcr.y = &ycbcr;  // left alone
    Fence const fence;
    EXPECT_EQ(mHelper.lockYCbCr_4_0(&mBuffer, 0x30, {}, fence.fd, ycbcr), 7);
    EXPECT_EQ(ycbcr.y, &ycbcr);
    EXPECT_TRUE(fence.isOpen());
    mapper().onGet = [](auto const& cb) -> Return<void> {  // lost after its answer
        cb(Error::NONE, layoutsOf(""));
        return lostTransport();
    };
    EXPECT_EQ(mHelper.getPlaneLayouts(&mBuffer, &layouts), 5);
    std::string const type = "android.hardware.graphics.common.StandardMetadataType, 15";
    EXPECT_THAT(log.android, ElementsAre("quenGralloc: get(" + type + ", ...) failed with 5",
                                         "quenGralloc: get(" + type + ", ...) failed with 7",
                                         "quenGralloc: get(" + type + ", ...) failed with 5"));
    EXPECT_THAT(log.lines(), ElementsAre());
    mapper().onGet = giving(Error::NONE, hidl_vec<uint8_t>{1, 2, 3});
    EXPECT_NE(mHelper.getPlaneLayouts(&mBuffer, &layouts), 0);
    EXPECT_THAT(mapper().calls, ElementsAre());
}

TEST_F(MapperHelperTest, UnlockHandsOutADuplicateOfOneFence) {
    Fence const first;
    Fence const second;
    BorrowedHandle const none({});
    BorrowedHandle const one({first.fd});
    BorrowedHandle const two({first.fd, second.fd});
    auto const unlock = [&](auto const& hook) {
        mapper().onUnlock = hook;
        int fence = 99;
        mHelper.unlock(&mBuffer, fence);
        return fence;
    };
    Error error = Error::BAD_BUFFER;  // is not looked at
    auto const give = [&](void*, auto const& cb) {
        cb(error, hidl_handle(one.get()));
        return android::hardware::Void();
    };
    close(0);  // so the duplicate is descriptor 0
    EXPECT_EQ(unlock(give), 0);
    EXPECT_EQ(close(0), 0);
    error = Error::NONE;
    EXPECT_EQ(unlock(give), 0);
    EXPECT_EQ(unlock(giving(Error::NONE, hidl_handle())), -1);
    EXPECT_EQ(unlock(giving(Error::NONE, hidl_handle(none.get()))), -1);
    EXPECT_EQ(unlock(giving(Error::NONE, hidl_handle(two.get()))), -1);
    EXPECT_EQ(unlock(losing()), -1);
    EXPECT_THAT(gWaited, ElementsAre());
    Transcript transcript;
    gCanDuplicate = false;
    EXPECT_EQ(unlock(give), -1);
    gCanDuplicate = true;
    EXPECT_THAT(transcript.linesOfTag("quenGralloc"),
                ElementsAre("D failed to dup unlock release fence"));
    EXPECT_THAT(gWaited, ElementsAre(first.fd, -1));
    EXPECT_TRUE(first.isOpen() && second.isOpen());
}

}  // namespace
