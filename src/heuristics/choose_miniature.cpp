#include "heuristics/choose_miniature.h"

#include <algorithm>
#include <array>

#include "core/generation.h"
#include "core/mask_attacks.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/white_promotion.h"

namespace quillon {

namespace {

constexpr int kRunnerRank = 3;    // a black pawn on the fourth rank or beyond (as an index) is on its way
constexpr int kBesideKing = 2;    // king steps within which a figure belongs to the cage
constexpr int kCagedCategory = 2; // below: the king has one step at most within his cage

bool IsPawn(const TChessboard& b, int square) { return KindOf(b.m_board[static_cast<std::size_t>(square)]) == kPawn; }

bool HasPawnBeforeIt(const TChessboard& b, int square) {
    for (int ahead = square - 8; ahead >= 0; ahead -= 8)
        if (IsPawn(b, ahead))
            return true;
    return false;
}

/// Black pawns on the fourth rank or beyond with no pawn before them. Figures in their way come and go.
int CountBlackRunners(const TChessboard& b) {
    int runners = 0;
    for (int square = 0; square < SquareAt(0, kRunnerRank + 1); ++square)
        runners +=
            IsPawn(b, square) && IsBlack(b.m_board[static_cast<std::size_t>(square)]) && !HasPawnBeforeIt(b, square);
    return runners;
}

int WhiteMinors(const TChessboard& b) { return b.m_whiteBishops + b.m_whiteKnights; }

// --- The rules of miniatures

/// Without a queen and with one rook at most White mates with the help of its king, unless Black's own men do it.
bool MustKingsMeet(const TChoice& c) {
    return c.m_root.m_whiteQueens == 0 && c.m_root.m_whiteRooks <= 1 && c.m_facts.m_nWhiteFigures <= 2 &&
           c.m_root.m_whitePawns <= 2 && !HasAdvancedPawn(c.m_root) && c.m_facts.m_nFreeSquares >= 2 &&
           c.m_facts.m_nBlackMenAroundKing <= 1;
}
void LetKingsMeet(TChoice& c) {
    c.Set(SH_AREKINGSNEAR);
    // Kings two apart stand face to face; it is a figure that mates then.
    c.m_context.m_nKingsNearBonus = static_cast<std::uint8_t>(1 + c.m_facts.m_nBlackMenAroundKing);
}

/// Against a bare king no time is to be lost with the own one.
bool IsBlackBare(const TChoice& c) { return BlackMen(c.m_root) == 0; }

/// A black queen in play can chase the white king for as long as she likes. One that is shut in cannot.
bool CanBlackQueenChase(const TChoice& c) {
    return c.m_root.m_blackQueens == 1 && c.m_facts.m_nWhiteHeavy > 0 && c.m_facts.m_nMoveCategory >= kCagedCategory;
}
void ForbidQueenChecks(TChoice& c) {
    c.Set(SH_DONTLETBLACKQUEENCHECKTWICE);
    c.m_context.m_bQueenCheckRelaxable = true;
}

/// Black has only pawns, and the cage is shut: whatever is promoted must stay where it is.
bool MustPromotedFiguresStay(const TChoice& c) {
    return c.m_facts.m_nBlackFigures == 0 && c.m_facts.m_nMoveCategory == 0 && CountBlackRunners(c.m_root) > 0;
}

/// Black gets a queen if a pawn comes through; mate has to be there before she plays.
bool MustPromotedQueenStay(const TChoice& c) {
    return !c.Has(SH_DONTLETPROMOTEDFIGUREMOVE) && c.m_root.m_blackQueens == 0 && CountBlackRunners(c.m_root) > 0;
}
void KeepPromotedQueen(TChoice& c) {
    c.Set(SH_DONTLETPROMOTEDQUEENMOVE);
    c.m_context.m_bPromotedQueenRelaxable = CountBlackRunners(c.m_root) > 1; // one of them may well get through
}

/// A bishop alone has to do all the work.
bool IsBishopAlone(const TChoice& c) { return c.m_facts.m_nWhiteFigures == 1 && c.m_root.m_whiteBishops == 1; }
void CountBishopAsMajor(TChoice& c) { c.m_context.m_bBishopIsMajor = true; }

constexpr std::array kMiniatureRules{
    TChoiceRule{"miniature: the kings have to meet", MustKingsMeet, LetKingsMeet},
    TChoiceRule{"miniature: bare black king", IsBlackBare, SetBits<SH_DONTRECEDEBLACKKING>},
    TChoiceRule{"miniature: the last heavy figure decides", DependsOnHeavyFigure, SetBits<SH_SAVEQUEENROOK>},
    TChoiceRule{"miniature: black queen in play", CanBlackQueenChase, ForbidQueenChecks},
    TChoiceRule{"miniature: promoted figures of a shut cage", MustPromotedFiguresStay,
                SetBits<SH_DONTLETPROMOTEDFIGUREMOVE>},
    TChoiceRule{"miniature: black pawn about to queen", MustPromotedQueenStay, KeepPromotedQueen},
    TChoiceRule{"miniature: lone white bishop", IsBishopAlone, CountBishopAsMajor},
};

// --- Watched figures

/// How far the black figure on the square can move: 0 not at all, 1 one field only, 2 further.
int RoomOf(const TChessboard& b, TSquare square) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackFigureMoves(b, square, list);
    TMask fields = 0;
    for (int i = 0; i < count; ++i)
        fields |= MaskOf(list[i].m_nTo);
    if (fields == 0)
        return 0;
    return std::popcount(fields) == 1 && KingSteps(square, LowestSquare(fields)) == 1 ? 1 : 2;
}

struct TWatchedChoice {
    std::array<TSquare, kMaxBlockedFigures> m_squares{};
    std::size_t m_nCount = 0;
};

/// Black figures, no pawns, of at most this room and within so many steps of their king; the nearest first.
TWatchedChoice FindShutFigures(const TChoice& c, int nRoom, int nSteps) {
    const TChessboard& b = c.m_root;
    TWatchedChoice found;
    for (int steps = 1; steps <= nSteps; ++steps)
        for (int square = 0; square < kSquares && found.m_nCount < found.m_squares.size(); ++square) {
            const auto at = static_cast<TSquare>(square);
            if (CanBeWatched(b, at) && KindOf(b.m_board[at]) != kPawn && KingSteps(at, BlackKingSquare(b)) == steps &&
                RoomOf(b, at) <= nRoom)
                found.m_squares[found.m_nCount++] = at;
        }
    return found;
}

void Watch(TChoice& c, const TWatchedChoice& found) {
    SetWatchedFigures(c.m_context, c.m_root, std::span(found.m_squares).first(found.m_nCount));
    c.Set(SH_DONTLETFIGUREUNBLOCK);
    // Those far from the king matter least: if the set proves too strict, they are given up first.
    for (std::size_t i = 0; i < found.m_nCount; ++i)
        if (KingSteps(found.m_squares[i], BlackKingSquare(c.m_root)) > kBesideKing)
            c.m_context.m_DropList[c.m_context.m_nDropCount++] = found.m_squares[i];
    c.m_context.m_bDropBlockedFigures = c.m_context.m_nDropCount > 0 && c.m_context.m_nDropCount < found.m_nCount;
    c.m_context.m_nDropThreshold = static_cast<std::int8_t>(found.m_nCount);
}

constexpr int kAnywhere = 7;
TWatchedChoice FiguresOfShutCage(const TChoice& c) { return FindShutFigures(c, 1, kAnywhere); }
TWatchedChoice FiguresOfWideCage(const TChoice& c) { return FindShutFigures(c, 0, kBesideKing); }

bool HasShutCage(const TChoice& c) {
    return c.m_facts.m_nMoveCategory < kCagedCategory && FiguresOfShutCage(c).m_nCount > 0;
}
void WatchShutCage(TChoice& c) { Watch(c, FiguresOfShutCage(c)); }
bool HasWideCage(const TChoice& c) {
    return c.m_facts.m_nMoveCategory < kConfinedCategory && FiguresOfWideCage(c).m_nCount > 0;
}
void WatchWideCage(TChoice& c) { Watch(c, FiguresOfWideCage(c)); }

constexpr std::array kWatchRules{
    TChoiceRule{"watched figures: all that are shut in, the king too", HasShutCage, WatchShutCage},
    TChoiceRule{"watched figures: those that cannot move beside the king", HasWideCage, WatchWideCage},
};

} // namespace

bool DependsOnHeavyFigure(const TChoice& c) {
    return c.m_facts.m_nWhiteHeavy >= 1 && c.m_facts.m_nWhiteHeavy <= 2 && WhiteMinors(c.m_root) <= 1 &&
           !HasAdvancedPawn(c.m_root) && c.m_facts.m_nMoveCategory > 0;
}

void ChooseForMiniature(TChoice& choice) {
    if (choice.m_facts.m_nWhiteFigures + choice.m_facts.m_nBlackFigures <= kMiniatureFigures)
        TakeAllRules(kMiniatureRules, choice);
}

void ChooseWatchedFigures(TChoice& choice) { TakeFirstRule(kWatchRules, choice); }

} // namespace quillon
