#ifndef FUZZ_BYTES_H
#define FUZZ_BYTES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace fuzz
{

// Takes numbers from the front of an input, each from as many bytes as its range asks for, so that
// a small change of the input is a small change of what is made of it. Behind the end everything is
// 0.
class Bytes
{
public:
    Bytes(const std::uint8_t* newData, std::size_t newSize) : data(newData), size(newSize) {}

    bool empty() const { return size == 0; }
    std::size_t left() const { return size; }

    // Takes that many bytes, or what is left, for themselves.
    Bytes split(std::size_t count)
    {
        const Bytes front(data, std::min(count, size));
        data += front.size;
        size -= front.size;
        return front;
    }

    template <typename T>
    T raw()
    {
        unsigned char bytes[sizeof(T)] = {};
        const std::size_t count = std::min(sizeof(T), size);
        if (count > 0) std::memcpy(bytes, data, count);
        data += count;
        size -= count;
        T value;
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }

    std::uint8_t byte() { return raw<std::uint8_t>(); }

    std::uint32_t below(std::uint32_t limit)
    {
        if (limit <= 0x100u) return byte() % limit;
        if (limit <= 0x10000u) return raw<std::uint16_t>() % limit;
        return raw<std::uint32_t>() % limit;
    }

    // From least to greatest, both included.
    std::int32_t between(std::int32_t least, std::int32_t greatest)
    {
        return least +
               static_cast<std::int32_t>(below(static_cast<std::uint32_t>(greatest - least) + 1u));
    }

    bool oneIn(std::uint32_t chances) { return below(chances) == chances - 1u; }

    template <typename T>
    T pick(std::initializer_list<T> choices)
    {
        return *(choices.begin() + below(static_cast<std::uint32_t>(choices.size())));
    }

private:
    const std::uint8_t* data;
    std::size_t size;
};

} // namespace fuzz

#endif
