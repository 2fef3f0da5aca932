#include "globalregister/packed/lzw_table_packer.h"

#include <algorithm>

#include "globalregister/packed/element_bytes.h"
#include "globalregister/packed/packed_table_header.h"

namespace quillon {

namespace {

// More than a block has unpacked at one byte an element.
constexpr std::size_t kBlockMargin = 8;

} // namespace

template <class T>
CLzwTablePacker<T>::CLzwTablePacker(std::size_t nBlockElements, std::size_t nMinBlockBytes)
    : m_nBlockElements(nBlockElements), m_nMinBlockBytes(nMinBlockBytes), m_coder(nBlockElements) {}

template <class T> std::uint64_t CLzwTablePacker<T>::RoomFor(std::uint64_t nElements) const {
    return (std::max(m_nMinBlockBytes, m_nBlockElements) + kBlockMargin) * BlocksOf(nElements, m_nBlockElements);
}

template <class T>
EPackEnd CLzwTablePacker<T>::Pack(std::span<const std::uint8_t> pattern, std::uint64_t nElements, std::uint64_t nRoom) {
    m_starts.clear();
    m_blocks.clear();
    const std::uint64_t nPeriod = pattern.size() / sizeof(T);
    for (std::uint64_t first = 0; first < nElements; first += m_nBlockElements) {
        const std::uint64_t nRest = nElements - first;
        // From the second period on the same blocks come again, as long as they are whole.
        if (first == nPeriod && nRest >= m_nBlockElements) {
            RepeatBlocks(nRest / m_nBlockElements);
            first += (nRest / m_nBlockElements - 1) * m_nBlockElements;
        } else if (!PackBlock(pattern, first, std::min<std::uint64_t>(nRest, m_nBlockElements))) {
            return EPackEnd::ElementTooLarge;
        }
        if (m_blocks.size() > nRoom)
            return EPackEnd::NotSmaller;
    }
    return EPackEnd::Packed;
}

template <class T>
bool CLzwTablePacker<T>::PackBlock(std::span<const std::uint8_t> pattern, std::uint64_t first, std::size_t nElements) {
    const std::uint64_t nPeriod = pattern.size() / sizeof(T);
    m_elements.resize(nElements);
    std::uint64_t from = first % nPeriod;
    for (T& element : m_elements) {
        element = LoadElement<T>(pattern.data(), from);
        from = from + 1 == nPeriod ? 0 : from + 1;
    }
    const std::size_t start = m_blocks.size();
    m_starts.push_back(start);
    if (!m_coder.Code(m_elements, m_blocks))
        return false;
    m_blocks.resize(std::max(m_blocks.size(), start + m_nMinBlockBytes));
    return true;
}

// Appends copies of the blocks of one period, in turn.
template <class T> void CLzwTablePacker<T>::RepeatBlocks(std::uint64_t nBlocks) {
    const std::size_t nPeriodBlocks = m_starts.size();
    for (std::uint64_t i = 0; i < nBlocks; ++i) {
        const std::size_t source = m_starts.size() - nPeriodBlocks;
        const std::uint64_t begin = m_starts[source];
        const std::uint64_t end = source + 1 < m_starts.size() ? m_starts[source + 1] : m_blocks.size();
        m_starts.push_back(m_blocks.size());
        for (std::uint64_t at = begin; at < end; ++at)
            m_blocks.push_back(m_blocks[at]);
    }
}

template class CLzwTablePacker<std::uint8_t>;
template class CLzwTablePacker<std::uint16_t>;

} // namespace quillon
