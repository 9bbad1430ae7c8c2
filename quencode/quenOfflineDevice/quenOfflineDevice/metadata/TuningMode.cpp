#include "quenOfflineDevice/metadata/TuningMode.h"

#include <cstddef>

namespace quen {
namespace {

constexpr uint64_t bit(int number) {
    return uint64_t{1} << number;
}

// Feedback tuning bits, as masks whose bits must all be set.
constexpr int32_t kFbNone = 0x0;
constexpr int32_t kFb0 = 0x1;
constexpr int32_t kFb3 = 0x8;
constexpr int32_t kFb4 = 0x10;
constexpr int32_t kFb0And3 = 0x9;

constexpr int32_t kAnyUiMode = INT32_MIN;
constexpr int32_t kAnyScene = INT32_MIN;

/** A tuning mode and what must hold for it; the first variant of a row that holds is taken. */
struct Variant {
    int32_t feedback;  ///< bits that must all be set
    bool only10bit;    ///< holds only when raw input is not processed at 14 bits
    int32_t tuningMode;
};

constexpr size_t kMaxVariants = 3;

struct SceneRow {
    int32_t scene;
    Variant variants[kMaxVariants];
};

constexpr SceneRow kSceneTable[] = {
        {0x080000, {{kFb3, false, 6011}, {kFb4, false, 6022}, {kFbNone, false, 6006}}},
        {0x100000, {{kFb3, false, 6011}, {kFb4, false, 6021}, {kFbNone, false, 6007}}},
        {0x180000, {{kFb3, false, 6011}, {kFb4, false, 6022}, {kFbNone, false, 6009}}},
        {0x200000, {{kFbNone, false, 6011}}},
        {0x280000, {{kFb0And3, false, 6015}, {kFbNone, false, 6012}}},
        {0x300000, {{kFb0And3, false, 6017}, {kFbNone, false, 6016}}},
        {0x400000, {{kFb0, false, 6014}, {kFbNone, false, 6013}}},
        {0x680000, {{kFb0And3, false, 6017}, {kFbNone, false, 6016}}},
        {0x700000, {{kFb3, false, 6011}, {kFb4, false, 6020}, {kFbNone, false, 6009}}},
        {0x780000, {{kFb0, false, 6024}, {kFbNone, false, 6023}}},
        {0x800000, {{kFb0, false, 6030}, {kFbNone, false, 6029}}},
        {kAnyScene, {{kFb0, false, 6002}, {kFbNone, false, 6001}}},
};

struct ModeRow {
    uint64_t modeBits;  ///< any of them
    int32_t uiMode;
    bool byScene;     ///< the scene table decides instead of `variants`
    int32_t feature;  ///< appended at once when the row is taken
    Variant variants[kMaxVariants];
};

constexpr ModeRow kModeTable[] = {
        {bit(2),
         kAnyUiMode,
         false,
         kNoFeature,
         {{kFbNone, true, 6019}, {kFb0, false, 6028}, {kFbNone, false, 6027}}},
        {bit(1), kAnyUiMode, false, kNoFeature, {{kFbNone, false, 6003}}},
        {bit(3), kAnyUiMode, false, kNoFeature, {{kFb0, false, 6002}, {kFbNone, false, 6001}}},
        {bit(18), kAnyUiMode, false, kNoFeature, {{kFb0, false, 6018}, {kFbNone, false, 6004}}},
        {bit(24), kAnyUiMode, false, kNoFeature, {{kFbNone, false, 6005}}},
        {bit(35) | bit(36), kAnyUiMode, false, kNoFeature, {{kFbNone, false, 6026}}},
        {bit(27) | bit(51), kAnyUiMode, true, kNoFeature, {}},
        {bit(52), kAnyUiMode, false, kNoFeature, {{kFbNone, false, 6007}}},
        {bit(53), kAnyUiMode, false, kNoFeature, {{kFbNone, false, 6009}}},
        {bit(13), 35, false, kNoFeature, {{kFbNone, false, 6010}}},
        {bit(55), 40, false, 7, {{kFbNone, false, 6025}}},
};

constexpr int32_t kFeatureFeedback = 0x18;
constexpr int32_t kFeatureScene = 0x400000;
constexpr char kFeatureApp[] = "StarPlate";

enum class Feedback { Any, Clear };  // of kFeatureFeedback's bits

/** A feature code and what must hold for it; the first row that holds is taken. */
struct FeatureRow {
    uint64_t modeBits;
    char const* appName;  ///< null for any
    Feedback feedback;
    int32_t scene;
    int32_t feature;
};

constexpr FeatureRow kFeatureTable[] = {
        {bit(1), nullptr, Feedback::Any, kAnyScene, 28},
        {bit(18), nullptr, Feedback::Any, kAnyScene, 7},
        {bit(27), nullptr, Feedback::Any, kAnyScene, 31},
        {bit(24), kFeatureApp, Feedback::Any, kAnyScene, 28},
        {bit(35), nullptr, Feedback::Any, kAnyScene, 29},
        {bit(51), nullptr, Feedback::Clear, kFeatureScene, 24},
        {bit(51), nullptr, Feedback::Clear, kAnyScene, 29},
        {bit(51), nullptr, Feedback::Any, kFeatureScene, 26},
        {bit(51), nullptr, Feedback::Any, kAnyScene, 31},
};

bool hasMode(CaptureParameters const& parameters, uint64_t modeBits) {
    return (static_cast<uint64_t>(parameters.currentMode) & modeBits) != 0;
}

int32_t chooseVariant(Variant const (&variants)[kMaxVariants],
                      CaptureParameters const& parameters) {
    for (Variant const& variant : variants) {
        bool const feedback = (parameters.feedbackTuning & variant.feedback) == variant.feedback;
        if (feedback && !(variant.only10bit && parameters.isNeedRaw14bit)) {
            return variant.tuningMode;
        }
    }
    return 0;
}

int32_t chooseByScene(CaptureParameters const& parameters) {
    for (SceneRow const& row : kSceneTable) {
        if (row.scene == parameters.sceneMode || row.scene == kAnyScene) {
            return chooseVariant(row.variants, parameters);
        }
    }
    return 0;
}

}  // namespace

TuningChoice chooseTuningMode(CaptureParameters const& parameters) {
    for (ModeRow const& row : kModeTable) {
        if (!hasMode(parameters, row.modeBits) ||
            (row.uiMode != kAnyUiMode && row.uiMode != parameters.currentUiMode)) {
            continue;
        }
        int32_t const tuningMode =
                row.byScene ? chooseByScene(parameters) : chooseVariant(row.variants, parameters);
        return {tuningMode, row.feature};
    }
    return {0, kNoFeature};
}

int32_t chooseFeature(CaptureParameters const& parameters, std::string const& appName) {
    for (FeatureRow const& row : kFeatureTable) {
        bool const app = row.appName == nullptr || appName == row.appName;
        bool const feedback = row.feedback == Feedback::Any ||
                              (parameters.feedbackTuning & kFeatureFeedback) == 0;
        bool const scene = row.scene == kAnyScene || row.scene == parameters.sceneMode;
        if (hasMode(parameters, row.modeBits) && app && feedback && scene) {
            return row.feature;
        }
    }
    return kNoFeature;
}

}  // namespace quen
