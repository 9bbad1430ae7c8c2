#include "Comparison.h"

#include <algorithm>

#include "CrashReport.h"
#include "Fields.h"

namespace quen::replay {
namespace {

Field const* find(std::vector<Field> const& fields, std::string const& name) {
    auto const found = std::find_if(fields.begin(), fields.end(),
                                    [&](Field const& field) { return field.name == name; });
    return found == fields.end() ? nullptr : &*found;
}

/** The fields that differ, in the recorded order; then those that are new. */
std::vector<std::string> differingFields(std::vector<Field> const& recorded,
                                         std::vector<Field> const& actual) {
    std::vector<std::string> lines;
    std::vector<std::string> summaries;
    for (Field const& field : recorded) {
        Field const* const now = find(actual, field.name);
        if (now == nullptr) {
            lines.push_back(field.name + ": recorded " + field.value + ", now absent");
        } else if (now->value != field.value) {
            (field.isSummary ? summaries : lines)
                    .push_back(field.name + ": recorded " + field.value + ", now " + now->value);
        }
    }
    for (Field const& field : actual) {
        if (find(recorded, field.name) == nullptr) {
            lines.push_back(field.name + ": recorded absent, now " + field.value);
        }
    }
    return lines.empty() ? summaries : lines;
}

std::string placeOf(size_t index, recording::Crossing const& recorded) {
    return "no. " + std::to_string(index + 1) + ", session " + std::to_string(recorded.session()) +
           ", " + titleOf(recorded) + ": ";
}

}  // namespace

void Comparison::compare(size_t index, recording::Crossing const& recorded,
                         recording::Crossing const& actual) {
    auto const lines =
            differingFields(fieldsOf(recorded, mHoldsPictures), fieldsOf(actual, mHoldsPictures));
    for (std::string const& line : lines) {
        add(index, recorded, line);
    }
}

void Comparison::add(size_t index, recording::Crossing const& recorded,
                     std::string const& difference) {
    std::string const line = placeOf(index, recorded) + difference;
    noteDifference(line);
    host::MutexLock const lock(mLock);
    mDifferences.emplace(index, line);
}

std::vector<std::string> Comparison::differences() const {
    host::MutexLock const lock(mLock);
    std::vector<std::string> lines;
    lines.reserve(mDifferences.size());
    for (auto const& [index, line] : mDifferences) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace quen::replay
