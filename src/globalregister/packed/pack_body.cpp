// Packing one body: at each place the longest match that is found, unless the next place has a longer one.

#include <algorithm>

#include "globalregister/packed/match_finder.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/sequence_format.h"

namespace quillon {

namespace {

// A match of this length is taken without a look at the next place.
constexpr std::size_t kLongEnough = 64;

class CBodyWriter {
  public:
    CBodyWriter(std::vector<std::uint8_t>& packed, EBlockForm form) : m_packed(packed), m_form(form) {}

    void WriteSequence(std::span<const std::uint8_t> literals, std::size_t offset, std::size_t length) {
        const std::size_t token = WriteLiterals(literals);
        const std::size_t rest = length - kMinMatch;
        m_packed[token] |= static_cast<std::uint8_t>(std::min<std::size_t>(rest, kNibbleFull));
        if (m_form == EBlockForm::Long && rest >= kNibbleFull) {
            WriteLongLength(rest - kNibbleFull, offset >= kShortWindow);
            WriteOffset(offset, offset >= kShortWindow ? kLongOffsetBytes : kShortOffsetBytes);
            return;
        }
        WriteOffset(offset, kShortOffsetBytes);
        if (rest >= kNibbleFull)
            WriteExtension(rest - kNibbleFull);
    }

    /// Result: where the token stands.
    std::size_t WriteLiterals(std::span<const std::uint8_t> literals) {
        const std::size_t token = m_packed.size();
        const std::size_t nibble = std::min<std::size_t>(literals.size(), kNibbleFull);
        m_packed.push_back(static_cast<std::uint8_t>(nibble << 4));
        if (nibble == kNibbleFull)
            WriteExtension(literals.size() - kNibbleFull);
        m_packed.insert(m_packed.end(), literals.begin(), literals.end());
        return token;
    }

  private:
    void WriteExtension(std::size_t rest) {
        m_packed.insert(m_packed.end(), rest / kExtensionFull, static_cast<std::uint8_t>(kExtensionFull));
        m_packed.push_back(static_cast<std::uint8_t>(rest % kExtensionFull));
    }

    void WriteLongLength(std::size_t rest, bool bFar) {
        const std::size_t low = std::min<std::size_t>(rest, kLongExtensionMask);
        m_packed.push_back(static_cast<std::uint8_t>(low | (bFar ? kLongOffsetMark : 0)));
        if (low == kLongExtensionMask)
            WriteExtension(rest - low);
    }

    void WriteOffset(std::size_t offset, std::size_t nBytes) {
        for (std::size_t i = 0; i < nBytes; ++i)
            m_packed.push_back(static_cast<std::uint8_t>(offset >> (8 * i)));
    }

    std::vector<std::uint8_t>& m_packed;
    EBlockForm m_form;
};

// Adds each position to the finder once, in their order.
class CBodyPacker {
  public:
    CBodyPacker(std::span<const std::uint8_t> source, EBlockForm form, std::vector<std::uint8_t>& packed)
        : m_source(source), m_finder(source, form == EBlockForm::Short ? kShortWindow : kLongWindow),
          m_writer(packed, form) {}

    void Pack() {
        std::size_t written = 0, position = 0;
        while (position < m_source.size()) {
            const TFoundMatch match = FindFrom(position);
            if (match.m_nLength == 0) {
                ++position;
                continue;
            }
            m_writer.WriteSequence(m_source.subspan(written, position - written), position - match.m_nPosition,
                                   match.m_nLength);
            position += match.m_nLength;
            while (m_nAdded < position)
                m_finder.Add(m_nAdded++);
            written = position;
        }
        static_cast<void>(m_writer.WriteLiterals(m_source.subspan(written)));
    }

  private:
    TFoundMatch FindAt(std::size_t position) {
        m_nAdded = position + 1;
        return m_finder.FindAndAdd(position);
    }

    // A match at `position`, which moves on as long as the next place has a longer one: that is worth a literal more.
    TFoundMatch FindFrom(std::size_t& position) {
        TFoundMatch match = FindAt(position);
        while (match.m_nLength != 0 && match.m_nLength < kLongEnough && position + 1 < m_source.size()) {
            const TFoundMatch later = FindAt(position + 1);
            if (later.m_nLength <= match.m_nLength)
                break;
            match = later;
            ++position;
        }
        return match;
    }

    std::span<const std::uint8_t> m_source;
    CMatchFinder m_finder;
    CBodyWriter m_writer;
    std::size_t m_nAdded = 0;
};

} // namespace

void PackBody(std::span<const std::uint8_t> source, EBlockForm form, std::vector<std::uint8_t>& packed) {
    CBodyPacker(source, form, packed).Pack();
}

} // namespace quillon
