// What the recorder keeps of buffers, and lets go of.

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "Lookahead.h"
#include "ReplayBuffer.h"
#include "quenRecorder/BufferRecord.h"
#include "quenRecorder/RecordedIspDevice.h"
#include "quenRecorder/SubmittedOutputs.h"
#include "support/Graphics.h"
#include "support/StandInIsp.h"

namespace {

using namespace quentest;
using namespace quen;

}  // namespace

TEST(RecorderTest, NoBufferStaysImportedWhateverTheMapperRefuses) {
    HookedMapper& mapper = *Graphics::fresh().mapper;
    recording::ImageBuffer described;
    described.set_size(100);
    recording::Graphic& graphic = *described.mutable_buffer()->mutable_graphic();
    graphic.set_width(100);
    graphic.set_height(1);
    graphic.set_layers(1);
    graphic.set_format(0x21);
    graphic.set_usage(0x33);
    replay::ReplayBuffer const buffer(described);
    std::function<void()> const refusals[] = {
            [] {},
            [&] { mapper.onImport = giving(Error::NO_RESOURCES, nullptr); },
            [&] { mapper.onImport = losing(); },
            [&] { mapper.onLock = giving(Error::NO_RESOURCES, nullptr); },
            [&] { mapper.onLock = losing(); },
            [&] { mapper.onGet = giving(Error::BAD_VALUE, hidl_vec<uint8_t>()); },
            [&] { mapper.onGet = losing(); },
    };
    for (auto const& refuse : refusals) {
        mapper.reset();
        refuse();
        recording::Buffer told;
        recorder::describeHandle(buffer.handle(), told);
        recorder::describePicture(buffer.handle(), 100, false, true, *told.mutable_content());
        EXPECT_EQ(told.content().head_size(), 100u);
        EXPECT_EQ(mapper.counts().imports, 0u);
        EXPECT_EQ(mapper.counts().locks, 0u);
    }
}

TEST(RecorderTest, OutputsOfANumberComeInTurnAndTheLatestAreTakenBack) {
    recorder::SubmittedOutputs outputs;
    auto const add = [&](size_t count) {
        vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest request;
        request.requestNumber = 5;
        request.outputBuffers.resize(count);
        outputs.add(request);
    };
    add(1);
    add(2);
    add(3);
    outputs.takeBack(5);
    outputs.takeBack(6);
    EXPECT_EQ(outputs.take(4).size(), 0u);
    EXPECT_EQ(outputs.take(5).size(), 1u);
    EXPECT_EQ(outputs.take(5).size(), 2u);
    EXPECT_EQ(outputs.take(5).size(), 0u);
    add(4);
    outputs.clear();
    EXPECT_EQ(outputs.take(5).size(), 0u);
}

TEST(RecorderTest, OutputsOfARequestThatTheIspDoesNotTakeAreNotHeld) {
    auto const firstFree = [] {
        int const descriptor = dup(STDERR_FILENO);
        close(descriptor);
        return descriptor;
    };
    int error = 0;
    std::string const file = testing::TempDir() + "not_taken.rec";
    android::sp<StandInDevice> const isp = new StandInDevice;
    android::sp<isphal::IDevice> const device = new recorder::RecordedIspDevice(
            recorder::Recorder::start(file.c_str(), recorder::Pictures::Hashes, error), 1, isp);
    hidl_vec<isphal::ISPRequest> requests(1);
    requests[0].outputBuffers.resize(1);
    native_handle_t* const output = native_handle_create(1, 0);
    output->data[0] = open("/dev/null", O_RDWR);
    requests[0].outputBuffers[0].buffer.setTo(output, true);
    auto const refused = [] { return StandInDevice::StatusReturn(isphal::Status::REQUEST_ERROR); };
    for (std::function<StandInDevice::StatusReturn()> const& answer :
         {std::function(refused), std::function(&StandInDevice::transportError)}) {
        isp->onProcess = [&](auto const&) { return answer(); };
        int const before = firstFree();
        (void)device->processISPRequest(requests).isOk();
        isp->requests.clear();
        EXPECT_EQ(firstFree(), before);
    }
    unlink(file.c_str());
}

TEST(LookaheadTest, FindsTheRequestThatAConfigurationWaitedFor) {
    replay::Recording recording;
    recording.crossings.resize(4);
    recording.crossings[0].mutable_isp_call()->add_requests()->set_number(3);
    recording.crossings[1].mutable_isp_call()->add_requests()->set_number(4);
    recording.crossings[2].mutable_result_call()->set_number(3);
    for (recording::Crossing& crossing : recording.crossings) {
        crossing.set_session(2);
    }
    replay::RecordedOrder const order(recording, 1);
    EXPECT_EQ(replay::findOutstanding(order, 2, 3), 3u);
    EXPECT_EQ(replay::findOutstanding(order, 3, 3), std::nullopt);
    EXPECT_EQ(replay::findOutstanding(order, 0, 3), std::nullopt);
    for (uint32_t const other : {1, 3}) {
        recording.crossings[3].set_session(other);
        EXPECT_EQ(replay::findOutstanding(order, 2, 3), std::nullopt);
    }
}
