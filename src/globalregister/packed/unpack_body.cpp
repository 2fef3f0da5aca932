// Unpacking one body. Every length and offset of the input is checked before it is used; the copies of 16 bytes stay
// within the slack behind the output and within the input.

#include <array>
#include <cstring>

#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/sequence_format.h"

namespace quillon {

namespace {

constexpr std::size_t kStep = 16;
static_assert(kStep <= kUnpackSlack);

// Up to kStep - 1 bytes more than asked for. Source and target may overlap where each step reads before it writes.
void CopyInSteps(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    for (std::size_t done = 0; done < size; done += kStep) {
        std::array<std::uint8_t, kStep> step;
        std::memcpy(step.data(), from + done, kStep);
        std::memcpy(to + done, step.data(), kStep);
    }
}

struct TMatch {
    std::size_t m_nOffset = 0;
    std::size_t m_nLength = 0;
};

template <EBlockForm eForm> class CBodyReader {
  public:
    CBodyReader(std::span<const std::uint8_t> body, std::uint8_t* unpacked, std::size_t size)
        : m_in(body.data()), m_inEnd(body.data() + body.size()), m_outBegin(unpacked), m_out(unpacked),
          m_outEnd(unpacked + size) {}

    [[nodiscard]] bool Read() {
        while (m_in != m_inEnd) {
            const unsigned token = *m_in++;
            if (!CopyLiterals(token >> 4))
                return false;
            if (m_in == m_inEnd)
                break;
            TMatch match;
            if (!ReadMatch(token & kNibbleFull, match) || !CopyMatch(match))
                return false;
        }
        return m_out == m_outEnd;
    }

  private:
    [[nodiscard]] std::size_t InLeft() const { return static_cast<std::size_t>(m_inEnd - m_in); }
    [[nodiscard]] std::size_t OutLeft() const { return static_cast<std::size_t>(m_outEnd - m_out); }

    // Bytes that are added while they are 255, and the first that is not. They are no more than the input has, so the
    // sum cannot overflow.
    [[nodiscard]] bool AddExtension(std::size_t& length) {
        unsigned byte = kExtensionFull;
        while (byte == kExtensionFull) {
            if (m_in == m_inEnd)
                return false;
            byte = *m_in++;
            length += byte;
        }
        return true;
    }

    [[nodiscard]] bool CopyLiterals(std::size_t length) {
        if (length == kNibbleFull && !AddExtension(length))
            return false;
        if (length > InLeft() || length > OutLeft())
            return false;
        if (length + kStep <= InLeft())
            CopyInSteps(m_out, m_in, length);
        else if (length > 0)
            std::memcpy(m_out, m_in, length);
        m_in += length;
        m_out += length;
        return true;
    }

    [[nodiscard]] bool ReadOffset(std::size_t nBytes, TMatch& match) {
        if (InLeft() < nBytes)
            return false;
        match.m_nOffset = LoadLittleEndian<std::uint16_t>(m_in);
        if (nBytes == kLongOffsetBytes)
            match.m_nOffset |= static_cast<std::size_t>(m_in[2]) << 16;
        m_in += nBytes;
        return true;
    }

    [[nodiscard]] bool ReadMatch(unsigned nibble, TMatch& match) {
        match.m_nLength = nibble + kMinMatch;
        if constexpr (eForm == EBlockForm::Short)
            return ReadOffset(kShortOffsetBytes, match) && (nibble < kNibbleFull || AddExtension(match.m_nLength));
        if (nibble < kNibbleFull)
            return ReadOffset(kShortOffsetBytes, match);
        if (m_in == m_inEnd)
            return false;
        const unsigned byte = *m_in++;
        const unsigned more = byte & kLongExtensionMask;
        match.m_nLength += more;
        if (more == kLongExtensionMask && !AddExtension(match.m_nLength))
            return false;
        return ReadOffset((byte & kLongOffsetMark) != 0 ? kLongOffsetBytes : kShortOffsetBytes, match);
    }

    [[nodiscard]] bool CopyMatch(const TMatch& match) {
        const auto nWritten = static_cast<std::size_t>(m_out - m_outBegin);
        if (match.m_nOffset < kMinOffset || match.m_nOffset > nWritten || match.m_nLength > OutLeft())
            return false;
        if (match.m_nOffset < kStep && match.m_nLength > match.m_nOffset)
            return false;
        CopyInSteps(m_out, m_out - match.m_nOffset, match.m_nLength);
        m_out += match.m_nLength;
        return true;
    }

    const std::uint8_t* m_in;
    const std::uint8_t* m_inEnd;
    std::uint8_t* m_outBegin;
    std::uint8_t* m_out;
    std::uint8_t* m_outEnd;
};

} // namespace

bool UnpackBody(std::span<const std::uint8_t> body, EBlockForm form, std::uint8_t* unpacked, std::size_t size) {
    return form == EBlockForm::Short ? CBodyReader<EBlockForm::Short>(body, unpacked, size).Read()
                                     : CBodyReader<EBlockForm::Long>(body, unpacked, size).Read();
}

} // namespace quillon
