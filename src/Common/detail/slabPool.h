// SPDX-License-Identifier: MIT
/// Objects of one type in large slabs of memory.
#pragma once
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <vector>

namespace datainterface {

/// Allocates objects of type T in slabs of 2 MiB, for each of which one large page is requested
/// from the system, so that random access to many objects causes few TLB misses. All slabs are
/// freed together when the last object is destroyed.
template <class T> class SlabPool {
public:
    struct Return {
        SlabPool *pool;
        void operator()(T *object) const { pool->take(object); }
    };
    using Pointer = std::unique_ptr<T, Return>;

    /// The pool must outlive its objects.
    Pointer make()
    {
        if (mSpare.empty())
            addSlab();
        void *const place = mSpare.back();
        T *const object = ::new (place) T();
        mSpare.pop_back();
        ++mMade;
        return Pointer(object, Return{this});
    }

private:
    static constexpr std::size_t kSlabBytes = std::size_t(2) << 20;
    static_assert(sizeof(T) <= kSlabBytes && kSlabBytes % alignof(T) == 0);

    struct Free {
        void operator()(void *slab) const { std::free(slab); }
    };

    void addSlab()
    {
        constexpr std::size_t count = kSlabBytes / sizeof(T);
        mSpare.reserve((mSlabs.size() + 1) * count); // so that take() cannot fail
        mSlabs.reserve(mSlabs.size() + 1);
        void *const slab = std::aligned_alloc(kSlabBytes, kSlabBytes);
        if (!slab)
            throw std::bad_alloc();
        ::madvise(slab, kSlabBytes, MADV_HUGEPAGE); // advice; access is slower without it
        mSlabs.emplace_back(slab);
        for (std::size_t i = count; i > 0; --i)
            mSpare.push_back(static_cast<char *>(slab) + (i - 1) * sizeof(T));
    }

    void take(T *object)
    {
        object->~T();
        mSpare.push_back(object);
        if (--mMade == 0) {
            mSpare.clear();
            mSlabs.clear();
        }
    }

    std::vector<std::unique_ptr<void, Free>> mSlabs;
    std::vector<void *> mSpare; ///< addresses without an object
    std::size_t mMade = 0;
};

} // namespace datainterface
