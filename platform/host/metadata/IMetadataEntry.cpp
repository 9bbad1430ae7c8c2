#include <nscam/IMetadata.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include <nscam/IMetadataTagSet.h>

namespace NSCam {

namespace {

/** Bytes of an item, by IMetadata type. */
constexpr size_t kItemBytes[] = {
        sizeof(uint8_t),   sizeof(int32_t), sizeof(float), sizeof(int64_t), sizeof(double),
        sizeof(MRational), sizeof(MPoint),  sizeof(MSize), sizeof(MRect),   sizeof(IMetadata),
};

template <typename T>
inline constexpr int kTypeOf = IMetadata::TYPE_UNKNOWN;
template <>
inline constexpr int kTypeOf<uint8_t> = IMetadata::TYPE_MUINT8;
template <>
inline constexpr int kTypeOf<int32_t> = IMetadata::TYPE_MINT32;
template <>
inline constexpr int kTypeOf<float> = IMetadata::TYPE_MFLOAT;
template <>
inline constexpr int kTypeOf<int64_t> = IMetadata::TYPE_MINT64;
template <>
inline constexpr int kTypeOf<double> = IMetadata::TYPE_MDOUBLE;
template <>
inline constexpr int kTypeOf<MRational> = IMetadata::TYPE_MRational;
template <>
inline constexpr int kTypeOf<MPoint> = IMetadata::TYPE_MPoint;
template <>
inline constexpr int kTypeOf<MSize> = IMetadata::TYPE_MSize;
template <>
inline constexpr int kTypeOf<MRect> = IMetadata::TYPE_MRect;
template <>
inline constexpr int kTypeOf<IMetadata> = IMetadata::TYPE_IMetadata;

/** Copies items into raw memory. All but nested metadata are plain bytes. */
void copyItems(int type, void* destination, void const* source, size_t count) {
    if (type == IMetadata::TYPE_IMetadata) {
        std::uninitialized_copy_n(static_cast<IMetadata const*>(source), count,
                                  static_cast<IMetadata*>(destination));
    } else if (count != 0) {
        memcpy(destination, source, count * kItemBytes[type]);
    }
}

unsigned char* advance(void* items, int type, size_t count) {
    return static_cast<unsigned char*>(items) + count * kItemBytes[type];
}

}  // namespace

/**
 * Items on the heap. A block with several owners is immutable: an entry copies it before it changes
 * anything. So the count of the last owner is the number of items in it.
 */
struct alignas(std::max_align_t) IMetadata::IEntry::Block {
    explicit Block(size_t items) : capacity(items) {}

    void* items() { return this + 1; }
    bool isShared() const { return owners.load(std::memory_order_acquire) != 1; }

    std::atomic<uint32_t> owners{1};
    size_t const capacity;  // items
};

IMetadata::IEntry::IEntry(Tag_t tag) : mTag(tag), mInline{} {}

IMetadata::IEntry::IEntry(IEntry const& other)
    : mTag(other.mTag),
      mType(other.mType),
      mHasBlock(other.mHasBlock),
      mCount(other.mCount),
      mInline{} {
    if (mHasBlock) {
        mBlock = other.mBlock;
        mBlock->owners.fetch_add(1, std::memory_order_relaxed);
    } else {
        memcpy(mInline, other.mInline, kInlineBytes);
    }
}

IMetadata::IEntry::IEntry(IEntry&& other) noexcept : mTag(other.mTag), mInline{} {
    take(other);
}

IMetadata::IEntry::~IEntry() {
    release();
}

IMetadata::IEntry& IMetadata::IEntry::operator=(IEntry const& other) {
    if (this != &other) {
        *this = IEntry(other);
    }
    return *this;
}

IMetadata::IEntry& IMetadata::IEntry::operator=(IEntry&& other) noexcept {
    if (this != &other) {
        release();
        mTag = other.mTag;
        take(other);
    }
    return *this;
}

/**
 * Moves the items of another entry here, which leaves that one empty. This entry must hold none.
 */
void IMetadata::IEntry::take(IEntry& other) {
    mType = other.mType;
    mHasBlock = other.mHasBlock;
    mCount = other.mCount;
    if (mHasBlock) {
        mBlock = other.mBlock;
    } else {
        memcpy(mInline, other.mInline, kInlineBytes);
    }
    other.mHasBlock = false;
    other.mCount = 0;
}

/** Releases the block, if there is one. The caller updates the count. */
void IMetadata::IEntry::release() {
    if (!mHasBlock) {
        return;
    }
    mHasBlock = false;
    if (mBlock->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
    }
    if (mType == TYPE_IMetadata) {
        std::destroy_n(static_cast<IMetadata*>(mBlock->items()), mCount);
    }
    mBlock->~Block();
    ::operator delete(mBlock, std::align_val_t(alignof(Block)));
}

IMetadata::Tag_t IMetadata::IEntry::tag() const {
    return mTag;
}

int IMetadata::IEntry::type() const {
    if (mType != TYPE_UNKNOWN) {
        return mType;
    }
    return IDefaultMetadataTagSet::singleton()->getTagSet().typeOf(mTag);
}

bool IMetadata::IEntry::isEmpty() const {
    return mCount == 0;
}

size_t IMetadata::IEntry::count() const {
    return mCount;
}

void const* IMetadata::IEntry::data() const {
    return mHasBlock ? mBlock->items() : mInline;
}

void IMetadata::IEntry::clear() {
    release();
    mCount = 0;
}

/** Allocates an empty block for items of the entry's type. */
IMetadata::IEntry::Block* IMetadata::IEntry::newBlock(size_t capacity) const {
    void* const memory = ::operator new(sizeof(Block) + capacity * kItemBytes[mType],
                                        std::align_val_t(alignof(Block)));
    return new (memory) Block(capacity);
}

void IMetadata::IEntry::append(int type, void const* items, size_t count) {
    if (mCount == 0) {
        mType = static_cast<int16_t>(type);
    }
    if (type != mType || count == 0) {
        return;
    }
    size_t const needed = mCount + count;
    if (mHasBlock && !mBlock->isShared() && needed <= mBlock->capacity) {
        copyItems(type, advance(mBlock->items(), type, mCount), items, count);
    } else if (!mHasBlock && type != TYPE_IMetadata && needed <= kInlineBytes / kItemBytes[type]) {
        copyItems(type, advance(mInline, type, mCount), items, count);
    } else {
        // Releases the old items last: `items` may be some of them.
        size_t const itemsSoFar = mCount;
        Block* const block = newBlock(std::max(needed, 2 * itemsSoFar));
        copyItems(type, block->items(), data(), itemsSoFar);
        copyItems(type, advance(block->items(), type, itemsSoFar), items, count);
        release();
        mBlock = block;
        mHasBlock = true;
    }
    mCount = needed;
}

/** Returns the items for writing; copies them first when they are shared. */
void* IMetadata::IEntry::writableItems() {
    if (!mHasBlock) {
        return mInline;
    }
    if (mBlock->isShared()) {
        Block* const block = newBlock(mCount);
        copyItems(mType, block->items(), mBlock->items(), mCount);
        release();
        mBlock = block;
        mHasBlock = true;
    }
    return mBlock->items();
}

template <typename T>
void IMetadata::IEntry::push_back(typename Type2Type<T>::OriginalType const& item, Type2Type<T>) {
    append(kTypeOf<T>, &item, 1);
}

template <typename T>
void IMetadata::IEntry::push_back(typename Type2Type<T>::OriginalType const* items, size_t count,
                                  Type2Type<T>) {
    append(kTypeOf<T>, items, count);
}

template <typename T>
T IMetadata::IEntry::itemAt(size_t index, Type2Type<T>) const {
    T item{};
    if (mType != kTypeOf<T> || index >= mCount) {
        return item;
    }
    auto const* const address = static_cast<unsigned char const*>(data()) + index * sizeof(T);
    if constexpr (std::is_trivially_copyable_v<T>) {
        memcpy(&item, address, sizeof(item));
    } else {
        item = *reinterpret_cast<T const*>(address);
    }
    return item;
}

template <typename T>
bool IMetadata::IEntry::replaceItemAt(size_t index, typename Type2Type<T>::OriginalType const& item,
                                      Type2Type<T>) {
    if (mType != kTypeOf<T> || index >= mCount) {
        return false;
    }
    T copy = item;  // it may lie in the block that is released
    unsigned char* const address = advance(writableItems(), mType, index);
    if constexpr (std::is_trivially_copyable_v<T>) {
        memcpy(address, &copy, sizeof(copy));
    } else {
        *reinterpret_cast<T*>(address) = std::move(copy);
    }
    return true;
}

#define INSTANTIATE_FOR(T)                                                         \
    template void IMetadata::IEntry::push_back<T>(T const&, Type2Type<T>);         \
    template void IMetadata::IEntry::push_back<T>(T const*, size_t, Type2Type<T>); \
    template T IMetadata::IEntry::itemAt<T>(size_t, Type2Type<T>) const;           \
    template bool IMetadata::IEntry::replaceItemAt<T>(size_t, T const&, Type2Type<T>);

INSTANTIATE_FOR(uint8_t)
INSTANTIATE_FOR(int32_t)
INSTANTIATE_FOR(float)
INSTANTIATE_FOR(int64_t)
INSTANTIATE_FOR(double)
INSTANTIATE_FOR(MRational)
INSTANTIATE_FOR(MPoint)
INSTANTIATE_FOR(MSize)
INSTANTIATE_FOR(MRect)
INSTANTIATE_FOR(IMetadata)

#undef INSTANTIATE_FOR

}  // namespace NSCam
