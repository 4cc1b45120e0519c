#ifndef VXS_VXLARGEARRAY_H
#define VXS_VXLARGEARRAY_H

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace VXS
{

// An array of fixed size whose elements start out undefined. Where it is large and the system has
// large pages, it asks for those: its first use then costs one fault for each 2 MB instead of one
// for each 4 KB, which for an array that is written once takes longer than the writing itself.
template <typename Element>
class LargeArray
{
    static_assert(std::is_trivially_copyable_v<Element> &&
                  std::is_trivially_destructible_v<Element>);

public:
    LargeArray() = default;
    explicit LargeArray(std::size_t size)
        : elements(static_cast<Element*>(
              ::operator new(sizeof(Element) * size, alignment(sizeof(Element) * size)))),
          bytes(sizeof(Element) * size)
    {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
        // Advice only: where it is refused, the pages are small ones.
        if (isLarge(bytes)) static_cast<void>(::madvise(elements, bytes, MADV_HUGEPAGE));
#endif
    }
    ~LargeArray()
    {
        ::operator delete(elements, alignment(bytes));
    }
    LargeArray(LargeArray&& other) noexcept
    {
        swap(other);
    }
    LargeArray& operator=(LargeArray&& other) noexcept
    {
        LargeArray(std::move(other)).swap(*this);
        return *this;
    }

    Element* data()
    {
        return elements;
    }
    const Element* data() const
    {
        return elements;
    }
    Element& operator[](std::size_t i)
    {
        return elements[i];
    }
    const Element& operator[](std::size_t i) const
    {
        return elements[i];
    }
    std::size_t size() const
    {
        return bytes / sizeof(Element);
    }

private:
    static constexpr std::size_t pageSize = std::size_t{1} << 21u;

    static bool isLarge(std::size_t bytes)
    {
        return bytes >= pageSize;
    }
    static std::align_val_t alignment(std::size_t bytes)
    {
        return std::align_val_t(isLarge(bytes) ? pageSize : alignof(std::max_align_t));
    }
    void swap(LargeArray& other) noexcept
    {
        std::swap(elements, other.elements);
        std::swap(bytes, other.bytes);
    }

    Element* elements = nullptr;
    std::size_t bytes = 0;
};

} // namespace VXS

#endif
