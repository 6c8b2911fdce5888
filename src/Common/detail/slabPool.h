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

/// Makes and takes back objects of type T, many to a slab of 2 MiB for which the system is asked
/// for one large page: random access to many of them then seldom waits for an address to be
/// translated. Slabs go when none of their objects, and no object of any other slab, is left.
template <class T> class SlabPool {
public:
    struct Return {
        SlabPool *pool;
        void operator()(T *object) const { pool->take(object); }
    };
    using Pointer = std::unique_ptr<T, Return>;

    /// The pool must outlive what it makes.
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
        mSpare.reserve((mSlabs.size() + 1) * count); // so that taking back never fails
        mSlabs.reserve(mSlabs.size() + 1);
        void *const slab = std::aligned_alloc(kSlabBytes, kSlabBytes);
        if (!slab)
            throw std::bad_alloc();
        ::madvise(slab, kSlabBytes, MADV_HUGEPAGE); // a wish: without it all is merely slower
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
    std::vector<void *> mSpare; ///< places without an object
    std::size_t mMade = 0;
};

} // namespace datainterface
