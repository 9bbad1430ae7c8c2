// The software ISP as a client uses it: a device with streams, requests and results.

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <cutils/native_handle.h>
#include <gralloctypes/Gralloc4.h>
#include <mtkcam/isp_metadata.h>
#include <system/graphics.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/LogLines.h"
#include "host/gralloc/GraphicsServices.h"
#include "host/isp/buffers/SampleLayout.h"
#include "host/isp/buffers/SensorCalibration.h"
#include "host/isp/device/SoftwareIspModule.h"
#include "host/isp/exif/ExifModule.h"
#include "host/metadata/MetadataText.h"
#include "support/Golden.h"
#include "support/Graphics.h"

namespace {

using namespace std::chrono_literals;
using namespace quen::host::isp;
using namespace vendor::mediatek::hardware::camera::isphal::V1_0;
using android::sp;
using android::hardware::Return;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;

constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;
constexpr uint64_t kInput = 3;
constexpr uint64_t kOutput = 7;

constexpr int32_t kRaw16 = HAL_PIXEL_FORMAT_RAW16;
constexpr int32_t kNv12 = HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED;
constexpr int32_t kBlob = HAL_PIXEL_FORMAT_BLOB;

// A graphic buffer, mapped for the test.
struct Buffer {
    Buffer(uint32_t width, uint32_t height, int32_t format) : bytes(width * height * 2) {
        IMapper::BufferDescriptorInfo info{};
        info.width = width;
        info.height = height;
        info.layerCount = 1;
        info.format = static_cast<decltype(info.format)>(format);
        info.usage = 0x33;
        hidl_vec<uint8_t> descriptor;
        (void)IMapper::getService()->createDescriptor(
                info, [&](auto, auto& described) { descriptor = described; });
        (void)IAllocator::getService()->allocate(
                descriptor, 1, [&](auto, uint32_t, auto& buffers) { raw = buffers[0]; });
        data = static_cast<uint8_t*>(
                mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, raw->data[0], 0));
        EXPECT_NE(data, MAP_FAILED);
    }
    ~Buffer() { munmap(data, bytes); }
    Buffer(Buffer const&) = delete;
    Buffer& operator=(Buffer const&) = delete;

    size_t const bytes;  // or fewer
    hidl_handle raw;
    uint8_t* data = nullptr;
};

// Records results, and runs an action within each.
class Results : public ICallback {
  public:
    Return<void> processResult(ISPResult const& result) override {
        onResult(result);
        std::lock_guard<std::mutex> const guard(mLock);
        mTold += std::to_string(result.reqNumber) + ' ' + toString(result.status) + ' ';
        ++mCount;
        mArrived.notify_all();
        return android::hardware::Void();
    }
    Return<void> processEarlyResult(ISPResult const&) override { return android::hardware::Void(); }

    // Number and status of every result, once exactly that many have arrived.
    std::string told(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        mArrived.wait_for(guard, 20s, [&] { return mCount >= count; });
        EXPECT_EQ(mCount, count);
        return mTold;
    }

    std::function<void(ISPResult const&)> onResult = [](auto&) {};

  private:
    std::mutex mLock;
    std::condition_variable mArrived;
    size_t mCount = 0;  // guarded by mLock, as the next
    std::string mTold;
};

ISPStream stream(uint64_t id, int32_t format, uint32_t width = kWidth, uint32_t height = kHeight) {
    ISPStream result{};
    result.id = id;
    result.format = format;
    result.width = width;
    result.height = height;
    return result;
}

ISPRequest request(uint32_t number, hidl_handle const& input,
                   std::vector<hidl_handle> const& outputs) {
    ISPRequest result{};
    result.requestNumber = number;
    result.inputBuffers.resize(1);
    result.inputBuffers[0].streamId = kInput;
    result.inputBuffers[0].buffer = input;
    result.outputBuffers.resize(outputs.size());
    for (size_t i = 0; i < outputs.size(); ++i) {
        result.outputBuffers[i].streamId = kOutput + i;
        result.outputBuffers[i].buffer = outputs[i];
    }
    return result;
}

// A fresh platform, a device of the ISP, and the receiver of its results.
class SoftwareIsp : public testing::Test {
  protected:
    explicit SoftwareIsp(std::shared_ptr<IspObserver> observer = nullptr) {
        SoftwareIspOptions options;
        options.observer = std::move(observer);
        EXPECT_EQ(registerSoftwareIsp(options), android::OK);
        (void)IISPModule::getService("internal/0")
                ->openISPDevice([&](Status, sp<IDevice> const& opened) { device = opened; });
    }

    Status configure(ISPStream const& input, std::vector<ISPStream> const& outputs) {
        ISPStreamConfiguration config;
        config.inputStreams = hidl_vec<ISPStream>{input};
        config.outputStreams = outputs;
        return device->configureISPDevice(config, results);
    }

    Status submit(ISPRequest const& wanted) {
        return device->processISPRequest(hidl_vec<ISPRequest>{wanted});
    }
    void submitSome(uint32_t first, uint32_t last) {
        for (uint32_t number = first; number <= last; ++number) {
            ASSERT_EQ(submit(request(number, raw.raw, {yuv.raw})), Status::OK);
        }
    }

    quen::host::GraphicsServices graphics = quen::host::registerGraphicsServices();
    sp<Results> results = new Results;
    sp<IDevice> device;
    Buffer raw{kWidth, kHeight, kRaw16};
    Buffer yuv{kWidth, kHeight, kNv12};
    ISPStream const rawStream = stream(kInput, kRaw16);
    ISPStream const yuvStream = stream(kOutput, kNv12);
};

// Notes what the ISP says of configurations, requests and results.
struct Notes : IspObserver {
    void onConfigured(ISPStreamConfiguration const&, Status status,
                      std::string const& problem) override {
        lines.push_back("configured " + toString(status) + ' ' + problem);
    }
    void onRequest(ISPRequest const&, Status status, std::string const& problem) override {
        lines.push_back("submitted " + toString(status) + ' ' + problem);
    }
    void onResult(ISPResult const& result, IspReport const& report) override {
        std::stringstream text;
        text << "result " << result.reqNumber << ' ' << toString(result.status) << ' '
             << report.problem << "\nused " << report.rawBits << " bits, crop " << report.crop.x
             << ' ' << report.crop.y << ' ' << report.crop.width << ' ' << report.crop.height
             << ", calibration " << static_cast<int>(report.calibrationState) << ' '
             << report.hasCalibrationHeader << ' ' << report.calibrationHeader.totalUsedBytes
             << ", legs";
        for (IspLeg const& leg : report.legs) {
            text << ' ' << leg.name;
        }
        auto const& metadata = result.resultMetadata;
        text << '\n' << quen::host::ispMetadataText(metadata.data(), metadata.size());
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
    }

    std::vector<std::string> lines;
};

// Does what the lines with ">" of golden/isp_requests.txt say, and notes what comes of them:
//   in, out FORMAT WIDTH HEIGHT [LAYOUT STRIDE]   a stream; "in" begins a configuration
//   session, set TAG TYPE NUMBER...               a setting of it or of a request; 0 bytes, 1 int32
//   configure, submit
//   input FORMAT WIDTH HEIGHT [WORD...]           begins a request, with a picture of cells of 2 x
// 2 samples, of pixels of RGB, or of one byte output FORMAT WIDTH HEIGHT                    a
// buffer for the next output tuning WHITE MAGIC                            tuning data beside the
// input and the outputs Samples are told in steps of eight. The file was looked through: colours by
// BT.601, sizes and settings by the lines above them.
class IspScript : public SoftwareIsp {
  protected:
    IspScript() : IspScript(std::make_shared<Notes>()) {}
    explicit IspScript(std::shared_ptr<Notes> const& said)
        : SoftwareIsp(said), lines(said->lines) {}

    void execute(std::string const& command, std::vector<uint32_t> const& n) {
        auto const make = [&](uint64_t id) {
            return stream(id, static_cast<int32_t>(n[0]), n[1], n[2]);
        };
        if (command == "in") {
            input = make(kInput);
            input.bufferLayout = n.size() > 3 ? n[3] : 0;
            input.stride = hidl_vec<uint32_t>{n.size() > 4 ? n[4] : 0, 0, 0};
            outputs.clear();
            initial_isp_metadata_vector(session, 0);
        } else if (command == "out") {
            outputs.push_back(make(kOutput + outputs.size()));
        } else if (command == "configure") {
            ISPStreamConfiguration config;
            config.inputStreams = hidl_vec<ISPStream>{input};
            config.outputStreams = outputs;
            config.sessionSettings = session;
            (void)device->configureISPDevice(config, results).isOk();
        } else if (command == "input" || command == "output") {
            if (command == "input") {
                buffers.clear();
                tuning.clear();
                initial_isp_metadata_vector(wanted, 0);
            }
            buffers.push_back(std::make_unique<Buffer>(n[1], n[2], static_cast<int32_t>(n[0])));
            fill(*buffers.back(), n[0] == uint32_t{kBlob}, {n.begin() + 3, n.end()});
        } else if (command == "tuning") {
            tuning = n;
        } else if (command == "submit") {
            submitRequest();
        } else {
            std::vector<uint32_t> items(n.begin() + 2, n.end());
            std::vector<uint8_t> bytes(items.begin(), items.end());
            void* const data = n[1] == 0 ? static_cast<void*>(bytes.data()) : items.data();
            auto const size = static_cast<unsigned>((n[1] == 0 ? 1 : 4) * items.size());
            auto& metadata = command == "set" ? wanted : session;
            EXPECT_EQ(add_isp_metadata_entry(metadata, n[0], n[1], data, size, nullptr), 0);
        }
    }

    void fill(Buffer const& buffer, bool isBlob, std::vector<uint32_t> const& cell) const {
        if (cell.size() == 1) {
            memset(buffer.data, static_cast<int>(cell[0]), buffer.bytes / 4 * (isBlob ? 2 : 3));
        }
        uint32_t const samples = (cell.size() == 3 ? 3 : 1) * input.width;
        uint32_t const stride = input.stride[0] != 0 ? input.stride[0] : 2 * samples;
        for (uint32_t i = 0; i < samples * input.height && cell.size() > 1; ++i) {
            uint32_t const x = i % samples;
            uint32_t const index = cell.size() == 3 ? x % 3 : i / samples % 2 * 2 + x % 2;
            memcpy(buffer.data + size_t{i / samples} * stride + 2 * x, &cell[index], 2);
        }
    }

    void submitRequest() {
        std::vector<hidl_handle> targets;
        for (size_t i = 1; i < buffers.size(); ++i) {
            targets.push_back(buffers[i]->raw);
        }
        ISPRequest request = ::request(11, buffers[0]->raw, targets);
        request.settings = wanted;
        Buffer const given(kCalibrationBufferBytes, 1, kBlob);
        Buffer const earlier(kCalibrationBufferBytes, 1, kBlob);
        Buffer const made(kCalibrationBufferBytes, 1, kBlob);
        if (!tuning.empty()) {
            SensorCalibration calibration;
            calibration.whiteLevel = static_cast<float>(tuning[0]);
            encodeCalibration({3, 4, 0}, calibration, given.data, kCalibrationUsedBytes);
            memcpy(given.data + 64, &tuning[1], 4);
            request.inputBuffers[0].tuningData = given.raw;
            request.outputBuffers[0].tuningData = earlier.raw;
            request.outputBuffers[outputs.size() - 1].tuningData = made.raw;
        }
        if (submit(request) != Status::OK) {
            return;
        }
        results->told(++count);
        for (size_t i = 0; i < outputs.size(); ++i) {
            describe(*buffers[i + 1], outputs[i]);
        }
        CalibrationHeader const header = decodeCalibrationHeader(made.data, 36);
        lines.push_back("tuning data " + std::to_string(header.requestNo) + ' ' +
                        std::to_string(header.frameNumber) + ' ' +
                        std::to_string(header.totalUsedBytes));
    }

    // A JPEG's trailer, sides, first figure of its table and turn; or samples of a picture.
    void describe(Buffer const& buffer, ISPStream const& made) {
        std::ostringstream text;
        if (made.format == kBlob) {
            uint32_t trailer[2];
            memcpy(trailer, buffer.data + buffer.bytes / 2 - 8, 8);
            text << "JPEG " << std::hex << trailer[0] << std::dec << ", "
                 << (trailer[1] == 0 ? "none" : "whole");
            if (trailer[1] != 0) {
                std::string const file(reinterpret_cast<char*>(buffer.data), trailer[1]);
                std::string const head = file.substr(file.rfind("\xff\xc0") + 5, 4);
                EXPECT_EQ(file.substr(file.size() - 2), "\xff\xd9");
                text << ' ' << +head[3] << 'x' << +head[1] << ", table of "
                     << +file.at(file.rfind(std::string("\xff\xdb\0\x43\0", 5)) + 5) << ", turn "
                     << exifModule()->orientation(buffer.data + 12, file.size() - 12);
            }
        } else {
            size_t const luma = size_t{made.width} * made.height;
            text << "picture";
            for (size_t const at : {size_t{0}, luma - 1, luma, luma + 1, luma / 2 * 3 - 1}) {
                text << ' ' << buffer.data[at] / 8;
            }
        }
        lines.push_back(text.str());
    }
    std::vector<std::string>& lines;
    ISPStream input;
    std::vector<ISPStream> outputs;
    std::vector<unsigned char> session, wanted;
    std::vector<std::unique_ptr<Buffer>> buffers;  // the input's first
    std::vector<uint32_t> tuning;
    size_t count = 0;
};

TEST_F(IspScript, AnswersAsWritten) {
    quentest::LogLines log;  // the observer is told the same
    for (std::string const& line : quentest::goldenLines("isp_requests")) {
        if (line[0] == '>') {
            lines.push_back(line);
            std::istringstream words(line.substr(1));
            std::string command;
            std::vector<uint32_t> numbers;
            words >> command;
            for (std::string word; words >> word;) {
                numbers.push_back(static_cast<uint32_t>(std::stoll(word, nullptr, 0)));
            }
            execute(command, numbers);
        }
    }
    quentest::expectGolden("isp_requests", lines);
}

// golden/isp_refusals.txt was read line by line beside the cases.
TEST_F(SoftwareIsp, RefusesWhatIsWrongWithTheStatusThatFits) {
    quentest::LogLines log;
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
    quentest::expectGolden("isp_refusals", log.lines);
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
    for (auto const& golden :
         quentest::goldenCases("calibrations")) {  // name, offset, value, sound?
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
    sp<quentest::HookedMapper> const mapper = new quentest::HookedMapper;
    ASSERT_EQ(mapper->registerAsService(), android::OK);
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    ISPRequest wanted = request(1, raw.raw, {yuv.raw});
    using quentest::Error;
    mapper->onGet = quentest::giving(Error::NONE, hidl_vec<uint8_t>{1});
    EXPECT_EQ(submit(wanted), Status::RESOURCE_ERROR);
    mapper->onGet = quentest::losing();
    EXPECT_EQ(submit(wanted), Status::RESOURCE_ERROR);
    mapper->onImport = quentest::giving(Error::NO_RESOURCES, nullptr);
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
    sp<quentest::HookedMapper> const mapper = new quentest::HookedMapper;
    for (auto const& golden : quentest::goldenCases("places")) {
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
        mapper->onGet = quentest::giving(quentest::Error::NONE, encoded);
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
