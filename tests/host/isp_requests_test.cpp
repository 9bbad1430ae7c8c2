// Requests to the software ISP and what comes of them, as a script.

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <mtkcam/isp_metadata.h>

#include "host/IspTest.h"
#include "host/LogLines.h"
#include "host/isp/buffers/SensorCalibration.h"
#include "host/isp/exif/ExifModule.h"
#include "host/metadata/MetadataText.h"
#include "support/Golden.h"

namespace {

using namespace quentest;

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
//   session, set TAG TYPE NUMBER...    a setting of it or of a request; 0 bytes, 1 int32
//   configure, submit
//   input FORMAT WIDTH HEIGHT [WORD...]    begins a request, with a picture of cells of 2 x 2
//       samples, of pixels of RGB, or of one byte
//   output FORMAT WIDTH HEIGHT    a buffer for the next output
//   tuning WHITE MAGIC    tuning data beside the input and the outputs
// Samples are told in steps of eight. The file was looked through: colours by BT.601, sizes and
// settings by the lines above them.
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
        ISPRequest request = quentest::request(11, buffers[0]->raw, targets);
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

    // A JPEG's trailer, sides, first figure of its table, turn and the sides that its EXIF states;
    // or samples of a picture.
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
                size_t const at = file.find(std::string("\x02\xa0\x04\0\x01\0\0\0", 8));
                text << ", EXIF " << +file.at(at + 8) << 'x' << +file.at(at + 20);
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
    LogLines log;  // the observer is told the same
    for (std::string const& line : goldenLines("isp_requests")) {
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
    expectGolden("isp_requests", lines);
}

}  // namespace
