#pragma once
// An independent reader of the body of a packed block: byte by byte, and strict about what a packer may write.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillon::reference_packer {

class CUnpacker {
  public:
    CUnpacker(std::span<const std::uint8_t> body, bool bLong) : m_body(body), m_bLong(bLong) {}

    /// None where the body breaks off or a match is one that must not be written.
    std::optional<std::vector<std::uint8_t>> Unpack() {
        while (m_at < m_body.size()) {
            const std::size_t token = Next();
            std::size_t literals = token / 16;
            if (literals == 15)
                literals += Sum();
            for (; literals > 0; --literals)
                m_out.push_back(static_cast<std::uint8_t>(Next()));
            if (m_bBroken || m_at == m_body.size())
                break;
            Match(token % 16);
        }
        if (m_bBroken)
            return std::nullopt;
        return m_out;
    }

  private:
    std::size_t Next() {
        if (m_at == m_body.size()) {
            m_bBroken = true;
            return 0;
        }
        return m_body[m_at++];
    }

    std::size_t Sum() {
        std::size_t sum = 0, byte = 255;
        while (byte == 255 && !m_bBroken)
            sum += byte = Next();
        return sum;
    }

    void Match(std::size_t nibble) {
        std::size_t length = nibble + 4, nOffsetBytes = 2;
        if (m_bLong && nibble == 15) {
            const std::size_t byte = Next();
            length += byte % 128;
            if (byte % 128 == 127)
                length += Sum();
            nOffsetBytes += byte / 128;
        }
        std::size_t offset = Next();
        offset += Next() << 8;
        if (nOffsetBytes == 3)
            offset += Next() << 16;
        if (!m_bLong && nibble == 15)
            length += Sum();
        m_bBroken = m_bBroken || offset < 4 || offset > m_out.size() || (offset < 16 && length > offset) ||
                    (nOffsetBytes == 3 && offset < 0x10000);
        for (; length > 0 && !m_bBroken; --length)
            m_out.push_back(m_out[m_out.size() - offset]);
    }

    std::span<const std::uint8_t> m_body;
    bool m_bLong;
    std::size_t m_at = 0;
    bool m_bBroken = false;
    std::vector<std::uint8_t> m_out;
};

} // namespace quillon::reference_packer
