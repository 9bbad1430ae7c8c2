#include "request/Outstanding.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <quenOfflineDevice/bridge/ClientCallback.h>
#include <quenOfflineDevice/bridge/HalInterface.h>

#include "request/BenchSession.h"
#include "support/Table.h"

namespace quenbench {

namespace {

constexpr size_t kFew = 10;
constexpr size_t kMany = 100000;
constexpr size_t kRounds = 1000;  // per run, with few outstanding
constexpr size_t kEntries = 20;

size_t roundsOf(size_t outstanding) {
    return outstanding == kFew ? kRounds : 1;
}

std::string caseName(char const* scope, size_t outstanding) {
    return std::string("outstanding/") + scope + '/' + std::to_string(outstanding);
}

/** Positions in a shuffled order. */
std::vector<size_t> anotherOrder(size_t count) {
    std::vector<size_t> order(count);
    std::iota(order.begin(), order.end(), size_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    return order;
}

/** Submits `outstanding` requests, then answers them all; several rounds. */
template <typename Submit, typename Answer>
double measuredRounds(std::vector<size_t> const& order, Submit const& submit,
                      Answer const& answer) {
    std::vector<uint32_t> numbers(order.size());
    return measured([&] {
        for (size_t round = 0; round < roundsOf(order.size()); ++round) {
            for (uint32_t& number : numbers) {
                number = submit();
            }
            for (size_t const place : order) {
                answer(numbers[place]);
            }
        }
    });
}

Run prepareWhole(size_t outstanding) {
    RequestShape shape = {kEntries};
    shape.threeABuffer = false;
    auto const session =
            std::make_shared<BenchSession>(RequestKind::Nv21ToJpeg, Answering::WhenAsked, shape);
    Client const client = makeClient();
    std::vector<size_t> const order = anotherOrder(outstanding);
    return [=] {
        return measuredRounds(
                order, [&] { return session->submit(client); },
                [&](uint32_t number) { session->isp().answer(number); });
    };
}

/** The request table alone: records and their results. */
Run prepareTable(size_t outstanding) {
    android::sp<HalInterface> const hal =
            new HalInterface(NSCam::IMetadataConverter::createInstance(benchTagSet()));
    Client const client = makeClient();
    std::vector<size_t> const order = anotherOrder(outstanding);
    auto const latest = std::make_shared<uint32_t>(0);
    return [=] {
        isphal::ISPResult result;
        result.status = isphal::Status::OK;
        auto const callback = hal->callback();
        return measuredRounds(
                order,
                [&] {
                    hal->recordISPRequest(
                            new OfflineRequest{
                                    ++*latest, new NSCam::IMetadata, {}, {}, false, "YUV2JPEG"},
                            client);
                    return *latest;
                },
                [&](uint32_t number) {
                    result.reqNumber = number;
                    (void)callback->processResult(result).isOk();
                });
    };
}

struct {
    char const* name;
    char const* what;
    char const* work;
    Goal goal;
    Run (*prepare)(size_t outstanding);
} const kScopes[] = {
        {"whole", "100 k outstanding against 10", "whole request, 20 entries, answers shuffled",
         Goal::atMost(2), prepareWhole},
        {"table", "  the request table alone", "record and result, no metadata, shuffled",
         Goal::none(), prepareTable},
};

}  // namespace

void addOutstandingCases(Cases& cases) {
    for (auto const& scope : kScopes) {
        for (size_t const outstanding : {kFew, kMany}) {
            cases.push_back({caseName(scope.name, outstanding), outstanding * roundsOf(outstanding),
                             false, scope.name, [=] { return scope.prepare(outstanding); }});
        }
    }
}

void printOutstandingRows(std::ostream& out, Figures const& figures) {
    for (auto const& scope : kScopes) {
        double const few = figures.seconds(caseName(scope.name, kFew));
        double const many = figures.seconds(caseName(scope.name, kMany));
        if (few > 0 && many > 0) {
            printRow(out, {scope.what, scope.work, timeText(many), "at 10: " + timeText(few),
                           many / few, scope.goal});
        }
    }
}

}  // namespace quenbench
