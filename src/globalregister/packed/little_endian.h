#pragma once
// Numbers in files: the lowest byte first, whatever the machine.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace quillon {

template <class T> [[nodiscard]] constexpr T WithBytesReversed(T value) {
    T reversed = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        reversed = static_cast<T>(reversed << 8 | (value & 0xff));
        value = static_cast<T>(value >> 8);
    }
    return reversed;
}

/// The number of sizeof(T) bytes at `bytes`, at any address.
template <class T> [[nodiscard]] inline T LoadLittleEndian(const std::uint8_t* bytes) {
    static_assert(std::is_unsigned_v<T> && sizeof(T) > 1);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return std::endian::native == std::endian::little ? value : WithBytesReversed(value);
}

template <class T> inline void StoreLittleEndian(std::uint8_t* bytes, T value) {
    static_assert(std::is_unsigned_v<T> && sizeof(T) > 1);
    if (std::endian::native != std::endian::little)
        value = WithBytesReversed(value);
    std::memcpy(bytes, &value, sizeof value);
}

} // namespace quillon
