#include "globalregister/packed/lzw_coder.h"

namespace quillon {

namespace {

class CBitWriter {
  public:
    explicit CBitWriter(std::vector<std::uint8_t>& bytes) : m_bytes(bytes) {}

    void Write(std::uint32_t code, std::uint32_t nBits) {
        m_pending |= std::uint64_t{code} << m_nPending;
        m_nPending += nBits;
        for (; m_nPending >= 8; m_nPending -= 8)
            WriteByte();
    }

    void Finish() {
        if (m_nPending > 0)
            WriteByte();
    }

  private:
    void WriteByte() {
        m_bytes.push_back(static_cast<std::uint8_t>(m_pending));
        m_pending >>= 8;
    }

    std::vector<std::uint8_t>& m_bytes;
    std::uint64_t m_pending = 0;
    std::uint32_t m_nPending = 0;
};

} // namespace

template <class T>
CLzwCoder<T>::CLzwCoder(std::size_t nBlockElements)
    : m_initialCodes{MaxLzwEntries(nBlockElements)}, m_codes(m_initialCodes), m_strings(std::size_t{1} << kHashBits) {
    for (const std::vector<T>& string : InitialLzwStrings<T>(true))
        Insert(SlotOf(kNoString, string.front()), kNoString, string.front());
    m_initialCodes = m_codes;
    m_initialStrings = m_strings;
}

template <class T> std::size_t CLzwCoder<T>::SlotOf(std::uint32_t code, T element) const {
    const std::uint32_t key = code << 16 | element;
    std::size_t slot = (key * 0x9e3779b1u) >> (32 - kHashBits);
    while (m_strings[slot].m_key != key && m_strings[slot].m_key != kNoKey)
        slot = (slot + 1) % m_strings.size();
    return slot;
}

template <class T> void CLzwCoder<T>::Insert(std::size_t slot, std::uint32_t code, T element) {
    m_strings[slot] = {code << 16 | element, m_codes.nEntries};
    m_codes.Add();
}

template <class T> bool CLzwCoder<T>::Code(std::span<const T> block, std::vector<std::uint8_t>& packed) {
    m_codes = m_initialCodes;
    m_strings = m_initialStrings;
    CBitWriter bits(packed);
    std::uint32_t code = kNoString;
    std::size_t length = 0;
    for (const T element : block) {
        std::size_t slot = SlotOf(code, element);
        if (m_strings[slot].m_key == kNoKey && code != kNoString) {
            bits.Write(code, m_codes.nCodeBits);
            if (m_codes.HasRoomFor(length + 1))
                Insert(slot, code, element);
            slot = SlotOf(kNoString, element);
            length = 0;
        }
        if (m_strings[slot].m_key == kNoKey)
            return false;
        code = m_strings[slot].m_code;
        ++length;
    }
    if (code != kNoString)
        bits.Write(code, m_codes.nCodeBits);
    bits.Finish();
    return true;
}

template class CLzwCoder<std::uint8_t>;
template class CLzwCoder<std::uint16_t>;

} // namespace quillon
