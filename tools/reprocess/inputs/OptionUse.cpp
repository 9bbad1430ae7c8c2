#include "inputs/OptionUse.h"

#include <algorithm>
#include <initializer_list>

namespace quen::reprocess {
namespace {

constexpr auto kJpeg = InputKind::Jpeg;
constexpr auto kYuv = InputKind::Yuv;
constexpr auto kHeaderless = InputKind::HeaderlessBayer;
constexpr auto kCamera = InputKind::CameraRaw;

struct OptionUse {
    char const* name;
    bool (*isGiven)(InputOptions const& options);
    std::initializer_list<InputKind> users;
};

OptionUse const kUses[] = {
        {"--size", [](InputOptions const& o) { return o.size.has_value(); }, {kYuv, kHeaderless}},
        {"--bayer", [](InputOptions const& o) { return o.bayer.has_value(); }, {kHeaderless}},
        {"--yuv", [](InputOptions const& o) { return o.yuv.has_value(); }, {kYuv}},
        {"--bits", [](InputOptions const& o) { return o.bits.has_value(); }, {kHeaderless}},
        {"--layout", [](InputOptions const& o) { return o.layout.has_value(); }, {kHeaderless}},
        {"--stride", [](InputOptions const& o) { return o.stride.has_value(); }, {kHeaderless}},
        {"--offset", [](InputOptions const& o) { return o.offset.has_value(); }, {kHeaderless}},
        {"--wb", [](InputOptions const& o) { return o.wb.has_value(); }, {kHeaderless, kCamera}},
        {"--black",
         [](InputOptions const& o) { return o.black.has_value(); },
         {kHeaderless, kCamera}},
        {"--white",
         [](InputOptions const& o) { return o.white.has_value(); },
         {kHeaderless, kCamera}},
        {"--matrix",
         [](InputOptions const& o) { return o.matrix.has_value(); },
         {kHeaderless, kCamera}},
        {"--rotate",
         [](InputOptions const& o) { return o.rotate.has_value(); },
         {kJpeg, kYuv, kHeaderless, kCamera}},
};

}  // namespace

std::vector<std::string> unusedOptions(InputOptions const& options,
                                       std::vector<InputKind> const& kinds) {
    std::vector<std::string> unused;
    for (OptionUse const& use : kUses) {
        bool const isUsed = std::find_first_of(use.users.begin(), use.users.end(), kinds.begin(),
                                               kinds.end()) != use.users.end();
        if (use.isGiven(options) && !isUsed) {
            unused.emplace_back(use.name);
        }
    }
    return unused;
}

}  // namespace quen::reprocess
