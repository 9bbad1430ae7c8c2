#include "device_copy/DeviceCopy.h"

#include <libyuv.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>

#include <quenGralloc/AllocatorHelper.h>
#include <quenGralloc/MapperHelper.h>
#include <quenOfflineDevice/request/DeviceBuffer.h>

#include "device_copy/Pictures.h"
#include "support/Table.h"

using android::hardware::graphics::common::V1_0::PixelFormat;
using quen::host::Layout;

namespace quenbench {

namespace {

constexpr PictureSize kSizes[] = {{"2MP", 1920, 1080},   {"8MP", 3264, 2448},  {"12MP", 4000, 3000},
                                  {"16MP", 4608, 3456},  {"24MP", 6000, 4000}, {"50MP", 8160, 6120},
                                  {"108MP", 12000, 9000}};
constexpr ChromaLayout kLayouts[] = {
        {"NV21", Layout::Nv21}, {"NV12", Layout::Nv12}, {"planar", Layout::I420}};

constexpr uint64_t kCpuWrite = 0x30;

std::string caseName(char const* group, PictureSize const& size, ChromaLayout const& layout,
                     char const* who) {
    return std::string(group) + '/' + size.name + '/' + layout.name + '/' + who;
}

/** The picture of a size and the touched buffer of a layout, created once and kept. */
struct Stage {
    std::shared_ptr<ClientPicture const> source;
    DeviceBuffer target;
    android_ycbcr planes;
};

Stage const& stageOf(PictureSize const& size, ChromaLayout const& layout) {
    static std::map<std::string, std::shared_ptr<ClientPicture const>> sources;
    static std::map<std::string, Stage> stages;
    auto& source = sources[size.name];
    if (source == nullptr) {
        source = std::make_shared<ClientPicture const>(size);
    }
    auto const [place, isNew] = stages.try_emplace(caseName("", size, layout, ""));
    Stage& stage = place->second;
    if (isNew) {
        Graphics& graphics = Graphics::get();
        stage.source = source;
        stage.target = graphics.touchedBuffer(size, layout.layout);
        graphics.present(&stage.target);
        MapperHelper::getInstance().lockYCbCr_4_0(
                static_cast<native_handle const*>(stage.target.imported), kCpuWrite,
                {0, 0, size.width, size.height}, -1, stage.planes);
        graphics.present(nullptr);
    }
    return stage;
}

/** The obvious alternative, libyuv; it does not clear the padding of rows. */
void copyWithLibyuv(Stage const& stage, PictureSize const& size, Layout layout) {
    uint8_t const* const source = stage.source->data();
    int const width = size.width;
    int const height = size.height;
    int const half = width / 2;
    size_t const luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    auto* const y = static_cast<uint8_t*>(stage.planes.y);
    auto* const cb = static_cast<uint8_t*>(stage.planes.cb);
    auto* const cr = static_cast<uint8_t*>(stage.planes.cr);
    int const yStride = static_cast<int>(stage.planes.ystride);
    int const cStride = static_cast<int>(stage.planes.cstride);
    switch (layout) {
        case Layout::Nv21:
            libyuv::NV21Copy(source, width, source + luma, width, y, yStride, cr, cStride, width,
                             height);
            break;
        case Layout::Nv12:
            libyuv::CopyPlane(source, width, y, yStride, width, height);
            libyuv::SwapUVPlane(source + luma, width, cb, cStride, half, height / 2);
            break;
        default:
            libyuv::I420Copy(source, width, source + luma, half, source + luma + luma / 4, half, y,
                             yStride, cb, cStride, cr, cStride, width, height);
    }
}

void addTouched(Cases& cases, PictureSize const& size, ChromaLayout const& layout) {
    auto const add = [&](char const* who, auto const& copy) {
        cases.push_back({caseName("copy", size, layout, who), 1, &size == kSizes,  // the smallest

                         caseName("copy", size, layout, ""), [=] {
                             Stage const& stage = stageOf(size, layout);
                             return [=, &stage] { return copy(stage); };
                         }});
    };
    add("ours", [size](Stage const& stage) {
        Graphics& graphics = Graphics::get();
        hidl_handle handle;
        graphics.present(&stage.target);
        uint32_t stride = 0;
        measured([&] {
            quen::allocGraphicBuffer(handle, stage.source->data(), size.width, size.height,
                                     kNv21Format, kDeviceUsage, stride);
        });
        graphics.present(nullptr);
        return graphics.secondsLocked();
    });
    add("memcpy", [size](Stage const& stage) {
        return measured([&] { memcpy(stage.target.data, stage.source->data(), size.bytes()); });
    });
    add("libyuv", [size, layout](Stage const& stage) {
        return measured([&] { copyWithLibyuv(stage, size, layout.layout); });
    });
}

/** The calls that the library makes to fill a buffer, with one memcpy of the picture. */
void fillFreshBuffer(hidl_handle& handle, PictureSize const& size, void const* source) {
    AllocatorHelper::getInstance().allocateGraphicBuffer(
            static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height), kDeviceUsage,
            PixelFormat::YCRCB_420_SP, &handle, nullptr);
    native_handle const* imported = handle.getNativeHandle();
    MapperHelper mapper = MapperHelper::getInstance();
    mapper.importBuffer(imported);
    android_ycbcr planes = {};
    mapper.lockYCbCr_4_0(imported, kCpuWrite, {0, 0, size.width, size.height}, -1, planes);
    memcpy(planes.y, source, size.bytes());
    int releaseFence = -1;
    mapper.unlock(imported, releaseFence);
    mapper.freeBuffer(imported);
}

void addFresh(Cases& cases, PictureSize const& size, ChromaLayout const& layout) {
    auto const add = [&](char const* who, auto const& fill) {
        cases.push_back({caseName("fresh", size, layout, who), 1, false,
                         caseName("fresh", size, layout, ""), [=] {
                             Stage const& stage = stageOf(size, layout);
                             return [=, &stage] {
                                 Graphics::get().setLayout(layout.layout);
                                 // Freeing is part of the cost of a buffer.
                                 return measured([&] {
                                     hidl_handle handle;
                                     fill(handle, stage.source->data());
                                 });
                             };
                         }});
    };
    add("ours", [size](hidl_handle& handle, void const* source) {
        uint32_t stride = 0;
        quen::allocGraphicBuffer(handle, source, size.width, size.height, kNv21Format, kDeviceUsage,
                                 stride);
    });
    add("memcpy",
        [size](hidl_handle& handle, void const* source) { fillFreshBuffer(handle, size, source); });
}

std::string workText(PictureSize const& size, ChromaLayout const& layout) {
    size_t const row = (static_cast<size_t>(size.width) + 63) / 64 * 64;
    return std::string(size.name) + ", " + std::to_string(size.width) + 'x' +
           std::to_string(size.height) + ", rows of " + std::to_string(row) + ", " + layout.name;
}

}  // namespace

void addDeviceCopyCases(Cases& cases) {
    for (PictureSize const& size : kSizes) {
        for (ChromaLayout const& layout : kLayouts) {
            addTouched(cases, size, layout);
            addFresh(cases, size, layout);
        }
    }
}

void printDeviceCopyRows(std::ostream& out, Figures const& figures) {
    auto const print = [&](char const* group, char const* what, PictureSize const& size,
                           ChromaLayout const& layout, char const* peer, Goal goal) {
        double const ours = figures.seconds(caseName(group, size, layout, "ours"));
        double const other = figures.seconds(caseName(group, size, layout, peer));
        if (ours > 0 && other > 0) {
            printRow(out, {what, workText(size, layout), timeText(ours),
                           std::string(peer) + ' ' + timeText(other), ours / other, goal});
        }
    };
    for (PictureSize const& size : kSizes) {
        for (ChromaLayout const& layout : kLayouts) {
            bool const isPlanar = layout.layout == Layout::I420;
            print("copy", "device copy, touched memory", size, layout, "memcpy",
                  Goal::atMost(isPlanar ? 1.15 : 1.05));
            print("copy", "  against libyuv", size, layout, "libyuv", Goal::atMost(1.05));
        }
    }
    for (PictureSize const& size : kSizes) {
        for (ChromaLayout const& layout : kLayouts) {
            print("fresh", "device copy, fresh buffer, all calls", size, layout, "memcpy",
                  Goal::atMost(1.1));
        }
    }
}

}  // namespace quenbench
