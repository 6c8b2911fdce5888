// SPDX-License-Identifier: MIT
/// A shared array that is cloned before it is written. Matrices and vectors hold their elements in
/// it.
#pragma once
#include <algorithm>
#include <cstddef>
#include <new>
#include <type_traits>

/// Copies share one block. Every non-const access first clones a block that is shared. Reference
/// counts are not atomic, so copies must not be used on different threads. T is a plain type.
template <class T> class sharedDataPtr {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied as bytes");

public:
    sharedDataPtr() = default;
    /// Allocates `count` elements with undefined contents; empty for 0. The alignment is at least
    /// 16 bytes whatever `align` is, and a cache line for large arrays.
    sharedDataPtr(int count, int align) : mBlock(allocate(count, align)) {}
    sharedDataPtr(int count, const T &fill, int align) : sharedDataPtr(count, align)
    {
        if (mBlock)
            std::fill_n(mBlock->data, count, fill);
    }
    /// Takes ownership of an array that was allocated with new[].
    sharedDataPtr(T *data, int count) : mBlock(data ? new Block{data, count, 1, kForeign} : nullptr)
    {
    }
    sharedDataPtr(const sharedDataPtr &other) : mBlock(other.mBlock)
    {
        if (mBlock)
            ++mBlock->references;
    }
    sharedDataPtr(sharedDataPtr &&other) noexcept : mBlock(other.mBlock) { other.mBlock = nullptr; }
    sharedDataPtr &operator=(sharedDataPtr other) noexcept
    {
        std::swap(mBlock, other.mBlock);
        return *this;
    }
    ~sharedDataPtr() { release(mBlock); }

    int count() const { return mBlock ? mBlock->count : 0; }
    /// The elements; null when empty.
    const T *data() const { return mBlock ? mBlock->data : nullptr; }
    T *data()
    {
        copy();
        return mBlock ? mBlock->data : nullptr;
    }
    const T &operator[](int i) const { return mBlock->data[i]; }
    T &operator[](int i)
    {
        copy();
        return mBlock->data[i];
    }
    bool isShared() const { return mBlock && mBlock->references > 1; }

    /// Clones the block if it is shared.
    void copy()
    {
        if (isShared())
            clone();
    }

    bool operator==(const sharedDataPtr &other) const
    {
        return count() == other.count()
               && (mBlock == other.mBlock || std::equal(data(), data() + count(), other.data()));
    }
    bool operator!=(const sharedDataPtr &other) const { return !(*this == other); }

private:
    static constexpr int kAlignment = 16;
    static constexpr int kCacheLine = 64;
    /// The size in bytes from which alignment to a cache line is worth the slower allocation.
    static constexpr std::size_t kLarge = 1024;
    static constexpr int kForeign = -1;

    struct alignas(16) Block {
        T *data;
        int count;
        int references;
        int alignment; ///< kForeign: `data` is a separate array, freed with delete[]
    };

    static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= kAlignment, "plain new aligns small arrays");

    // The header and the elements after it are one allocation.
    static Block *allocate(int count, int align)
    {
        if (count <= 0)
            return nullptr;
        const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T);
        const bool isLarge = bytes >= kLarge || align > kAlignment;
        const std::size_t header = isLarge ? kCacheLine : sizeof(Block);
        void *memory = isLarge ? ::operator new(header + bytes, std::align_val_t(kCacheLine))
                               : ::operator new(header + bytes);
        T *data = reinterpret_cast<T *>(static_cast<char *>(memory) + header);
        return new (memory) Block{data, count, 1, isLarge ? kCacheLine : kAlignment};
    }
    static void release(Block *block)
    {
        if (!block || --block->references > 0)
            return;
        if (block->alignment == kForeign) {
            delete[] block->data;
            delete block;
        } else if (block->alignment == kCacheLine) {
            ::operator delete(block, std::align_val_t(kCacheLine));
        } else {
            ::operator delete(block);
        }
    }
    void clone()
    {
        Block *own = allocate(mBlock->count, kAlignment);
        std::copy_n(mBlock->data, mBlock->count, own->data);
        --mBlock->references;
        mBlock = own;
    }

    Block *mBlock = nullptr;
};
