#include "host/isp/develop/Develop.h"

#include <memory>

#include "host/base/Parallel.h"
#include "host/isp/develop/DevelopBand.h"

namespace quen::host::isp {

void develop(RawPicture const& source, PixelRect const& crop, SensorCalibration const& calibration,
             YuvPicture const& target) {
    BayerOrder const order = calibration.bayerOrder;
    bool const bayer = source.isBayer();
    DevelopPlan const plan{
            source,
            crop,
            bayer && (order == BayerOrder::GRBG || order == BayerOrder::BGGR) ? 1 : 0,
            bayer && (order == BayerOrder::GBRG || order == BayerOrder::BGGR) ? 1 : 0,
            Companding(calibration, source.bits),
            Rendering(calibration),
            refinementFor(calibration),
            target,
    };
    int const bands = (crop.height + kBandRows - 1) / kBandRows;
    auto const makeWorker = [&plan] {
        auto const developer = std::make_shared<BandDeveloper>(plan);
        return [developer](int band) { developer->develop(band); };
    };
    inParallel(bands, makeWorker);
}

}  // namespace quen::host::isp
