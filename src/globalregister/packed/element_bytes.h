#pragma once
// Elements of a table as bytes, lowest byte first: std::uint8_t or std::uint16_t.

#include <cstddef>
#include <cstdint>

#include "globalregister/packed/little_endian.h"

namespace quillon {

template <class T> [[nodiscard]] T LoadElement(const std::uint8_t* bytes, std::uint64_t index) {
    if constexpr (sizeof(T) == 1)
        return bytes[index];
    else
        return LoadLittleEndian<T>(bytes + index * sizeof(T));
}

template <class T> void StoreElement(std::uint8_t* bytes, std::uint64_t index, T value) {
    if constexpr (sizeof(T) == 1)
        bytes[index] = value;
    else
        StoreLittleEndian(bytes + index * sizeof(T), value);
}

} // namespace quillon
