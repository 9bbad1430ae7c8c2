// A device of the software ISP: what it refuses, what it finds in its buffers, its flush and end.

#include <sys/eventfd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "host/IspTest.h"
#include "host/LogLines.h"
#include "host/isp/buffers/SampleLayout.h"
#include "host/isp/buffers/SensorCalibration.h"
#include "support/Golden.h"

namespace {

using namespace std::chrono_literals;
using namespace quentest;

// golden/isp_refusals.txt was read line by line beside the cases.
TEST_F(SoftwareIsp, RefusesWhatIsWrongWithTheStatusThatFits) {
    LogLines log;
    ISPRequest const good = request(1, raw.raw, {yuv.raw});
    EXPECT_EQ(submit(good), Status::REQUEST_ERROR) << "no configuration was good";
    ISPStreamConfiguration noInput;
    noInput.outputStreams = hidl_vec<ISPStream>{yuvStream};
    EXPECT_EQ(Status(device->configureISPDevice(noInput, results)), Status::ILLEGAL_ARGUMENT);
    noInput.inputStreams = hidl_vec<ISPStream>{rawStream, rawStream};
    EXPECT_EQ(Status(device->configureISPDevice(noInput, results)), Status::ILLEGAL_ARGUMENT);
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);

    ISPRequest wrong = good;
    wrong.outputBuffers[0].streamId = 99;
    EXPECT_EQ(submit(wrong), Status::REQUEST_STREAM_ID_ERROR);
    wrong = good;
    Buffer const tooShort(kCalibrationBufferBytes - 1, 1, kBlob);
    for (hidl_handle const& noTuning : {yuv.raw, tooShort.raw}) {
        wrong.inputBuffers[0].tuningData = noTuning;
        EXPECT_EQ(submit(wrong), Status::ILLEGAL_ARGUMENT);
    }
    wrong = good;
    wrong.settings = hidl_vec<uint8_t>{1, 2, 3};
    EXPECT_EQ(submit(wrong), Status::ILLEGAL_ARGUMENT);
    wrong = good;
    wrong.inputBuffers[0].streamId = kOutput;
    EXPECT_EQ(submit(wrong), Status::REQUEST_STREAM_ID_ERROR);
    wrong = good;
    wrong.inputBuffers = hidl_vec<ISPBuffer>{good.inputBuffers[0], good.inputBuffers[0]};
    EXPECT_EQ(submit(wrong), Status::ILLEGAL_ARGUMENT) << "two inputs";
    EXPECT_EQ(submit(request(1, hidl_handle(), {yuv.raw})), Status::ILLEGAL_ARGUMENT);
    // All of a call or none of it.
    hidl_vec<ISPRequest> const both = {good, wrong};
    EXPECT_EQ(Status(device->processISPRequest(both)), Status::ILLEGAL_ARGUMENT);

    // Refused requests leave nothing behind, and no result follows the close.
    submitSome(2, 20);
    EXPECT_EQ(Status(device->closeISPDevice()), Status::OK);
    results->told(19);
    EXPECT_EQ(submit(good), Status::REQUEST_ERROR) << "closed";
    EXPECT_EQ(configure(rawStream, {yuvStream}), Status::REQUEST_ERROR);
    EXPECT_EQ(graphics.mapper->counts().imports, 0u);
    expectGolden("isp_refusals", log.lines);
}

// What each word of a calibration may be; the words are those of SensorCalibration.h, and so are
// limits.
TEST(Calibration, IsMalformedWithOneWordOutOfItsRange) {
    uint8_t sound[kCalibrationUsedBytes];
    encodeCalibration({7, 8, 0}, {}, sound, sizeof(sound));
    int32_t const header[9] = {7, 0, 0, 8, 0, 0, 0, 0, kCalibrationUsedBytes};
    EXPECT_EQ(memcmp(sound, header, sizeof(header)), 0);
    SensorCalibration sensor;
    EXPECT_EQ(decodeCalibration(sound, 171, sensor), CalibrationState::Absent);
    for (auto const& golden : goldenCases("calibrations")) {  // name, offset, value, sound?
        std::vector<uint8_t> bytes(sound, std::end(sound));
        size_t const offset = golden[1];
        float const number = golden[2].is_string() ? std::stof(golden[2].get<std::string>())
                                                   : golden[2].get<float>();
        auto const integer = static_cast<int32_t>(golden[2].is_string() ? 0 : number);
        void const* const word = offset < 80 ? static_cast<void const*>(&integer) : &number;
        memcpy(bytes.data() + offset, word, 4);
        EXPECT_EQ(decodeCalibration(bytes.data(), bytes.size(), sensor),
                  golden[3] ? CalibrationState::Present : CalibrationState::Malformed)
                << golden;
    }
}

TEST_F(SoftwareIsp, TellsWhichNeighbourFailed) {
    sp<HookedMapper> const mapper = new HookedMapper;
    ASSERT_EQ(mapper->registerAsService(), android::OK);
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    ISPRequest wanted = request(1, raw.raw, {yuv.raw});
    mapper->onGet = giving(Error::NONE, hidl_vec<uint8_t>{1});
    EXPECT_EQ(submit(wanted), Status::RESOURCE_ERROR);
    mapper->onGet = losing();
    EXPECT_EQ(submit(wanted), Status::RESOURCE_ERROR);
    mapper->onImport = giving(Error::NO_RESOURCES, nullptr);
    EXPECT_EQ(submit(wanted), Status::RESOURCE_ERROR);
    mapper->reset();
    EXPECT_EQ(mapper->counts().imports, 0u);
    // The tuning data is locked after the pictures.
    Buffer const tuning(kCalibrationBufferBytes, 1, kBlob);
    wanted.inputBuffers[0].tuningData = tuning.raw;
    for (int last : {0, 2}) {
        mapper->onLock = [&, last](auto const&, auto const& cb) mutable {
            bool const isLocked = last-- > 0;
            cb(isLocked ? Error::NONE : Error::NO_RESOURCES, isLocked ? yuv.data : nullptr);
            return android::hardware::Void();
        };
        EXPECT_EQ(submit(wanted), Status::OK);
        results->told(last == 0 ? 1 : 2);
    }
    // As a descriptor in the first integer: of memory large enough, too small, or of none.
    mapper->reset();
    auto const inUse = [] {
        // Those of buffers: a sanitizer makes others as it goes.
        std::ifstream maps("/proc/self/maps");
        size_t mapped = 0;
        for (std::string line; std::getline(maps, line);) {
            mapped += line.find("/memfd:") != std::string::npos ? 1 : 0;
        }
        auto const descriptors = std::filesystem::directory_iterator("/proc/self/fd");
        return std::pair(std::distance(begin(descriptors), end(descriptors)), mapped);
    };
    wanted.inputBuffers[0].tuningData = hidl_handle();
    auto const before = inUse();
    for (int const descriptor : {tuning.raw->data[0], raw.raw->data[0], -1}) {
        native_handle_t* const handle = native_handle_create(1, 2);
        handle->data[0] = eventfd(0, EFD_CLOEXEC);
        handle->data[1] = descriptor;
        handle->data[2] = 0;
        wanted.inputBuffers[0].tuningData.setTo(handle, true);
        EXPECT_EQ(submit(wanted),
                  descriptor == tuning.raw->data[0] ? Status::OK : Status::ILLEGAL_ARGUMENT);
    }
    EXPECT_EQ(results->told(3), "1 RESOURCE_ERROR 1 RESOURCE_ERROR 1 OK ");
    const_cast<native_handle_t*>(wanted.inputBuffers[0].tuningData.getNativeHandle())->data[1] =
            tuning.raw->data[0];
    wanted.outputBuffers[0].buffer = raw.raw;  // refused once the tuning data is open
    EXPECT_EQ(submit(wanted), Status::ILLEGAL_ARGUMENT);
    wanted.inputBuffers[0].tuningData = hidl_handle();
    EXPECT_EQ(inUse(), before) << "descriptors or mappings stay";
}

TEST_F(SoftwareIsp, FindsSamplesWhereThePlanesSayIfTheyFit) {
    namespace common = aidl::android::hardware::graphics::common;
    sp<HookedMapper> const mapper = new HookedMapper;
    for (auto const& golden : goldenCases("places")) {
        std::vector<common::PlaneLayout> planes;
        for (std::vector<int64_t> const n : golden["planes"]) {
            planes.push_back({{}, n[0], n[1], n[2], n[3], n[4], n[5], 1, 1});
            for (size_t i = 6; i < n.size(); i += 3) {
                common::ExtendableType type = android::gralloc4::PlaneLayoutComponentType_Y;
                type.name += n[i] < 0 ? "X" : "";
                type.value = std::abs(n[i]);
                planes.back().components.push_back({type, n[i + 2], n[i + 1]});
            }
        }
        hidl_vec<uint8_t> encoded;
        android::gralloc4::encodePlaneLayouts(planes, &encoded);
        mapper->onGet = giving(Error::NONE, encoded);
        GraphicBuffer buffer;
        EXPECT_EQ(buffer.import(mapper, raw.raw.getNativeHandle()), Status::OK);
        std::vector<size_t> found;
        if (auto const samples = findYuv(buffer, kWidth, kHeight)) {
            found = {samples->y,          samples->cb,           samples->cr,
                     samples->lumaStride, samples->chromaStride, samples->chromaStep};
        } else if (auto const rows = findRaw(buffer, 80, kHeight, 90); rows) {
            found = {rows->offset, rows->stride};
        }
        if (auto const block = findBlock(buffer)) {
            found.push_back(*block);
        }
        EXPECT_EQ(nlohmann::json(found), golden["found"]) << golden["name"];
    }
}

TEST_F(SoftwareIsp, FlushAnswersEverythingThatIsNotBegun) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    std::promise<void> begun;
    std::promise<void> goOn;
    results->onResult = [&](ISPResult const& result) {
        if (result.reqNumber == 1) {
            begun.set_value();
            goOn.get_future().wait();
        }
        // Those behind it, the one for its raw and the one for its picture, are still held.
        EXPECT_EQ(graphics.mapper->counts().imports,
                  result.reqNumber == 1 ? 6 : 8 - 2 * result.reqNumber);
    };
    auto const start = std::chrono::steady_clock::now();
    submitSome(1, 3);
    begun.get_future().wait();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 5ms) << "no chip is as fast";
    EXPECT_EQ(Status(device->flush()), Status::OK);
    EXPECT_EQ(Status(device->flush()), Status::OK);  // those behind it are none of the second one's
    submitSome(4, 4);
    goOn.set_value();
    EXPECT_EQ(results->told(4), "1 OK 2 REQUEST_ERROR 3 REQUEST_ERROR 4 OK ");
}

TEST_F(SoftwareIsp, CloseAnswersEverythingThatIsNotBegun) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    std::promise<void> begun;
    results->onResult = [&](ISPResult const& result) {
        if (result.reqNumber == 1) {
            begun.set_value();
            while (Status(device->processISPRequest(hidl_vec<ISPRequest>())) == Status::OK) {
                std::this_thread::yield();  // until it is closed
            }
        }
    };
    submitSome(1, 3);
    begun.get_future().wait();
    EXPECT_EQ(Status(device->closeISPDevice()), Status::OK);
    EXPECT_EQ(results->told(3), "1 OK 2 REQUEST_ERROR 3 REQUEST_ERROR ");
}

TEST_F(SoftwareIsp, CanBeClosedAndDroppedWithinAResult) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    std::promise<void> submitted;
    results->onResult = [&](ISPResult const& result) {
        if (result.reqNumber == 1) {
            submitted.get_future().wait();
            EXPECT_EQ(Status(device->closeISPDevice()), Status::OK);
            device.clear();  // the last reference
        }
    };
    submitSome(1, 3);
    submitted.set_value();
    // The two queued after it are answered within the close.
    EXPECT_EQ(results->told(3), "2 REQUEST_ERROR 3 REQUEST_ERROR 1 OK ");
}

}  // namespace
