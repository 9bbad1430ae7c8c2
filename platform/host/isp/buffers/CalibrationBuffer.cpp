#include "host/isp/buffers/CalibrationBuffer.h"

#include <cutils/native_handle.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "host/isp/buffers/SampleLayout.h"

namespace quen::host::isp {

namespace {

constexpr int kDescriptorFormFds = 1;
constexpr int kDescriptorFormInts = 2;
constexpr int kDescriptorSlot = 1;  // the first integer
constexpr int kLowestDuplicate = 3;

// Only the start of the buffer is read or written.
constexpr size_t kMappedBytes = 4096;
static_assert(kCalibrationUsedBytes <= kMappedBytes, "the calibration lies in what is mapped");

}  // namespace

CalibrationBuffer::CalibrationBuffer(CalibrationBuffer&& other) noexcept
    : mGraphic(std::move(other.mGraphic)), mDescriptor(std::exchange(other.mDescriptor, -1)) {}

CalibrationBuffer& CalibrationBuffer::operator=(CalibrationBuffer&& other) noexcept {
    if (this != &other) {
        closeDescriptor();
        mGraphic = std::move(other.mGraphic);
        mDescriptor = std::exchange(other.mDescriptor, -1);
    }
    return *this;
}

CalibrationBuffer::~CalibrationBuffer() {
    closeDescriptor();
}

CalibrationBuffer::Status CalibrationBuffer::open(android::sp<GraphicBuffer::IMapper> const& mapper,
                                                  native_handle_t const* handle) {
    if (handle == nullptr) {
        return Status::OK;
    }
    if (handle->numFds == kDescriptorFormFds && handle->numInts == kDescriptorFormInts) {
        return openDescriptor(handle->data[kDescriptorSlot]);
    }
    Status const status = mGraphic.import(mapper, handle);
    if (status == Status::OK && findBlock(mGraphic).value_or(0) < kCalibrationBufferBytes) {
        return Status::ILLEGAL_ARGUMENT;
    }
    return status;
}

CalibrationBuffer::Status CalibrationBuffer::openDescriptor(int descriptor) {
    struct stat info = {};
    if (fstat(descriptor, &info) != 0 ||
        info.st_size < static_cast<off_t>(kCalibrationBufferBytes)) {
        return Status::ILLEGAL_ARGUMENT;
    }
    mDescriptor = fcntl(descriptor, F_DUPFD_CLOEXEC, kLowestDuplicate);
    return mDescriptor >= 0 ? Status::OK : Status::RESOURCE_ERROR;
}

/** Address of the start of the buffer; null when there is none, or it cannot be mapped. */
uint8_t* CalibrationBuffer::map() {
    if (mDescriptor < 0) {
        return mGraphic.lock();
    }
    void* const address =
            mmap(nullptr, kMappedBytes, PROT_READ | PROT_WRITE, MAP_SHARED, mDescriptor, 0);
    return address == MAP_FAILED ? nullptr : static_cast<uint8_t*>(address);
}

void CalibrationBuffer::unmap(uint8_t* address) {
    if (mDescriptor < 0) {
        mGraphic.unlock();
    } else {
        munmap(address, kMappedBytes);
    }
}

bool CalibrationBuffer::read(CalibrationHeader& header, CalibrationState& state,
                             SensorCalibration& calibration) {
    state = CalibrationState::Absent;
    if (!isThere()) {
        return true;
    }
    uint8_t* const address = map();
    if (address == nullptr) {
        return false;
    }
    header = decodeCalibrationHeader(address, kMappedBytes);
    state = decodeCalibration(address, kMappedBytes, calibration);
    unmap(address);
    return true;
}

bool CalibrationBuffer::write(CalibrationHeader const& header,
                              SensorCalibration const& calibration) {
    uint8_t* const address = map();
    if (address == nullptr) {
        return false;
    }
    encodeCalibration(header, calibration, address, kMappedBytes);
    unmap(address);
    return true;
}

void CalibrationBuffer::closeDescriptor() {
    if (mDescriptor >= 0) {
        close(std::exchange(mDescriptor, -1));
    }
}

}  // namespace quen::host::isp
