#include <quenOfflineDevice/session/IspStreams.h>

#include "support/DeviceTest.h"
#include "support/Formats.h"
#include "support/Lines.h"
#include "support/MetadataBuilder.h"

using namespace quentest;
using namespace testing;

namespace {
constexpr uint32_t kJfif = 0x08c20000;  // a data space

using Streams = std::vector<StreamConfig>;

class StreamConfigurationTest : public DeviceTest {
  protected:
    void configure(Streams const& in, Streams const& out) { mDevice->config(in, out, nullptr); }

    /** What the ISP device was told last. */
    isphal::ISPStreamConfiguration const& told() { return mIsp->configurations.back(); }
    std::vector<uint8_t> toldSettings() { return told().sessionSettings; }

    Transcript mLog;
};
using StreamConfigurationDeathTest = DeviceTest;

TEST_F(StreamConfigurationTest, Raw14bitIsForEveryFormatButRaw10AndEveryUiModeBut16) {
    struct {
        int32_t format;
        std::vector<int32_t> uiMode;  // the first one counts
        bool result;
    } const cases[] = {
            {kRaw10, {}, false},      {kRaw10, {0}, false},  {kRaw10, {16}, false},
            {kRaw16, {}, true},       {kRaw16, {16}, false}, {kRaw16, {-1}, true},
            {kRaw16, {16, 0}, false}, {kYuv, {}, true},      {kYuv, {16}, false},
    };
    for (auto const& c : cases) {
        MetadataBuilder metadata;
        Lines expected(c.format == kRaw10, "I inputFormat == HAL_PIXEL_FORMAT_RAW10");
        if (!c.uiMode.empty()) {
            add_camera_metadata_entry(metadata.get(), tags::kUiMode, c.uiMode.data(),
                                      c.uiMode.size());
            expected.push_back("I current ui mode " + std::to_string(c.uiMode[0]));
        }
        expected.push_back("I isNeedRaw14bit " + std::to_string(c.result));
        EXPECT_EQ(quen::isNeedRaw14bit(metadata.get(), c.format), c.result);
        EXPECT_EQ(mLog.take(), expected);
    }
}

/** Looks at the bytes between a stream's fields while the ISP device still has them. */
class PaddingDevice : public StandInDevice {
  public:
    StatusReturn configureISPDevice(isphal::ISPStreamConfiguration const& config,
                                    android::sp<isphal::ICallback> const& resultCallback) override {
        for (auto const* const streams : {&config.inputStreams, &config.outputStreams}) {
            for (auto const& stream : *streams) {
                auto const* const bytes = reinterpret_cast<uint8_t const*>(&stream);
                for (int const offset : {12, 52, 68}) {
                    padding.insert(padding.end(), bytes + offset, bytes + offset + 4);
                }
            }
        }
        return StandInDevice::configureISPDevice(config, resultCallback);
    }
    std::vector<uint8_t> padding;
};

TEST_F(StreamConfigurationTest, BytesBetweenTheFieldsAreZero) {
    for (size_t size = 64; size < 512; size += 16) {
        // Whatever record takes this memory next finds it dirty.
        std::vector<std::vector<uint8_t>> const dirt(8, std::vector<uint8_t>(size, 0x5a));
    }
    android::sp<PaddingDevice> const device72 = new PaddingDevice;
    mModule->device = device72;
    SessionParams params{{{1, kRaw10, 64, 48, false}},
                         {{2, kYuv, 64, 48, true}, {3, kYuv, 32, 24, true}},
                         nullptr};
    mDevice->create(&params);
    EXPECT_EQ(device72->padding, std::vector<uint8_t>(3 * 12, 0));

    android::hardware::hidl_vec<isphal::ISPStream> streams(std::vector<isphal::ISPStream>(1));
    auto* const bytes = reinterpret_cast<uint8_t*>(streams.data());
    for (int const offset : {12, 52, 68}) {
        memset(bytes + offset, 0x5a, 4);
    }
    quen::clearPadding(streams);
    EXPECT_THAT(std::vector<uint8_t>(bytes, bytes + sizeof(isphal::ISPStream)),
                Not(Contains(0x5a)));
}

TEST_F(StreamConfigurationTest, CreateTellsTheWholeSession) {
    // An RGB reprocess: six times the output's width wraps.
    MetadataBuilder metadata;
    metadata.i32(tags::kCameraId, 3).i32(tags::kUiMode, 2);
    SessionParams params{{{5, kRaw16, 0x30000000, 3000, false}, {6, kRaw10, 40, 30, false}},
                         {{-2, kYuv, 0x30000000, 1500, true}, {8, kPrivate, 640, 480, true}},
                         metadata.get()};
    mDevice->create(&params);
    Lines const lines = mLog.lines();
    EXPECT_EQ(Lines(std::find(lines.begin(), lines.end(), "I current cameraId = 3"), lines.end()),
              linesOf(R"(
                      I current cameraId = 3
                      I config stage init metadata
                      I it is RGB reprocess flow, width 268435456, height 3000
                      I config stream info streamId 5, width 268435456, height 3000, format 33
                      I Stream stride[0] 268435456,
                      I config stream info streamId 6, width 40, height 30, format 37
                      I Stream stride[0] 50,
                      I config stream info streamId -2, width 805306368, height 1500, format 35
                      I Stream stride[0] 805306368,
                      I Stream stride[1] 402653184,
                      I Stream stride[2] 402653184,
                      I config stream info streamId 8, width 640, height 480, format 34
                      I Stream stride[0] 640,
                      I Stream stride[1] 640,
                      I config stage RAW2YUV InputStreams size is 2, OutputStreams size is 2
                      I config input streamIndex = 0, width = 268435456, height = 3000, format = 33
                      I config input streamIndex = 1, width = 40, height = 30, format = 37
                      I config output streamIndex = 0, width = 805306368, height = 1500 format = 35
                      I config output streamIndex = 1, width = 640, height = 480 format = 34
                      I config stage X
                      I create X)"));

    ASSERT_THAT(mIsp->configurations, SizeIs(1));
    EXPECT_EQ(mIsp->callback, mPeer.halInterface()->callback());
    EXPECT_EQ(told().inputStreams[1].id, 6u);
    EXPECT_EQ(told().outputStreams[0].id, 0xfffffffffffffffeu);
    EXPECT_EQ(toldSettings(), ispBuffer({ispRecord<int32_t>(tags::kCameraId, 1, {3}),
                                         ispRecord<int32_t>(tags::kUiMode, 1, {2}),
                                         ispRecord<int32_t>(tags::kRawBitDepth, 1, {14}),
                                         ispRecord<int32_t>(tags::kIspCameraId, 1, {3})}));
    EXPECT_TRUE(mPeer.isNeedRaw14bit());
}

TEST_F(StreamConfigurationTest, StageAndSettingsFollowOutputFlagAndCamera) {
    mDevice->create(nullptr);
    configure({}, {{1, kBlob, 64, 1, true}, {2, kYuv, 64, 48, true}});
    EXPECT_EQ(mPeer.stage(), "YUV2JPEG");
    EXPECT_THAT(told().inputStreams, SizeIs(0));
    EXPECT_EQ(toldSettings(), ispBuffer({}));
    EXPECT_TRUE(mLog.has("E get cameraId failed"));

    mPeer.isNeedRaw14bit() = true;
    configure({}, {{1, kYuv, 64, 48, true}, {2, kBlob, 64, 1, true}});
    EXPECT_EQ(mPeer.stage(), "RAW2YUV");
    EXPECT_EQ(toldSettings(), ispBuffer({ispRecord<int32_t>(tags::kRawBitDepth, 1, {14})}));

    if (quen::kHardened) {
        return;  // refuses to configure without a module
    }
    // The module's death takes the callback, but not the configuration, away.
    mPeer.halInterface()->callback()->serviceDied(0, nullptr);
    configure({}, {{1, kYuv, 64, 48, true}});
    EXPECT_THAT(mIsp->configurations, SizeIs(3));
    EXPECT_EQ(mIsp->callback, nullptr);
}

/** Width, height, format, strides, size, data space, layout and usage. */
std::vector<uint64_t> fieldsOf(isphal::ISPStream const& s) {
    uint64_t const format = static_cast<uint64_t>(s.format);
    return {s.width,     s.height, format,      s.stride[0],    s.stride[1],
            s.stride[2], s.size,   s.dataSpace, s.bufferLayout, s.usage};
}

TEST_F(StreamConfigurationTest, EachFieldAndAWideInputIsAnRgbReprocess) {
    struct {
        int32_t format;
        uint32_t width, height;
        int32_t outputFormat;  // none: the stream is an output itself
        std::vector<uint64_t> fields;
    } const cases[] = {
            {kRaw10, 4001, 3, kBlob, {4001, 3, kRaw10, 5001, 0, 0, 15003, 0, 0, 0}},
            {kRaw16, 4000, 300, kBlob, {4000, 300, kRaw16, 8000, 0, 0, 2400000, 0, 0, 0}},
            // Bits wrap at 32.
            {kRaw16, 40000, 30000, kBlob, {40000, 30000, kRaw16, 80000, 0, 0, 252516352, 0, 0, 0}},
            {kRaw16, 1u << 29, 4, kBlob, {1u << 29, 4, kRaw16, 1u << 30, 0, 0, 0, 0, 0, 0}},
            {kYuv, 640, 480, kBlob, {640, 480, kYuv, 640, 320, 320, 460800, 0, 0, 0}},
            {kPrivate, 640, 480, kBlob, {640, 480, kPrivate, 640, 640, 0, 460800, 0, 0, 0x60000}},
            {kBlob, 900, 1, kBlob, {900, 1, kBlob, 900, 0, 0, 900, kJfif, 0, 0}},
            {kNv21, 640, 480, 0, {640, 480, kNv21, 640, 640, 0, 460800, 0, 0, 6}},
            {kYuv, 640, 480, 0, {640, 480, kYuv, 640, 320, 320, 460800, 0, 0, 6}},
            {kBlob, 90000, 1, 0, {90000, 1, kBlob, 90000, 0, 0, 90000, kJfif, 0, 6}},
            {kRaw10, 6000, 4, kYuv, {2000, 4, kBlob, 12000, 0, 0, 48000, kJfif, 0x10002, 0}},
            {kPrivate, 6001, 4, kYuv, {2000, 4, kBlob, 12000, 0, 0, 48000, kJfif, 0x10002, 0}},
            {kRaw10, 5999, 4, kYuv, {5999, 4, kRaw10, 7498, 0, 0, 29995, 0, 0, 0}},
            {kRaw10, 6000, 4, kBlob, {6000, 4, kRaw10, 7500, 0, 0, 30000, 0, 0, 0}},
            // Unsigned, wraps.
            {kRaw10, 3u << 30, 4, kYuv, {1u << 30, 4, kBlob, 1u << 31, 0, 0, 0, kJfif, 0x10002, 0}},
    };
    mDevice->create(nullptr);
    for (auto const& c : cases) {
        bool const input = c.outputFormat != 0;
        StreamConfig const stream{-5, c.format, c.width, c.height, !input};
        // Neither a narrow second output nor a wide one makes a difference.
        Streams const outputs{{2, c.outputFormat, 1000, 4, true},
                              {3, kYuv, 10, 4, true},
                              {4, kYuv, 7000, 4, true}};
        configure(input ? Streams{stream} : Streams{}, input ? outputs : Streams{stream});
        isphal::ISPStream const& s = input ? told().inputStreams[0] : told().outputStreams[0];
        EXPECT_THAT(fieldsOf(s), ElementsAreArray(c.fields));
        EXPECT_THAT(s.stride, SizeIs(3));
        EXPECT_EQ(s.id, 0xfffffffffffffffbu);
        EXPECT_EQ(s.tail, 0u);
        if (input) {
            EXPECT_EQ(mPeer.inputStreams().at(0).width, s.width);
            EXPECT_EQ(told().outputStreams[2].width, 7000u);
        }
    }
}

TEST_F(StreamConfigurationTest, StreamsAreKeptByPositionAndOldOnesStay) {
    mDevice->create(nullptr);
    configure({{10, kRaw16, 100, 48, false}},
              {{11, kYuv, 101, 48, true}, {12, kYuv, 102, 48, true}});

    mLog.take();
    configure({{20, kRaw16, 200, 48, false}, {21, kRaw16, 201, 48, false}},
              {{22, kYuv, 202, 48, true}});
    auto const hasId = [](uint64_t id) { return Field(&isphal::ISPStream::id, id); };
    EXPECT_THAT(mPeer.inputStreams(), ElementsAre(Pair(0, hasId(20)), Pair(1, hasId(21))));
    EXPECT_THAT(mPeer.outputStreams(), ElementsAre(Pair(1, hasId(11)), Pair(2, hasId(22))));
    // The line tells of the position in the table, where the old entry still stands first.
    EXPECT_TRUE(mLog.has("I config output streamIndex = 0, width = 101, height = 48 format = 35"));
}

TEST_F(StreamConfigurationDeathTest, StreamsAreLoggedBeforeTheIspDeviceRejectsThem) {
    mDevice->create(nullptr);
    mIsp->onConfigure = answering(isphal::Status::INTERNAL_ERROR);
    quen::host::setLogLevel(quen::host::LogLevel::Debug);
    std::string const next = "[^|]*\\|3 quenOfflineDevice [^|]*\\(\\) config ";
    EXPECT_EXIT((BareLog(),
                 mDevice->config({{1, kRaw16, 64, 48, false}},
                                 {{2, kYuv, 32, 24, true}, {3, kYuv, 16, 12, true}}, nullptr)),
                KilledBySignal(SIGABRT),
                "stage RAW2YUV InputStreams size is 1, OutputStreams size is 2" + next +
                        "input streamIndex = 0, width = 64, height = 48, format = 32" + next +
                        "output streamIndex = 0, width = 32, height = 24 format = 35" + next +
                        "output streamIndex = 1, width = 16, height = 12 format = 35"
                        "\\|1 quenOfflineDevice [^|]*\\[Fatal\\] configureISPDevice failed");
}

TEST_F(StreamConfigurationDeathTest, TheIspDeviceRejectsTheConfiguration) {
    mDevice->create(nullptr);
    mIsp->onConfigure = &StandInDevice::transportError;
    EXPECT_FATAL(mDevice->config({}, {{}}, nullptr),
                 "Transaction error in configureISPDevice from ISPDevice:.*stand-in lost.*");
    mIsp->onConfigure = answering(isphal::Status::INTERNAL_ERROR);
    EXPECT_FATAL(mDevice->config({}, {{}}, nullptr), "configureISPDevice failed:INTERNAL_ERROR");
    mIsp->onConfigure = answering(static_cast<isphal::Status>(6));  // has no name
    EXPECT_FATAL(mDevice->config({}, {{}}, nullptr), "configureISPDevice failed:[0x]*6");
}

}  // namespace
