#pragma once
// Bytes from and to binary streams, whole or not at all.

#include <cstdint>
#include <istream>
#include <ostream>

namespace quillon {

/// False unless all `size` bytes were there.
[[nodiscard]] inline bool ReadBytes(std::istream& file, std::uint8_t* bytes, std::uint64_t size) {
    file.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(size));
    return static_cast<bool>(file) && static_cast<std::uint64_t>(file.gcount()) == size;
}

/// What a stream still buffers shows its failure only when it is flushed or closed.
[[nodiscard]] inline bool WriteBytes(std::ostream& file, const std::uint8_t* bytes, std::uint64_t size) {
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return static_cast<bool>(file);
}

} // namespace quillon
