#include "host/isp/Develop.h"

#include <memory>

#include "host/isp/DevelopBand.h"
#include "host/isp/Parallel.h"

namespace quen::host::isp {

void develop(RawPicture const& source, PixelRect const& crop, CaptureFacts const& facts,
             YuvPicture const& target) {
    BayerOrder const order = facts.bayerOrder;
    bool const bayer = source.isBayer();
    DevelopPlan const plan{
            source,
            crop,
            bayer && (order == BayerOrder::GRBG || order == BayerOrder::BGGR) ? 1 : 0,
            bayer && (order == BayerOrder::GBRG || order == BayerOrder::BGGR) ? 1 : 0,
            Companding(facts, source.bits),
            Rendering(facts),
            refinementFor(facts),
            target,
    };
    int const bands = (crop.height + kBandRows - 1) / kBandRows;
    inParallel(bands, [&plan] {
        auto const developer = std::make_shared<BandDeveloper>(plan);
        return [developer](int band) { developer->develop(band); };
    });
}

}  // namespace quen::host::isp
