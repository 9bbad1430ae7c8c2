#include "buffers/ThreeABuffer.h"

#include <sys/mman.h>

#include <quen/Quen3AInfoManager.h>

#include "support/Failure.h"

namespace quen::reprocess {
namespace {

using host::isp::kCalibrationBufferBytes;

/** A 3A buffer's mapping; null data when it could not be mapped. */
struct Mapping {
    explicit Mapping(int fd)
        : data(::mmap(nullptr, kCalibrationBufferBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd,
                      0)) {
        if (data == MAP_FAILED) {
            data = nullptr;
        }
    }
    ~Mapping() {
        if (data) {
            ::munmap(data, kCalibrationBufferBytes);
        }
    }
    Mapping(Mapping const&) = delete;
    Mapping& operator=(Mapping const&) = delete;

    void* data;
};

}  // namespace

int32_t publishCalibration(SensorCalibration const& calibration, int32_t frameNumber) {
    QIF3ABufferInfo info;
    if (Quen3AInfoManager::Get3AInfoBuf(&info, kCalibrationBufferBytes) != 0) {
        throw Failure("cannot be developed: there is no 3A buffer for its tuning data");
    }
    Mapping const mapping(info.fd);
    if (!mapping.data) {
        throw Failure("cannot be developed: its 3A buffer cannot be mapped");
    }
    host::isp::CalibrationHeader header;
    header.requestNo = frameNumber;
    header.frameNumber = frameNumber;
    host::isp::encodeCalibration(header, calibration, mapping.data, kCalibrationBufferBytes);
    return info.bufferIndex;
}

std::optional<StoredCalibration> readCalibration(int32_t index) {
    int fd = -1;
    if (index < 0 || Quen3AInfoManager::GetTuningData(&fd, static_cast<unsigned int>(index)) != 0 ||
        fd < 0) {
        return std::nullopt;
    }
    Mapping const mapping(fd);
    if (!mapping.data) {
        return std::nullopt;
    }
    StoredCalibration report;
    report.header = host::isp::decodeCalibrationHeader(mapping.data, kCalibrationBufferBytes);
    SensorCalibration calibration;
    if (host::isp::decodeCalibration(mapping.data, kCalibrationBufferBytes, calibration) ==
        host::isp::CalibrationState::Present) {
        report.calibration = calibration;
    }
    return report;
}

}  // namespace quen::reprocess
