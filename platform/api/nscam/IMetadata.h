#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <nscam/Geometry.h>

namespace NSCam {

/** Names a type in an overload. */
template <typename T>
struct Type2Type {
    using OriginalType = T;
};

/** A set of typed entries, one per tag, in ascending order of their tags. Not thread-safe. */
class IMetadata {
  public:
    using Tag_t = uint32_t;

    /** Types of the items of an entry. */
    enum : int {
        TYPE_UNKNOWN = -1,  ///< an entry of an unknown tag that never held an item
        TYPE_MUINT8 = 0,
        TYPE_MINT32 = 1,
        TYPE_MFLOAT = 2,
        TYPE_MINT64 = 3,
        TYPE_MDOUBLE = 4,
        TYPE_MRational = 5,
        TYPE_MPoint = 6,
        TYPE_MSize = 7,
        TYPE_MRect = 8,
        TYPE_IMetadata = 9,
    };

    static constexpr Tag_t BAD_TAG = ~0u;

    /**
     * One tag's items, all of one type. A copy shares the items with its source until one of the
     * two changes them.
     */
    class IEntry {
      public:
        /** An entry without items. */
        explicit IEntry(Tag_t tag = BAD_TAG);

        IEntry(IEntry const& other);
        IEntry(IEntry&& other) noexcept;
        ~IEntry();
        IEntry& operator=(IEntry const& other);
        IEntry& operator=(IEntry&& other) noexcept;

        Tag_t tag() const;

        /**
         * Type of the items (`TYPE_*`), kept when the entry is cleared. An entry that never held an
         * item has the type that the platform's tag set gives its tag.
         */
        int type() const;

        bool isEmpty() const;
        size_t count() const;

        /** The items, packed; valid until the entry changes. */
        void const* data() const;

        /** Removes every item. */
        void clear();

        /**
         * Appends an item, or `count` items as one block. The first one sets the type of the entry;
         * items of another type are left out. An empty block only sets the type of an empty entry.
         */
        template <typename T>
        void push_back(typename Type2Type<T>::OriginalType const& item, Type2Type<T>);
        template <typename T>
        void push_back(typename Type2Type<T>::OriginalType const* items, size_t count,
                       Type2Type<T>);

        /** The item at an index; a zero item when there is none, or none of that type. */
        template <typename T>
        T itemAt(size_t index, Type2Type<T>) const;

        /** @return false, and nothing changed, when there is no such item of that type */
        template <typename T>
        bool replaceItemAt(size_t index, typename Type2Type<T>::OriginalType const& item,
                           Type2Type<T>);

      private:
        friend class IMetadata;
        struct Block;  // items of entries that share them

        static constexpr size_t kInlineBytes = 24;

        void append(int type, void const* items, size_t count);
        Block* newBlock(size_t capacity) const;
        void* writableItems();
        void take(IEntry& other);
        void release();

        Tag_t mTag;
        int16_t mType = TYPE_UNKNOWN;  // until the first item
        bool mHasBlock = false;        // whether the items are in mBlock; never without items
        size_t mCount = 0;
        union {
            alignas(8) unsigned char mInline[kInlineBytes];
            Block* mBlock;
        };
    };

    IMetadata();
    IMetadata(IMetadata const& other);
    IMetadata(IMetadata&& other) noexcept;
    ~IMetadata();
    IMetadata& operator=(IMetadata const& other);
    IMetadata& operator=(IMetadata&& other) noexcept;

    /** Adds every entry of `other`, in place of those with the same tags. */
    IMetadata& operator+=(IMetadata const& other);

    size_t count() const;
    bool isEmpty() const;

    /** Copy of a tag's entry; an empty entry of that tag when there is none. */
    IEntry entryFor(Tag_t tag) const;

    /** Copy of the entry at a position, 0 <= index < count(). */
    IEntry entryAt(size_t index) const;

    /** Sets a tag's entry to a copy of `entry`, whose tag becomes `tag`. */
    void update(Tag_t tag, IEntry const& entry);

    /** @return whether there was such an entry */
    bool remove(Tag_t tag);

    void clear();

  private:
    std::vector<IEntry> mEntries;  // in ascending order of their tags
};

}  // namespace NSCam
