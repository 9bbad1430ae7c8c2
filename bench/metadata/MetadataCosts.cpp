#include "metadata/MetadataCosts.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <nscam/IMetadataConverter.h>
#include <quenOfflineDevice/Stage.h>
#include <quenOfflineDevice/metadata/IspMetadata.h>
#include <quenOfflineDevice/metadata/RequestMetadata.h>

#include "metadata/Requests.h"
#include "support/Section.h"
#include "support/Table.h"

using NSCam::IMetadata;
using NSCam::IMetadataConverter;

namespace quenbench {

namespace {

constexpr size_t kEntryCounts[] = {20, 60, 300};
constexpr size_t kFewest = 20;
constexpr size_t kMost = 300;

/** Requests per run: enough to make the cost of reading the clock negligible. */
constexpr size_t kBatch = 32;
constexpr size_t kLargeBatch = 4;

/** A request's metadata in the form of every stage. */
struct Forms {
    explicit Forms(RequestShape const& shape)
        : batch(shape.tuningBytes ? kLargeBatch : kBatch), client(makeRequest(shape)) {
        converter->convert(client.get(), request);
        result = makeResult(request.count());
        // The ISP's result has as many entries, in the order of the client's.
        quen::convertToISPMetadata(&request, flat);
    }

    size_t const batch;
    android::sp<IMetadataConverter> const converter =
            IMetadataConverter::createInstance(benchTagSet());
    ClientMetadata const client;
    IMetadata request;
    IMetadata result;
    std::vector<unsigned char> flat;
};

/** Runs `work(i)` for a batch of prepared objects, destroyed after the section. */
template <typename Prepared, typename Work>
double measuredBatch(std::vector<Prepared> prepared, Work const& work) {
    return measured([&] {
        for (Prepared& one : prepared) {
            work(one);
        }
    });
}

double toIMetadata(Forms& forms) {
    return measuredBatch(std::vector<IMetadata>(forms.batch), [&](IMetadata& out) {
        forms.converter->convert(forms.client.get(), out);
    });
}

double prepare(Forms& forms) {
    return measuredBatch(std::vector<IMetadata>(forms.batch, forms.request), [&](IMetadata& one) {
        quen::updateMetaData(&one, 4000, 3000, quen::kStageRawToYuv, false);
    });
}

double encode(Forms& forms) {
    return measuredBatch(std::vector<std::vector<unsigned char>>(forms.batch),
                         [&](auto& out) { quen::convertToISPMetadata(&forms.request, out); });
}

double decode(Forms& forms) {
    return measuredBatch(std::vector<IMetadata>(forms.batch),
                         [&](IMetadata& out) { quen::convertToIMetadata(forms.flat.data(), out); });
}

double merge(Forms& forms) {
    return measuredBatch(std::vector<IMetadata>(forms.batch, forms.result),
                         [&](IMetadata& one) { one += forms.request; });
}

double toClient(Forms& forms) {
    struct Out {
        android::hardware::hidl_vec<uint8_t> bytes;
        Out() = default;
        Out(Out const&) = delete;
        Out(Out&& other) noexcept : bytes(std::move(other.bytes)) {}
        ~Out() { free_camera_metadata(reinterpret_cast<camera_metadata*>(bytes.data())); }
    };
    return measuredBatch(std::vector<Out>(forms.batch),
                         [&](Out& out) { forms.converter->convert(forms.request, out.bytes); });
}

struct Step {
    char const* name;
    char const* what;
    double (*run)(Forms& forms);
    bool ordersDiffer;    ///< whether the order of the client's entries matters
    size_t tuningCopies;  ///< how often the step has to copy the 2 MB
    double entryCopies;   ///< how often it has to copy an entry; negative: not checked
};

constexpr Step kSteps[] = {
        {"convert", "camera_metadata to IMetadata", toIMetadata, true, 1, 1},
        {"prepare", "preparation", prepare, false, 0, -1},
        {"encode", "encoding", encode, false, 0, 1},
        {"decode", "decoding", decode, false, 0, 1},
        {"merge", "merge", merge, false, 0, 1},
        {"back", "IMetadata to camera_metadata", toClient, false, 1, 1},
};

std::string caseName(Step const& step, RequestShape const& shape) {
    return std::string("metadata/") + step.name + '/' + std::to_string(shape.entries) +
           (shape.order == Order::Shuffled ? "/shuffled" : "") + (shape.tuningBytes ? "/2MB" : "");
}

void add(Cases& cases, Step const& step, RequestShape const& shape) {
    cases.push_back({caseName(step, shape), shape.tuningBytes ? kLargeBatch : kBatch, true,
                     shape.tuningBytes ? "metadata/2MB" : std::string("metadata/") + step.name,
                     [=] {
                         auto const forms = std::make_shared<Forms>(shape);
                         return [=] { return step.run(*forms); };
                     }});
}

char const* orderText(Order order) {
    return order == Order::Shuffled ? ", in no order" : "";
}

void printCost(std::ostream& out, Figures const& figures, Step const& step,
               RequestShape const& shape) {
    std::string const name = caseName(step, shape);
    double const entries = static_cast<double>(shape.entries);
    double const instructions = figures.count("instructions", name);
    double const allocations = figures.count("allocations", name);
    if (figures.seconds(name) < 0) {
        return;
    }
    std::string counts;
    if (instructions >= 0) {
        counts = countText(instructions / entries) + " instr";
    }
    if (allocations >= 0) {
        counts += ", " + countText(allocations / entries) + " alloc";
    }
    printRow(out,
             {step.what,
              std::to_string(shape.entries) + " entries" + orderText(shape.order) + ", an entry",
              timeText(figures.seconds(name) / entries), counts, -1, Goal::none()});
}

void printGrowth(std::ostream& out, Figures const& figures, Step const& step, Order order) {
    std::string const few = caseName(step, {kFewest, order});
    std::string const many = caseName(step, {kMost, order});
    auto const print = [&](char const* unit, double less, double more, auto const& text) {
        less /= static_cast<double>(kFewest);
        more /= static_cast<double>(kMost);
        if (less > 0 && more > 0) {
            printRow(out, {std::string("  growth, ") + unit,
                           std::string("20 to 300 entries") + orderText(order) + ", an entry",
                           text(more), "at 20: " + text(less), more / less, Goal::atMost(1.3)});
        }
    };
    print("time", figures.seconds(few), figures.seconds(many), timeText);
    print("instructions", figures.count("instructions", few), figures.count("instructions", many),
          countText);
}

/** Copies of an entry, items shared: the interface passes entries by value. */
void printEntryCopies(std::ostream& out, Figures const& figures, Step const& step) {
    double const copies = figures.count("entryCopies", caseName(step, {kMost, Order::Sorted}));
    if (copies >= 0 && step.entryCopies > 0) {
        double const each = copies / static_cast<double>(kMost);
        printRow(out, {"  an entry is copied", std::to_string(kMost) + " entries, an entry",
                       countText(each), "asked for: " + countText(step.entryCopies),
                       each / step.entryCopies, Goal::atMost(1)});
    }
}

/** What the tuning bytes add to a step, and how often it copies them. */
void printTuning(std::ostream& out, Figures const& figures, Step const& step) {
    std::string const with = caseName(step, {kFewest, Order::Sorted, true});
    double const added =
            figures.seconds(with) - figures.seconds(caseName(step, {kFewest, Order::Sorted}));
    double const copies = figures.count("largeCopies", with);
    double const plain = figures.seconds("metadata/memcpy/2MB");
    if (copies >= 0) {
        std::string const expected = countText(static_cast<double>(step.tuningCopies));
        printRow(out, {std::string("2 MB tuning bytes: copies"), step.what, countText(copies),
                       "asked for: " + expected,
                       step.tuningCopies == 0 ? copies + 1
                                              : copies / static_cast<double>(step.tuningCopies),
                       Goal::atMost(1)});
    }
    if (step.tuningCopies != 0 && added > 0 && plain > 0) {
        printRow(out, {"2 MB tuning bytes: time", step.what, timeText(added),
                       "memcpy, new block " + timeText(plain), added / plain, Goal::none()});
    }
}

}  // namespace

void addMetadataCases(Cases& cases) {
    for (Step const& step : kSteps) {
        for (size_t const entries : kEntryCounts) {
            add(cases, step, {entries, Order::Sorted});
            if (step.ordersDiffer) {
                add(cases, step, {entries, Order::Shuffled});
            }
        }
        add(cases, step, {kFewest, Order::Sorted, true});
    }
    cases.push_back({"metadata/memcpy/2MB", kLargeBatch, false, "metadata/2MB", [] {
                         auto const source =
                                 std::make_shared<std::vector<uint8_t>>(kTuningBytes, 1);
                         return [=] {
                             using Block = std::unique_ptr<uint8_t[]>;
                             return measuredBatch(std::vector<Block>(kLargeBatch), [&](Block& out) {
                                 out.reset(new uint8_t[kTuningBytes]);
                                 memcpy(out.get(), source->data(), kTuningBytes);
                             });
                         };
                     }});
}

void printMetadataRows(std::ostream& out, Figures const& figures) {
    for (Step const& step : kSteps) {
        for (Order const order : {Order::Sorted, Order::Shuffled}) {
            if (order == Order::Shuffled && !step.ordersDiffer) {
                continue;
            }
            for (size_t const entries : kEntryCounts) {
                printCost(out, figures, step, {entries, order});
            }
            printGrowth(out, figures, step, order);
        }
        printEntryCopies(out, figures, step);
    }
    for (Step const& step : kSteps) {
        printTuning(out, figures, step);
    }
}

}  // namespace quenbench
