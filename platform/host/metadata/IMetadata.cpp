#include <nscam/IMetadata.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace NSCam {

namespace {

/** Finds the first entry whose tag is `tag` or higher. */
template <typename Iterator>
Iterator lowerBound(Iterator first, Iterator last, IMetadata::Tag_t tag) {
    return std::lower_bound(first, last, tag,
                            [](IMetadata::IEntry const& entry, IMetadata::Tag_t wanted) {
                                return entry.tag() < wanted;
                            });
}

/** Reserved at once: a capture's metadata has dozens of entries, and a request's gets the ISP's. */
constexpr size_t kUsualEntries = 96;

}  // namespace

IMetadata::IMetadata() = default;
IMetadata::IMetadata(IMetadata const& other) = default;
IMetadata::IMetadata(IMetadata&& other) noexcept = default;
IMetadata::~IMetadata() = default;
IMetadata& IMetadata::operator=(IMetadata const& other) = default;
IMetadata& IMetadata::operator=(IMetadata&& other) noexcept = default;

IMetadata& IMetadata::operator+=(IMetadata const& other) {
    if (this == &other || other.isEmpty()) {
        return *this;
    }
    std::vector<IEntry> merged;
    merged.reserve(mEntries.size() + other.mEntries.size());
    auto own = mEntries.begin();
    for (IEntry const& added : other.mEntries) {
        for (; own != mEntries.end() && own->tag() < added.tag(); ++own) {
            merged.push_back(std::move(*own));
        }
        if (own != mEntries.end() && own->tag() == added.tag()) {
            ++own;
        }
        merged.push_back(added);
    }
    std::move(own, mEntries.end(), std::back_inserter(merged));
    mEntries = std::move(merged);
    return *this;
}

size_t IMetadata::count() const {
    return mEntries.size();
}

bool IMetadata::isEmpty() const {
    return mEntries.empty();
}

IMetadata::IEntry IMetadata::entryFor(Tag_t tag) const {
    auto const found = lowerBound(mEntries.begin(), mEntries.end(), tag);
    return found != mEntries.end() && found->tag() == tag ? *found : IEntry(tag);
}

IMetadata::IEntry IMetadata::entryAt(size_t index) const {
    return index < mEntries.size() ? mEntries[index] : IEntry();
}

void IMetadata::update(Tag_t tag, IEntry const& entry) {
    IEntry copy(entry);
    copy.mTag = tag;
    // Entries mostly arrive in the order of their tags.
    if (mEntries.empty() || mEntries.back().tag() < tag) {
        if (mEntries.capacity() == 0) {
            mEntries.reserve(kUsualEntries);
        }
        mEntries.push_back(std::move(copy));
        return;
    }
    auto const place = lowerBound(mEntries.begin(), mEntries.end(), tag);
    if (place->tag() == tag) {
        *place = std::move(copy);
    } else {
        mEntries.insert(place, std::move(copy));
    }
}

bool IMetadata::remove(Tag_t tag) {
    auto const found = lowerBound(mEntries.begin(), mEntries.end(), tag);
    if (found == mEntries.end() || found->tag() != tag) {
        return false;
    }
    mEntries.erase(found);
    return true;
}

void IMetadata::clear() {
    mEntries.clear();
}

}  // namespace NSCam
