#include "globalregister/packed/lzw_decoder.h"

#include <cassert>
#include <cstring>

#include "globalregister/packed/little_endian.h"

namespace quillon {

namespace {

constexpr std::size_t kStepBytes = 16;

// The elements of a string, and what stands behind it up to a full step. Steps do not overlap where the string does
// not.
template <class T> void CopyString(T* to, const T* from, std::size_t length) {
    constexpr std::size_t kStep = kStepBytes / sizeof(T);
    if (static_cast<std::size_t>(to - from) < kStep) {
        for (std::size_t i = 0; i < length; ++i)
            to[i] = from[i];
        return;
    }
    for (std::size_t i = 0; i < length; i += kStep)
        std::memcpy(to + i, from + i, kStepBytes);
}

} // namespace

template <class T>
CLzwDecoder<T>::CLzwDecoder(std::size_t nBlockElements, bool bPlain)
    : m_initialCodes{MaxLzwEntries(nBlockElements)}, m_index(m_initialCodes.nMaxEntries) {
    for (const std::vector<T>& string : InitialLzwStrings<T>(bPlain)) {
        m_index[m_initialCodes.nEntries] = {static_cast<std::uint32_t>(m_pool.size()),
                                            static_cast<std::uint32_t>(string.size())};
        m_initialCodes.Add();
        m_pool.insert(m_pool.end(), string.begin(), string.end());
    }
    m_nInitialUsed = static_cast<std::uint32_t>(m_pool.size());
    m_pool.resize(m_pool.size() + nBlockElements + kMaxLzwString + kStepBytes);
}

template <class T> std::size_t CLzwDecoder<T>::Decode(std::span<const std::uint8_t> block, std::size_t nElements) {
    assert(nElements + m_nInitialUsed + kMaxLzwString <= m_pool.size());
    TLzwCodes codes = m_initialCodes;
    const std::size_t nBits = block.size() * 8;
    std::size_t bit = 0, decoded = 0;
    TEntry previous{m_nInitialUsed, kMaxLzwString}; // too long to become an entry
    while (decoded < nElements) {
        // The coder has added the string of this step already when it wrote the next code: the decoder is one behind.
        const bool bAdds = codes.HasRoomFor(previous.m_nLength + 1);
        const std::uint32_t width = codes.nCodeBits + (bAdds && codes.nEntries + 1 == codes.nNextWidthAt);
        if (bit + width > nBits)
            return 0;
        const std::uint32_t code =
            LoadLittleEndian<std::uint32_t>(block.data() + bit / 8) >> (bit % 8) & ((1u << width) - 1);
        bit += width;
        if (bAdds) {
            m_index[codes.nEntries] = {previous.m_nPlace, previous.m_nLength + 1};
            codes.Add();
        }
        if (code >= codes.nEntries)
            return 0;
        const TEntry entry = m_index[code];
        const auto to = static_cast<std::uint32_t>(m_nInitialUsed + decoded);
        CopyString(m_pool.data() + to, m_pool.data() + entry.m_nPlace, entry.m_nLength);
        previous = {to, entry.m_nLength};
        decoded += entry.m_nLength;
    }
    return decoded;
}

template class CLzwDecoder<std::uint8_t>;
template class CLzwDecoder<std::uint16_t>;

} // namespace quillon
