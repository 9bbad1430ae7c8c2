#include "host/gralloc/BufferLayout.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <gralloctypes/Gralloc4.h>

using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using android::hardware::graphics::common::V1_2::PixelFormat;
using Component = aidl::android::hardware::graphics::common::PlaneLayoutComponentType;

namespace quen::host {

namespace {

struct ComponentRule {
    Component type;
    uint32_t offsetInBits;
    int32_t bits;  // 0 ends a list; kPacked where samples do not begin at whole steps
};

constexpr int32_t kPacked = -1;

struct PlaneRule {
    uint32_t subsampling;  // pixels to a sample, either way; 0 ends a list
    uint32_t sampleBits;
    ComponentRule components[4];
};

struct LayoutRule {
    uint32_t rowAlignment;  // bytes
    uint32_t groupPixels;   // that are packed together
    PlaneRule planes[3];
};

constexpr PlaneRule kLuma = {1, 8, {{Component::Y, 0, 8}}};
constexpr PlaneRule kCb = {2, 8, {{Component::CB, 0, 8}}};
constexpr PlaneRule kCr = {2, 8, {{Component::CR, 0, 8}}};
constexpr PlaneRule kCbCr = {2, 16, {{Component::CB, 0, 8}, {Component::CR, 8, 8}}};
constexpr PlaneRule kCrCb = {2, 16, {{Component::CR, 0, 8}, {Component::CB, 8, 8}}};
constexpr PlaneRule kRgba = {
        1,
        32,
        {{Component::R, 0, 8}, {Component::G, 8, 8}, {Component::B, 16, 8}, {Component::A, 24, 8}}};

// In the order of Layout.
constexpr LayoutRule kRules[] = {
        {1, 1, {{1, 8, {{Component::RAW, 0, 8}}}}},
        {kRowAlignment, 4, {{1, 10, {{Component::RAW, 0, kPacked}}}}},
        {kRowAlignment, 2, {{1, 12, {{Component::RAW, 0, kPacked}}}}},
        {kRowAlignment, 1, {{1, 16, {{Component::RAW, 0, 16}}}}},
        {kRowAlignment, 1, {kRgba}},
        {kRowAlignment, 1, {kLuma, kCbCr}},
        {kRowAlignment, 1, {kLuma, kCrCb}},
        {kRowAlignment, 1, {kLuma, kCb, kCr}},
        {kRowAlignment, 1, {kLuma, kCr, kCb}},
};
static_assert(std::size(kRules) == static_cast<size_t>(Layout::Yv12) + 1, "a rule a layout");

struct FormatRule {
    PixelFormat format;
    Layout layout;
};

constexpr FormatRule kFormats[] = {
        {PixelFormat::RGBA_8888, Layout::Rgba8888},
        {PixelFormat::YCRCB_420_SP, Layout::Nv21},
        {PixelFormat::RAW16, Layout::Raw16},
        {PixelFormat::BLOB, Layout::Blob},
        {PixelFormat::IMPLEMENTATION_DEFINED, Layout::Nv12},
        {PixelFormat::YCBCR_420_888, Layout::Nv21},
        {PixelFormat::RAW10, Layout::Raw10},
        {PixelFormat::RAW12, Layout::Raw12},
        {PixelFormat::YV12, Layout::Yv12},
};

LayoutRule const& ruleOf(Layout layout) {
    return kRules[static_cast<size_t>(layout)];
}

constexpr uint64_t divideUp(uint64_t value, uint64_t divisor) {
    return (value + divisor - 1) / divisor;
}

constexpr uint64_t alignUp(uint64_t value, uint64_t alignment) {
    return divideUp(value, alignment) * alignment;
}

uint64_t rowBytesOf(LayoutRule const& rule, uint32_t width) {
    uint64_t const pixels = alignUp(width, rule.groupPixels);
    return alignUp(divideUp(pixels * rule.planes[0].sampleBits, 8), rule.rowAlignment);
}

/** Bytes per row of a plane of a picture whose first plane has rows of `rowBytes`. */
uint64_t strideOf(LayoutRule const& rule, PlaneRule const& plane, uint64_t rowBytes) {
    return rowBytes * plane.sampleBits / (uint64_t{rule.planes[0].sampleBits} * plane.subsampling);
}

PlaneLayoutComponent componentOf(ComponentRule const& rule) {
    PlaneLayoutComponent result;
    result.type = android::gralloc4::details::standardComponent(rule.type);
    result.offsetInBits = rule.offsetInBits;
    result.sizeInBits = rule.bits;
    return result;
}

}  // namespace

std::optional<Layout> usualLayout(PixelFormat format) {
    auto const found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [&](FormatRule const& rule) { return rule.format == format; });
    return found == std::end(kFormats) ? std::nullopt : std::make_optional(found->layout);
}

bool isYuv420(Layout layout) {
    return ruleOf(layout).planes[0].components[0].type == Component::Y;
}

std::optional<BufferExtent> extentOf(Layout layout, uint32_t width, uint32_t height) {
    LayoutRule const& rule = ruleOf(layout);
    uint64_t const rowBytes = rowBytesOf(rule, width);
    if (width == 0 || height == 0 || rowBytes > kLargestBuffer) {
        return std::nullopt;
    }
    // Rows and height stay below 2^31 and 2^32: no sum of three planes overflows.
    uint64_t size = 0;
    for (PlaneRule const& plane : rule.planes) {
        if (plane.subsampling == 0) {
            break;
        }
        size += strideOf(rule, plane, rowBytes) * divideUp(height, plane.subsampling);
    }
    if (size > kLargestBuffer) {
        return std::nullopt;
    }
    return BufferExtent{static_cast<uint32_t>(rowBytes),
                        static_cast<uint32_t>(rowBytes * 8 / rule.planes[0].sampleBits), size};
}

std::vector<PlaneLayout> planesOf(Layout layout, uint32_t width, uint32_t height) {
    LayoutRule const& rule = ruleOf(layout);
    uint64_t const rowBytes = rowBytesOf(rule, width);
    std::vector<PlaneLayout> planes;
    planes.reserve(std::size(rule.planes));
    int64_t offset = 0;
    for (PlaneRule const& planeRule : rule.planes) {
        if (planeRule.subsampling == 0) {
            break;
        }
        PlaneLayout& plane = planes.emplace_back();
        plane.offsetInBytes = offset;
        bool const isPacked = planeRule.components[0].bits == kPacked;
        plane.sampleIncrementInBits = isPacked ? 0 : planeRule.sampleBits;
        plane.strideInBytes = static_cast<int64_t>(strideOf(rule, planeRule, rowBytes));
        plane.widthInSamples = static_cast<int64_t>(divideUp(width, planeRule.subsampling));
        plane.heightInSamples = static_cast<int64_t>(divideUp(height, planeRule.subsampling));
        plane.totalSizeInBytes = plane.strideInBytes * plane.heightInSamples;
        plane.horizontalSubsampling = planeRule.subsampling;
        plane.verticalSubsampling = planeRule.subsampling;
        for (ComponentRule const& component : planeRule.components) {
            if (component.bits != 0) {
                plane.components.push_back(componentOf(component));
            }
        }
        offset += plane.totalSizeInBytes;
    }
    return planes;
}

}  // namespace quen::host
