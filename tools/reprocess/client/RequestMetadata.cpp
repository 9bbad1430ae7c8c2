#include "client/RequestMetadata.h"

#include "client/TagAssignment.h"
#include "support/Failure.h"

namespace quen::reprocess {
namespace {

// Enough for what a client sends; grows when assignments need more.
constexpr size_t kEntries = 32;
constexpr size_t kDataBytes = 1024;

}  // namespace

RequestMetadata::RequestMetadata() : mData(allocate_camera_metadata(kEntries, kDataBytes)) {}

RequestMetadata::RequestMetadata(RequestOptions const& options, int orientation,
                                 int32_t frameNumber)
    : RequestMetadata() {
    uint8_t const quality = static_cast<uint8_t>(options.quality);
    set(kTagJpegQuality, &quality, 1);
    setInt32(kTagJpegOrientation, orientation);
    set(kTagCurrentMode, &options.mode, 1);
    setInt32(kTagCurrentUiMode, options.uiMode);
    setInt32(kTagSceneMode, options.scene);
    setInt32(kTagEngineerMode, 0);
    setInt32(kTagFusion, 0);
    setInt32(kTagCameraId, 0);
    setInt32(kTagRequestNumber, frameNumber);
    for (std::string const& text : options.assignments) {
        TagAssignment const assignment = parseAssignment(text);
        set(assignment.tag, assignment.items.data(), assignment.count);
    }
}

RequestMetadata RequestMetadata::sessionMetadata() const {
    RequestMetadata session;
    for (uint32_t const tag : {kTagCameraId, kTagCurrentUiMode}) {
        if (auto const value = int32At(tag)) {
            session.setInt32(tag, *value);
        }
    }
    return session;
}

void RequestMetadata::set(uint32_t tag, void const* items, size_t count) {
    camera_metadata_entry_t entry;
    auto const write = [&](camera_metadata* metadata) {
        return find_camera_metadata_entry(metadata, tag, &entry) == 0
                       ? update_camera_metadata_entry(metadata, entry.index, items, count, nullptr)
                       : add_camera_metadata_entry(metadata, tag, items, count);
    };
    if (write(mData.get()) == 0) {
        return;
    }
    size_t const moreBytes = count * 8;
    std::unique_ptr<camera_metadata, Free> larger(
            allocate_camera_metadata(get_camera_metadata_entry_count(mData.get()) * 2 + 1,
                                     get_camera_metadata_data_count(mData.get()) + moreBytes * 2));
    if (!larger || append_camera_metadata(larger.get(), mData.get()) != 0 ||
        write(larger.get()) != 0) {
        throw Failure("the request cannot take tag " + std::to_string(tag));
    }
    mData = std::move(larger);
}

std::optional<int32_t> RequestMetadata::int32At(uint32_t tag) const {
    return findInt32(mData.get(), tag);
}

std::optional<int32_t> findInt32(camera_metadata const* metadata, uint32_t tag) {
    camera_metadata_ro_entry_t entry;
    if (find_camera_metadata_ro_entry(metadata, tag, &entry) != 0 || entry.type != TYPE_INT32 ||
        entry.count == 0) {
        return std::nullopt;
    }
    return entry.data.i32[0];
}

}  // namespace quen::reprocess
