#include "heuristics/choose_forced_mate.h"

#include <array>

#include "heuristics/black_mobility.h"

namespace quillon {

namespace {

// Depth codes of forced_mate_depth.h.
constexpr std::uint8_t kChecksOnly = 2;
constexpr std::uint8_t kThreatsOfMate = 3;

constexpr int kPreliminaryPlies = 61; // from here on a first run with the edge heuristic alone pays
constexpr int kVetoPlies = 23;        // a sea snake longer than that is not to be found by force

void SetDepth(TChoice& c, std::uint8_t depth, std::uint8_t relaxations) {
    c.Set(SH_FINDFORCEDMATE);
    c.m_context.m_nFfmDepth = c.m_context.m_nFfmStartDepth = depth;
    c.m_context.m_nFfmRelaxations = relaxations;
}

/// Is a * nNumerator / nDenominator below b?
constexpr bool TimesBelow(int a, int nNumerator, int nDenominator, int b) { return a * nNumerator < b * nDenominator; }
constexpr bool TimesAtMost(int a, int nNumerator, int nDenominator, int b) {
    return a * nNumerator <= b * nDenominator;
}

// --- Check after check: how many steps deeper before the run is given up

bool IsBlackAheadAtCloseQuarters(const TChoice& c) {
    const TPositionFacts& f = c.m_facts;
    return TimesBelow(f.m_nBlackMaterial, 1, 2, f.m_nWhiteMaterial) &&
           TimesAtMost(f.m_nWhiteMaterial, 3, 2, f.m_nBlackMaterial) && f.m_nWhiteFigures < 3 && f.m_nKingDistance == 2;
}
bool IsBlackFarAheadButShutIn(const TChoice& c) {
    const TPositionFacts& f = c.m_facts;
    return f.m_nWhiteHeavy == 0 && f.m_nKingDistance == 2 && TimesBelow(f.m_nWhiteMaterial, 5, 2, f.m_nBlackMaterial) &&
           f.m_nFreeSquares == 0;
}
bool IsOneFigureAgainstManyMoves(const TChoice& c) {
    return c.m_facts.m_nWhiteFigures == 1 && c.m_facts.m_nFreeSquares > 1 && c.m_facts.m_nBlackMoves > 3;
}
template <std::uint8_t nTimes> void RelaxTimes(TChoice& c) { c.m_context.m_nFfmRelaxations = nTimes; }

constexpr std::array kRelaxationCounts{
    TChoiceRule{"forced mate: Black ahead, kings face to face", IsBlackAheadAtCloseQuarters, RelaxTimes<2>},
    TChoiceRule{"forced mate: Black far ahead, his king shut in", IsBlackFarAheadButShutIn, RelaxTimes<3>},
    TChoiceRule{"forced mate: one figure against many moves", IsOneFigureAgainstManyMoves, RelaxTimes<1>},
};

void GiveChecks(TChoice& c) {
    SetDepth(c, kChecksOnly, 0);
    c.m_context.m_nFfmWithOther = 1;
}
constexpr TChoiceRule kCheckRule{"forced mate: check after check", MustGiveChecks, GiveChecks};

// --- Else: the level at which to start

/// Pawns and one light figure manoeuvre; they threaten nothing for most of the way.
bool IsManoeuvring(const TChoice& c) { return c.m_facts.m_nWhiteHeavy == 0 && c.m_facts.m_nWhiteFigures <= 1; }
void LeaveItOut(TChoice&) {}

bool IsQueenLongWay(const TChoice& c) { return c.m_root.m_whiteQueens > 0 && c.m_facts.m_nPlies >= 31; }
bool IsLongWay(const TChoice& c) { return c.m_facts.m_nPlies >= 31; }
bool HasChecks(const TChoice& c) { return c.m_facts.m_nWhiteChecks > 0; }
bool Always(const TChoice&) { return true; }
template <std::uint8_t nDepth, std::uint8_t nTimes> void StartAt(TChoice& c) { SetDepth(c, nDepth, nTimes); }

constexpr std::array kLevels{
    TChoiceRule{"forced mate: left out, White manoeuvres", IsManoeuvring, LeaveItOut},
    TChoiceRule{"forced mate: a queen's long way", IsQueenLongWay, StartAt<kChecksOnly, 3>},
    TChoiceRule{"forced mate: a long way", IsLongWay, StartAt<kThreatsOfMate, 2>},
    TChoiceRule{"forced mate: checks at hand", HasChecks, StartAt<kChecksOnly, 3>},
    TChoiceRule{"forced mate: threats", Always, StartAt<kThreatsOfMate, 2>},
};

/// Where squares of a sea snake and watched figures were found the way leads through quiet moves.
bool IsVetoed(const TChoice& c) {
    return c.Has(SH_SEASNAKE) || (c.m_context.m_nSeaSnakeApproach != kNoSquare && c.m_facts.m_nPlies > kVetoPlies &&
                                  c.m_context.m_nBlockedFigures > 0);
}

} // namespace

int RateForcingPlay(const TChoice& c) {
    const TPositionFacts& f = c.m_facts;
    if (f.m_nWhiteFigures == 0)
        return 0;
    int rate = f.m_nWhiteHeavy > 0 ? 1 : 0;
    rate += f.m_nWhiteChecks > 0 ? 2 : 0;
    rate += f.m_nBlackMaterial > f.m_nWhiteMaterial ? 1 : 0;
    rate -= f.m_nFreeSquares > 4 && f.m_nWhiteChecks == 0 ? 2 : 0; // he is not to be caught by force yet
    return rate;
}

bool MustGiveChecks(const TChoice& c) {
    const TPositionFacts& f = c.m_facts;
    return f.m_nWhiteChecks > 0 && TimesAtMost(f.m_nWhiteMaterial, 3, 2, f.m_nBlackMaterial) &&
           DefendsByChecks(c.m_root);
}

void ChooseForcedMate(TChoice& c) {
    if (c.m_facts.m_nPlies < kShortestForcedMatePlies || c.m_facts.m_nMoveCategory == 0 || RateForcingPlay(c) <= 0 ||
        IsVetoed(c))
        return;
    if (TakeFirstRule(std::span(&kCheckRule, 1), c))
        TakeFirstRule(kRelaxationCounts, c);
    else
        TakeFirstRule(kLevels, c);
    c.m_context.m_bFfmPreliminary = c.Has(SH_FINDFORCEDMATE) && c.m_context.m_nFfmWithOther == -1 &&
                                    c.m_facts.m_nPlies >= kPreliminaryPlies && c.m_facts.m_nRing <= 1;
}

} // namespace quillon
