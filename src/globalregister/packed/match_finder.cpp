#include "globalregister/packed/match_finder.h"

#include <algorithm>
#include <bit>

#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/sequence_format.h"
#include "platform/prefetch.h"

namespace quillon {

namespace {

constexpr std::array<std::size_t, 3> kPrefix{kMinMatch, 8, kMinFarMatch};
constexpr std::array<int, 3> kSteps{4, 12, 48}; // candidates looked at; more win less than a percent
constexpr int kMinHashBits = 8;
constexpr int kMaxHashBits = 20;

constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15u;

template <std::size_t nBytes> std::uint64_t Mixed(const std::uint8_t* bytes) {
    if constexpr (nBytes == 4)
        return LoadLittleEndian<std::uint32_t>(bytes) * kMix;
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i + 8 <= nBytes; i += 8)
        hash = (std::rotl(hash, 29) ^ LoadLittleEndian<std::uint64_t>(bytes + i)) * kMix;
    if constexpr (nBytes % 8 != 0)
        hash = (std::rotl(hash, 29) ^ LoadLittleEndian<std::uint32_t>(bytes + nBytes - 4)) * kMix;
    return hash;
}

// How many of at most `limit` bytes are equal.
std::size_t EqualBytes(const std::uint8_t* a, const std::uint8_t* b, std::size_t limit) {
    std::size_t n = 0;
    for (; n + 8 <= limit; n += 8) {
        const std::uint64_t difference =
            LoadLittleEndian<std::uint64_t>(a + n) ^ LoadLittleEndian<std::uint64_t>(b + n);
        if (difference != 0)
            return n + static_cast<std::size_t>(std::countr_zero(difference)) / 8;
    }
    while (n < limit && a[n] == b[n])
        ++n;
    return n;
}

} // namespace

// From farther away than a short offset reaches, only what has the longest prefix is long enough to be told.
CMatchFinder::CMatchFinder(std::span<const std::uint8_t> data, std::size_t nWindow) : m_data(data) {
    for (std::size_t i = 0; i < kLevels; ++i) {
        TLevel& level = m_levels[i];
        level.m_nWindow = i + 1 < kLevels ? std::min(nWindow, kShortWindow) : nWindow;
        const std::size_t nPlaces = std::bit_ceil(std::min(data.size(), level.m_nWindow));
        const int nHashBits = std::clamp(static_cast<int>(std::bit_width(nPlaces)) - 1, kMinHashBits, kMaxHashBits);
        level.m_nPlaceMask = nPlaces - 1;
        level.m_nShift = 64 - nHashBits;
        level.m_newest.resize(std::size_t{1} << nHashBits);
        level.m_earlier.resize(nPlaces);
    }
    for (std::size_t position = 0; position < kAhead; ++position) {
        Foresee<0>(position);
        Foresee<1>(position);
        Foresee<2>(position);
    }
}

// Hashes the position and has its chain brought near: by the time that it is added it will be there.
template <std::size_t nLevel> void CMatchFinder::Foresee(std::size_t position) {
    if (position >= m_data.size() || m_data.size() - position < kPrefix[nLevel])
        return;
    TLevel& level = m_levels[nLevel];
    const auto hash = static_cast<std::uint32_t>(Mixed<kPrefix[nLevel]>(m_data.data() + position) >> level.m_nShift);
    level.m_ahead[position % kAhead] = hash;
    Prefetch(level.m_newest.data() + hash);
}

// Result: the newest place of the chain before, + 1.
template <std::size_t nLevel> std::size_t CMatchFinder::AddTo(std::size_t position) {
    if (m_data.size() - position < kPrefix[nLevel])
        return 0;
    TLevel& level = m_levels[nLevel];
    std::uint32_t& newest = level.m_newest[level.m_ahead[position % kAhead]];
    Foresee<nLevel>(position + kAhead);
    const std::uint32_t before = newest;
    level.m_earlier[position & level.m_nPlaceMask] = before;
    newest = static_cast<std::uint32_t>(position + 1);
    return before;
}

void CMatchFinder::Add(std::size_t position) {
    AddTo<0>(position);
    AddTo<1>(position);
    AddTo<2>(position);
}

void CMatchFinder::Try(std::size_t candidate, std::size_t position, TFoundMatch& best) const {
    const std::size_t offset = position - candidate;
    std::size_t limit = m_data.size() - position;
    if (offset < kOverlapOffset)
        limit = std::min(limit, offset);
    const std::uint8_t* const here = m_data.data() + position;
    const std::uint8_t* const there = m_data.data() + candidate;
    if (offset < kMinOffset || limit <= best.m_nLength || here[best.m_nLength] != there[best.m_nLength])
        return;
    const std::size_t length = EqualBytes(here, there, limit);
    const std::size_t least = offset < kShortWindow ? kMinMatch : kMinFarMatch;
    if (length >= least && length > best.m_nLength)
        best = {candidate, length};
}

template <std::size_t nLevel>
void CMatchFinder::SearchChain(std::size_t next, std::size_t position, TFoundMatch& best) const {
    const TLevel& level = m_levels[nLevel];
    for (int step = 0; step < kSteps[nLevel] && next != 0; ++step) {
        const std::size_t candidate = next - 1;
        if (position - candidate >= level.m_nWindow)
            return; // and so are the older ones
        Try(candidate, position, best);
        next = level.m_earlier[candidate & level.m_nPlaceMask];
    }
}

TFoundMatch CMatchFinder::FindAndAdd(std::size_t position) {
    const std::array<std::size_t, kLevels> newest{AddTo<0>(position), AddTo<1>(position), AddTo<2>(position)};
    TFoundMatch best;
    SearchChain<2>(newest[2], position, best);
    if (best.m_nLength < kPrefix[2])
        SearchChain<0>(newest[0], position, best);
    // Where no four bytes are repeated, what the chain of eight holds only looks alike.
    if (best.m_nLength != 0 && best.m_nLength < kPrefix[2])
        SearchChain<1>(newest[1], position, best);
    return best;
}

} // namespace quillon
