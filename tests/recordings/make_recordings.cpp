// Records the sessions that this folder keeps: a client and an ISP by script, small pictures,
// whole. Usage: quen-make-recordings FOLDER

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "host/base/Properties.h"
#include "host/hidl/ServiceRegistry.h"
#include "host/log/LogControl.h"
#include "recordings/ScriptedSession.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"

namespace {

using namespace quentest;

void index3A(Client& client) {
    client.settings().i32(tags::kBufferIndex, 1).i32(tags::kCameraId, 2);
}

/** Entries of every type that metadata has, some of which the ISP's lacks. */
void addEveryType(camera_metadata* settings) {
    float const gains[] = {1.5f, 1, 1, 2.25f};
    double const place[] = {48.1, 11.6, 500};
    camera_metadata_rational_t const neutral[] = {{1, 2}, {1, 1}, {3, 4}};
    int32_t const crop[] = {2, 4, 24, 16};
    std::vector<uint8_t> const long1(60, 7);
    add_camera_metadata_entry(settings, ANDROID_COLOR_CORRECTION_GAINS, gains, 4);
    add_camera_metadata_entry(settings, ANDROID_JPEG_GPS_COORDINATES, place, 3);
    add_camera_metadata_entry(settings, ANDROID_SENSOR_NEUTRAL_COLOR_POINT, neutral, 3);
    add_camera_metadata_entry(settings, ANDROID_SCALER_CROP_REGION, crop, 4);
    add_camera_metadata_entry(settings, tags::kRawTuning, long1.data(), long1.size());
    add_camera_metadata_entry(settings, tags::kRawBitDepth, crop, 2);
}

/** Captures of many kinds: what the ISP is told of each. */
void recordModes(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    addEveryType(client.settings().get());
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    int number = 0;
    for (int const bit : {1, 2, 3, 18, 24, 27, 35, 51, 55}) {
        quen::host::setEventString("APP_NAME", bit == 24 ? "StarPlate" : "Other");
        client.settings()
                .i64(tags::kCurrentMode, int64_t{1} << bit)
                .i32(tags::kUiMode, bit == 55 ? 40 : 16)
                .i32(tags::kSceneMode, bit == 27 ? 0x280000 : 0x400000)
                .i32(tags::kFeedback, bit == 51 ? 0x8 : 0x9);
        client.develop(++number);
    }
    quen::host::clearEventString("APP_NAME");
    struct {
        int64_t mode;
        int32_t scene;
        int32_t feedback;
    } const captures[] = {
            {1ll << 27, 0x180000, 0x10}, {1ll << 27, 0x300000, 0x8}, {1ll << 27 | 1ll << 35, 0, 0}};
    for (auto const& capture : captures) {
        client.settings()
                .i64(tags::kCurrentMode, capture.mode)
                .i32(tags::kSceneMode, capture.scene)
                .i32(tags::kFeedback, capture.feedback);
        client.develop(++number);
    }
    client.settings().i64(tags::kCurrentMode, 4).i32(tags::kFeedback, 1).i32(tags::kUiMode, 1);
    client.process(++number, client.image(1, kRaw16), {client.image(2, kYuv)}, {});
    for (int const index : {0, 5}) {
        Answer answer;
        answer.metadata = ispBuffer({ispRecord<int32_t>(tags::kBufferIndex, 1, {index})});
        client.develop(++number, answer);
    }
    client.settings().i32(tags::kForDepth, 1).i32(tags::kFusion, 1);
    client.develop(++number);
    client.settings().i32(tags::kForDepth, 0).i32(tags::kDualSlave, 0);
    client.develop(++number);
    client.settings().i32(tags::kEngineerMode, 4).i32(tags::kFusion, 0);
    client.develop(++number);
    client.settings().i32(tags::kDualSlave, -1).i32(tags::kEngineerMode, 0x78);
    client.develop(++number);
    client.settings().i32(tags::kFastDisplay, 1);
    client.develop(++number);
    int32_t const crop[] = {1, 2, 30, 20};
    add_camera_metadata_entry(client.settings().get(), tags::kSatCrop, crop, 4);
    client.develop(++number);
}

/** Sizes, formats and raw depths that change, requests outstanding or not. */
void recordReconfigurations(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    Answer late;
    late.delay = 100;
    client.process(1, client.image(1, kRaw10), {client.image(2, kYuv)}, late);
    client.process(2, client.image(1, kRaw10, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.process(8, client.image(1, kRaw10, 48, 16), {client.image(2, kYuv, 48, 16)}, {});
    client.process(3, client.image(1, kRaw16, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.settings().i32(tags::kUiMode, 16);
    client.process(4, client.image(1, kRaw16, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.process(5, client.image(1, kRaw16, 288, 2), {client.image(2, kYuv, 48, 24)}, {});
    client.process(6, client.image(-2, kNv21), {client.image(-4, kYuv)}, {});
    client.encode(7);
    for (Layout const layout : {Layout::Nv12, Layout::I420, Layout::Yv12, Layout::Nv21}) {
        gAllocator->setLayout(PixelFormat::YCRCB_420_SP, layout);
        client.process(9, client.image(2, kYuv, 34, 23), {client.image(3, kBlob)}, {});
    }
    client.device().setOfflineCallback(nullptr);
    client.device().config({{1, kPrivate, 16, 8, false}}, {{2, kYuv, 16, 8, true}}, nullptr);
    client.device().config({{1, kRaw16, 70000, 70000, false}},
                           {{2, kYuv, 16, 8, true}, {4, kYuv, 96, 8, true}}, nullptr);
    client.device().flush();
}

/** Whatever an ISP may answer but success. */
void recordErrors(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    client.device().process(nullptr, nullptr);
    for (uint32_t status = 0; status < 9; ++status) {
        Answer answer;
        answer.status = static_cast<isphal::Status>(status);
        client.develop(static_cast<int>(status), answer);
    }
    Answer several;
    several.results = 2;
    several.strays = true;
    several.early = {isphal::Status::OK, isphal::Status::RESULT_ERROR};
    client.develop(20, several);
    Answer empty;
    empty.metadata = {};
    client.develop(21, empty);
    Answer unheard;
    unheard.unheard = true;
    client.develop(26, unheard);
    Answer failed;
    failed.status = isphal::Status::INTERNAL_ERROR;
    client.encode(22, failed);
    Answer nameless;
    nameless.status = static_cast<isphal::Status>(6);
    client.encode(25, nameless);
    Answer refused;
    refused.refuses = true;
    client.encode(23, refused);
    Answer lost;
    lost.loses = true;
    client.encode(24, lost);

    RecordedDevice orphaned;
    StreamConfig const stream = {1, kRaw10, kWidth, kHeight, false};
    SessionParams params = {{stream}, {stream}, nullptr};
    orphaned.create(&params);
    isp.die();
}

/** Tuning data that goes with the metadata, in graphic buffers. */
void recordTuning(ScriptedIsp& isp) {
    Client client(isp);
    client.settings()
            .i64(tags::kCurrentMode, 2)
            .u8(tags::kRawTuning, {1, 2, 3, 4, 5, 6, 7, 8})
            .u8(tags::kYuvTuning, {9, 8, 7, 6});
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    for (int const bytes : {0, 40, 500}) {
        Answer answer;
        answer.tuningBytes = bytes;
        answer.metadata = ispBuffer({ispRecord<uint8_t>(0x00070004, 0, {90}),
                                     ispRecord<int32_t>(tags::kBufferIndex, 1, {77}),
                                     ispRecord<int64_t>(tags::kCurrentMode, 2, {1ll << 40}),
                                     ispRecord<float>(0x00080008, 3, {1.5f, 2.5f}),
                                     ispRecord<int32_t>(tags::kSceneMode, 1, {}),
                                     ispRecord<int32_t>(tags::kFusion, 1, {5}),
                                     ispRecord<int32_t>(tags::kFusion, 1, {6}),
                                     ispRecord<int32_t>(tags::kSatCrop, 1, {1, 2, 30, 20})},
                                    24);
        client.develop(bytes, answer);
    }
    client.settings().i32(tags::kBufferIndex, -1).i32(tags::kRequestNo, 8);
    client.develop(8);
    client.encode(9);
}

/** Two outputs a request, and two device objects that share the numbers of fast-display requests.
 */
void recordTwoAtOnce(ScriptedIsp& isp) {
    Client raw(isp);
    Client plain(isp);
    Client jpeg(isp);
    for (Client* const client : {&raw, &plain, &jpeg}) {
        index3A(*client);
    }
    plain.create(plain.image(1, kRaw10), {plain.image(2, kYuv)});
    raw.create(raw.image(1, kRaw10), {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)});
    jpeg.create(jpeg.image(2, kYuv), {jpeg.image(3, kBlob)});
    int number = 100;
    auto const developFast = [&](int fast) {
        raw.settings().i32(tags::kFastDisplay, fast);
        raw.process(++number, raw.image(1, kRaw10),
                    {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)}, {});
    };
    developFast(1);
    developFast(1);
    plain.develop(++number);
    for (int const fast : {0, 0, 0, -1}) {
        developFast(fast);
    }
    jpeg.encode(++number);
    jpeg.settings().i32(tags::kFastDisplay, 0).i64(tags::kCurrentMode, 1 << 24);
    for (uint32_t const bytes : {300u, 1016u, 0u}) {
        Answer answer;
        answer.jpegBytes = bytes;
        jpeg.encode(++number, answer);
    }
    Answer late;
    late.delay = 60;
    raw.process(++number, raw.image(1, kRaw10), {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)},
                late);
    jpeg.encode(++number);
    isp.settle();
    developFast(1);
    { Client(isp).create(plain.image(1, kRaw10), {plain.image(2, kYuv)}); }
    developFast(0);
    jpeg.encode(++number);
}

/** A result that comes too early for a wait, in which the time-out then ends. */
void recordLostSignal(ScriptedIsp& isp) {
    quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "0");
    Client client(isp);
    index3A(client);
    client.create(client.image(2, kYuv), {client.image(3, kBlob)});
    Answer answer;
    answer.atOnce = true;
    client.encode(1, answer);
}

struct Session {
    char const* name;
    void (*record)(ScriptedIsp&);
};

constexpr Session kSessions[] = {
        {"modes", recordModes},           {"reconfigurations", recordReconfigurations},
        {"errors", recordErrors},         {"tuning", recordTuning},
        {"two_at_once", recordTwoAtOnce}, {"lost_signal", recordLostSignal},
};

int recordAll(std::string const& folder) {
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    gAllocator = quen::host::registerGraphicsServices().allocator;
    for (Session const& session : kSessions) {
        quen::host::setThreeAStore(nullptr);
        quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "");
        sp<ScriptedIsp> const isp = new ScriptedIsp;
        if (isp->registerAsService("internal/0") != android::OK) {
            return EXIT_FAILURE;
        }
        std::string const path = folder + "/" + session.name + ".rec";
        int error = 0;
        auto const recorder = Recorder::start(path.c_str(), quen::recorder::Pictures::Whole, error);
        if (recorder == nullptr || quen::recorder::recordIsp(recorder) != android::OK) {
            fprintf(stderr, "%s cannot be recorded\n", path.c_str());
            return EXIT_FAILURE;
        }
        Recorder::setCurrent(recorder);
        session.record(*isp);
        Recorder::setCurrent(nullptr);
        std::string const problem = recorder->finish();
        if (!problem.empty()) {
            fprintf(stderr, "%s: %s\n", path.c_str(), problem.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: quen-make-recordings FOLDER\n");
        return 2;
    }
    return recordAll(argv[1]);
}
