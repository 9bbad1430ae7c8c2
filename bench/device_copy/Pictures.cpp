#include "device_copy/Pictures.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <quenGralloc/AllocatorHelper.h>

#include "host/gralloc/BufferHandle.h"

using android::hardware::Void;
using android::hardware::graphics::common::V1_0::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;

namespace quenbench {

namespace {

[[noreturn]] void fail(char const* what) {
    perror(what);
    exit(EXIT_FAILURE);
}

}  // namespace

ClientPicture::ClientPicture(PictureSize const& size) : mBytes(size.bytes()) {
    int const memory = memfd_create("client", MFD_CLOEXEC);
    if (memory < 0 || ftruncate(memory, static_cast<off_t>(mBytes)) != 0) {
        fail("client picture");
    }
    void* const address = mmap(nullptr, mBytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
    close(memory);
    if (address == MAP_FAILED) {
        fail("client picture");
    }
    mData = static_cast<uint8_t*>(address);
    for (size_t i = 0; i < mBytes; ++i) {
        mData[i] = static_cast<uint8_t>(i * 31 >> 3);
    }
}

ClientPicture::~ClientPicture() {
    munmap(mData, mBytes);
}

class Graphics::Mapper : public IMapper {
  public:
    explicit Mapper(Graphics& graphics) : mGraphics(graphics) {}

    Return<void> createDescriptor(BufferDescriptorInfo const& info,
                                  createDescriptor_cb cb) override {
        return host().createDescriptor(info, cb);
    }
    Return<void> importBuffer(hidl_handle const& handle, importBuffer_cb cb) override {
        if (mGraphics.mPresent == nullptr) {
            return host().importBuffer(handle, cb);
        }
        cb(Error::NONE, mGraphics.mPresent->imported);
        return Void();
    }
    Return<Error> freeBuffer(void* buffer) override {
        return mGraphics.mPresent == nullptr ? host().freeBuffer(buffer)
                                             : Return<Error>(Error::NONE);
    }
    Return<void> lock(void* buffer, uint64_t usage, Rect const& region, hidl_handle const& fence,
                      lock_cb cb) override {
        if (mGraphics.mPresent == nullptr) {
            return host().lock(buffer, usage, region, fence, cb);
        }
        cb(Error::NONE, mGraphics.mPresent->data);
        mGraphics.mLocked = Clock::now();
        return Void();
    }
    Return<void> unlock(void* buffer, unlock_cb cb) override {
        if (mGraphics.mPresent == nullptr) {
            return host().unlock(buffer, cb);
        }
        mGraphics.mUnlocked = Clock::now();
        cb(Error::NONE, hidl_handle());
        return Void();
    }
    Return<void> get(void* buffer, MetadataType const& type, get_cb cb) override {
        return host().get(buffer, type, cb);
    }

    // The copy asks for none of these.
    Return<Error> validateBufferSize(void* buffer, BufferDescriptorInfo const& info,
                                     uint32_t stride) override {
        return host().validateBufferSize(buffer, info, stride);
    }
    Return<void> getTransportSize(void* buffer, getTransportSize_cb cb) override {
        return host().getTransportSize(buffer, cb);
    }
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb cb) override {
        return host().flushLockedBuffer(buffer, cb);
    }
    Return<Error> rereadLockedBuffer(void* buffer) override {
        return host().rereadLockedBuffer(buffer);
    }
    Return<void> isSupported(BufferDescriptorInfo const& info, isSupported_cb cb) override {
        return host().isSupported(info, cb);
    }
    Return<Error> set(void* buffer, MetadataType const& type,
                      hidl_vec<uint8_t> const& value) override {
        return host().set(buffer, type, value);
    }
    Return<void> getFromBufferDescriptorInfo(BufferDescriptorInfo const& info,
                                             MetadataType const& type,
                                             getFromBufferDescriptorInfo_cb cb) override {
        return host().getFromBufferDescriptorInfo(info, type, cb);
    }
    Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb cb) override {
        return host().listSupportedMetadataTypes(cb);
    }
    Return<void> dumpBuffer(void* buffer, dumpBuffer_cb cb) override {
        return host().dumpBuffer(buffer, cb);
    }
    Return<void> dumpBuffers(dumpBuffers_cb cb) override { return host().dumpBuffers(cb); }
    Return<void> getReservedRegion(void* buffer, getReservedRegion_cb cb) override {
        return host().getReservedRegion(buffer, cb);
    }

  private:
    IMapper& host() { return *mGraphics.mHost.mapper; }

    Graphics& mGraphics;
};

class Graphics::Allocator : public IAllocator {
  public:
    explicit Allocator(Graphics& graphics) : mGraphics(graphics) {}

    Return<void> allocate(hidl_vec<uint8_t> const& wanted, uint32_t count,
                          allocate_cb cb) override {
        if (mGraphics.mPresent == nullptr) {
            return mGraphics.mHost.allocator->allocate(wanted, count, cb);
        }
        hidl_handle handle(mGraphics.mPresent->raw.getNativeHandle());
        hidl_vec<hidl_handle> buffers;
        buffers.setToExternal(&handle, 1);
        cb(Error::NONE, static_cast<uint32_t>(mGraphics.mPresent->rowBytes), buffers);
        return Void();
    }

  private:
    Graphics& mGraphics;
};

Graphics::Graphics() : mHost(quen::host::registerGraphicsServices()) {
    android::sp<IMapper> const mapper = new Mapper(*this);
    android::sp<IAllocator> const allocator = new Allocator(*this);
    if (mapper->registerAsService() != 0 || allocator->registerAsService() != 0) {
        fail("graphics services");
    }
}

Graphics& Graphics::get() {
    static auto* const graphics = new Graphics;
    return *graphics;
}

void Graphics::setLayout(quen::host::Layout layout) {
    mHost.allocator->setLayout(quen::host::MemfdAllocator::PixelFormat::YCRCB_420_SP, layout);
}

DeviceBuffer Graphics::touchedBuffer(PictureSize const& size, quen::host::Layout layout) {
    DeviceBuffer buffer;
    setLayout(layout);
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height), kDeviceUsage,
            PixelFormat::YCRCB_420_SP, &buffer.raw, nullptr);
    (void)mHost.mapper
            ->importBuffer(buffer.raw, [&](Error, void* imported) { buffer.imported = imported; })
            .isOk();
    (void)mHost.mapper
            ->lock(buffer.imported, kCpuUsage, {0, 0, size.width, size.height}, hidl_handle(),
                   [&](Error, void* data) { buffer.data = static_cast<uint8_t*>(data); })
            .isOk();
    auto const description = quen::host::readBufferHandle(buffer.raw.getNativeHandle());
    if (buffer.data == nullptr || !description) {
        fail("device buffer");
    }
    buffer.rowBytes = description->facts.extent.rowBytes;
    memset(buffer.data, 0xEE, description->facts.extent.sizeInBytes);
    return buffer;
}

void Graphics::release(DeviceBuffer& buffer) {
    (void)mHost.mapper->unlock(buffer.imported, [](Error, hidl_handle const&) {}).isOk();
    (void)mHost.mapper->freeBuffer(buffer.imported).isOk();
    buffer.raw = hidl_handle();
}

}  // namespace quenbench
