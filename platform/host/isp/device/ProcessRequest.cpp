#include "host/isp/device/ProcessRequest.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "host/isp/develop/Develop.h"
#include "host/isp/develop/Resample.h"
#include "host/isp/device/Thumbnail.h"
#include "host/isp/jpeg/Exif.h"
#include "host/isp/jpeg/JpegEncode.h"

using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace quen::host::isp {

namespace {

constexpr int kDefaultJpegQuality = 95;

/** The last bytes of a JPEG's buffer; they state the size of the file. */
struct BlobTrailer {
    uint16_t id;
    uint16_t padding;
    uint32_t size;
};

constexpr uint16_t kJpegBlob = 0x00ff;
static_assert(sizeof(BlobTrailer) == 8, "the trailer is eight bytes");

/** Measures a leg of a request, from construction to destruction, and appends it to a report. */
class LegTimer {
  public:
    LegTimer(IspReport& report, char const* name)
        : mReport(report), mName(name), mStart(std::chrono::steady_clock::now()) {}
    ~LegTimer() {
        auto const time = std::chrono::steady_clock::now() - mStart;
        mReport.legs.push_back(
                {mName, std::chrono::duration_cast<std::chrono::microseconds>(time), mStart});
    }

    LegTimer(LegTimer const&) = delete;
    LegTimer& operator=(LegTimer const&) = delete;

  private:
    IspReport& mReport;
    char const* const mName;
    std::chrono::steady_clock::time_point const mStart;
};

/** Locks every buffer of a request. @return false when one cannot be locked */
bool lockAll(Request& request) {
    return request.input.buffer.lock() != nullptr &&
           std::all_of(request.outputs.begin(), request.outputs.end(),
                       [](RequestImage& output) { return output.buffer.lock() != nullptr; });
}

/** The picture in a locked 4:2:0 buffer. */
YuvPicture pictureOf(RequestImage& image) {
    return pictureAt(image.yuv, image.buffer.lock(), image.stream.width, image.stream.height);
}

/** Writes the trailer of a JPEG's buffer; 0 bytes for no file. */
void writeTrailer(RequestImage& output, size_t jpegBytes) {
    uint8_t* const address = output.buffer.lock();
    if (address == nullptr) {
        return;
    }
    BlobTrailer const trailer{kJpegBlob, 0, static_cast<uint32_t>(jpegBytes)};
    memcpy(address + output.blockBytes - sizeof(trailer), &trailer, sizeof(trailer));
}

/** Reads the sensor calibration beside the input, and sets the header of the outputs'. */
Status readCalibration(Request& request, IspReport& report) {
    CalibrationHeader& header = report.calibrationHeader;
    if (!request.input.calibration.read(header, report.calibrationState, report.calibration)) {
        report.problem = "the tuning data cannot be read";
        return Status::RESOURCE_ERROR;
    }
    // Without a calibration the bytes of the header are undefined.
    int32_t const number = static_cast<int32_t>(request.number);
    header.frameNumber =
            report.calibrationState == CalibrationState::Present ? header.frameNumber : number;
    header.requestNo = number;
    header.totalUsedBytes = static_cast<int32_t>(kCalibrationUsedBytes);
    // Only developing uses the calibration.
    if (report.isRaw && report.calibrationState == CalibrationState::Malformed) {
        report.problem = "the calibration in the tuning data is malformed";
        return Status::ILLEGAL_ARGUMENT;
    }
    return Status::OK;
}

/** Writes header and calibration to the tuning buffers of the outputs. */
void writeCalibration(Request& request, IspReport& report) {
    for (RequestImage& output : request.outputs) {
        if (output.calibration.isThere() &&
            output.calibration.write(report.calibrationHeader, report.calibration)) {
            report.hasCalibrationHeader = true;
        }
    }
}

/** The first 4:2:0 output of that size; null when there is none. */
RequestImage* findOutput(Request& request, int width, int height) {
    auto const found = std::find_if(
            request.outputs.begin(), request.outputs.end(), [&](RequestImage const& output) {
                return output.stream.kind == StreamKind::Yuv && output.stream.width == width &&
                       output.stream.height == height;
            });
    return found == request.outputs.end() ? nullptr : &*found;
}

/** Develops the raw input. */
void developInto(Request& request, IspReport& report, YuvPicture const& target) {
    LegTimer const timer(report, "develop");
    RequestImage& input = request.input;
    RawPicture raw;
    raw.width = input.stream.width;
    raw.height = input.stream.height;
    raw.data = input.buffer.lock() + input.raw.offset;
    raw.stride = input.raw.stride;
    raw.layout = input.stream.rawLayout;
    raw.bits = request.rawBits;
    develop(raw, request.crop, report.calibration, target);
}

/** Encodes a picture into a JPEG output, scaled to its size where it differs. */
Status encodeInto(Request const& request, IspReport& report, YuvPicture const& picture,
                  RequestImage& output) {
    std::optional<OwnedYuvPicture> scaled;
    Stream const& stream = output.stream;
    if (picture.width != stream.width || picture.height != stream.height) {
        LegTimer const timer(report, "scale");
        scaled.emplace(stream.width, stream.height);
        resample(picture, scaled->view());
    }
    LegTimer const timer(report, "encode");
    RequestSettings const& sessionSettings = request.configuration->settings;
    YuvPicture const& source = scaled ? scaled->view() : picture;
    PictureFacts exif;
    exif.width = stream.width;
    exif.height = stream.height;
    exif.orientationDegrees =
            request.settings.jpegOrientation.value_or(sessionSettings.jpegOrientation.value_or(0));
    exif.thumbnail = makeThumbnail(source);
    int const quality = request.settings.jpegQuality.value_or(
            sessionSettings.jpegQuality.value_or(kDefaultJpegQuality));
    size_t const size = encodeJpeg(source, quality, buildExif(std::move(exif)),
                                   output.buffer.lock(), output.blockBytes - sizeof(BlobTrailer));
    writeTrailer(output, size);
    if (size == 0) {
        report.problem = "the JPEG does not fit into its buffer, or cannot be encoded";
        return Status::RESULT_ERROR;
    }
    return Status::OK;
}

/**
 * Writes every output but `done`, which holds the picture already.
 *
 * @return OK, or the first failure
 */
Status writeOutputs(Request& request, IspReport& report, YuvPicture const& picture,
                    RequestImage const* done) {
    Status status = Status::OK;
    for (RequestImage& output : request.outputs) {
        Status written = Status::OK;
        if (output.stream.kind == StreamKind::Jpeg) {
            written = encodeInto(request, report, picture, output);
        } else if (&output != done) {
            LegTimer const timer(report, "scale");
            resample(picture, pictureOf(output));
        }
        status = status == Status::OK ? written : status;
    }
    return status;
}

/** Develops into the first output of the picture's size, or into memory of its own. */
Status makeFromRaw(Request& request, IspReport& report) {
    int const width = request.crop.width;
    int const height = request.crop.height;
    RequestImage* const direct = findOutput(request, width, height);
    std::optional<OwnedYuvPicture> between;
    if (direct == nullptr) {
        between.emplace(width, height);
    }
    YuvPicture const picture = direct != nullptr ? pictureOf(*direct) : between->view();
    developInto(request, report, picture);
    return writeOutputs(request, report, picture, direct);
}

/** Executes a request; may throw. */
Status process(Request& request, IspReport& report) {
    if (!lockAll(request)) {
        report.problem = "a buffer cannot be locked";
        return Status::RESOURCE_ERROR;
    }
    for (RequestImage& output : request.outputs) {
        if (output.stream.kind == StreamKind::Jpeg) {
            writeTrailer(output, 0);  // there is no file if a later step fails
        }
    }
    report.crop = request.crop;
    report.isRaw = request.input.stream.kind == StreamKind::Raw;
    report.rawBits = report.isRaw ? request.rawBits : 0;
    Status status = readCalibration(request, report);
    if (status == Status::OK) {
        status = report.isRaw
                         ? makeFromRaw(request, report)
                         : writeOutputs(request, report,
                                        cropped(pictureOf(request.input), request.crop), nullptr);
    }
    if (status == Status::OK) {
        writeCalibration(request, report);
    }
    return status;
}

}  // namespace

Status processRequest(Request& request, IspReport& report) {
    try {
        return process(request, report);
    } catch (std::bad_alloc const&) {
        report.problem = "memory has run out";
        return Status::RESOURCE_ERROR;
    } catch (std::exception const& error) {
        report.problem = error.what();
        return Status::INTERNAL_ERROR;
    }
}

}  // namespace quen::host::isp
