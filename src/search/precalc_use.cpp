#include "search/precalc_use.h"

#include <algorithm>
#include <new>

#include "core/attacks.h"
#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/generation.h"
#include "core/maker_steps.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "globalregister/active_registers.h"
#include "search/analysis.h"
#include "search/control.h"

namespace quillon {

namespace {

/// Does a heuristic keep a black pawn from advancing?
bool HasHeldPawn(const TChessboard& b) {
    return b.m_blackPawns > 0 &&
           std::ranges::any_of(b.m_board, [](TFigure figure) { return (figure & kPawnMayNotAdvance) != 0; });
}

/// Would the table's answer be about this very position?
bool IsKnownToTables(const TChessboard& b) {
    return BishopMode(b) == 0 && !HasHeldPawn(b) && !IsEnPassantAvailable(b) &&
           (WhiteCastlingsOnBoard(b) == 0 || WhiteCastlingsLeft(b) == 0) &&
           (BlackCastlingsOnBoard(b) == 0 || BlackCastlingsLeft(b) == 0);
}

/// Null: there are no data, or this solve is not to use them.
CGlobalRegisters* RegistersFor(const TChessboard& b) {
    return ArePrecalcDataAtHand() && (b.m_wKingState & kNoPrecalcData) == 0 ? ActiveRegisters() : nullptr;
}

TSearchGate GateOf(const TChessboard& b) {
    return {(b.m_pAnalysis->m_nSolveMode & kAllSolutions) != 0,
            b.m_pContext->m_nPositionsLeft != TSearchContext::kNoBound, IsStopping};
}

/// Has the material changed in the last moves?
bool WasMaterialChanged(const TChessboard& b) {
    constexpr int kPliesBack = 13;
    const TChessboard* now = &b;
    for (int i = 0; i < kPliesBack && now->m_pPrevious != nullptr; ++i, now = now->m_pPrevious) {
        const TFigure captured = KindOf(now->m_pPrevious->m_board[now->m_lastMove.m_nTo]);
        const bool bNullMove = now->m_lastMove.m_nFrom == now->m_lastMove.m_nTo;
        if (PromotionKind(now->m_lastMove) != 0 || (captured != 0 && captured != kPawn && !bNullMove))
            return true;
    }
    return false;
}

/// Bit data tell lengths from disk only: in the trials of a long analysis that is worth it where a table has just been
/// reached and a long mate would do.
bool IsLengthWorthReading(const TChessboard& b) {
    constexpr int kLongAnalysis = 14; // plies before the short-mate search
    constexpr int kFewAdditional = 4;
    const TSearchContext& context = *b.m_pContext;
    if (context.m_nQuickerLevel == 0 || b.m_nInitialMoves - context.m_nQuickerStart < kLongAnalysis)
        return true;
    return context.m_nAdditionalMoves > kFewAdditional && WhiteFigureCount(b) + BlackFigureCount(b) <= 1 &&
           WasMaterialChanged(b);
}

} // namespace

std::uint16_t HalfMovesByData(const TChessboard& b) {
    CGlobalRegisters* const registers = RegistersFor(b);
    if (registers == nullptr || !IsKnownToTables(b))
        return kUnknownHalfMoves;
    try {
        const CRegisterUse data(registers->GetRegister(b, GateOf(b)));
        if (!data || (data->bBitData && !IsLengthWorthReading(b)))
            return kUnknownHalfMoves;
        return data->ProvedHalfMoves(b);
    } catch (const ChessException& failure) {
        registers->Discard(GetPositionType(b), failure.what()); // the search goes on without them
    } catch (const std::bad_alloc&) {                           // of a decoder
    }
    return kUnknownHalfMoves;
}

namespace {

/// What one custom type says.
enum class ECustomAnswer : std::uint8_t {
    Mates,  // in time
    Silent, // or its data are damaged, or there was no memory: the next one may mate
    NoType, // there is no further one
};

ECustomAnswer AskNextCustomType(CGlobalRegisters& registers, const TChessboard& b, std::size_t& next) {
    TPositionType asked = 0;
    try {
        const CRegisterUse data(registers.GetCustomRegister(b, GateOf(b), next));
        if (!data)
            return ECustomAnswer::NoType;
        asked = data->nPositionType;
        const std::uint16_t n = data->ProvedHalfMoves(b);
        return n != 0 && n != kUnknownHalfMoves && n <= b.m_nMoves ? ECustomAnswer::Mates : ECustomAnswer::Silent;
    } catch (const ChessException& failure) {
        registers.Discard(asked, failure.what());
    } catch (const std::bad_alloc&) { // of a decoder
    }
    return ECustomAnswer::Silent;
}

/// A custom type knows only play that leaves its frozen men where they are: a mate by it is one, but there may be a
/// shorter one, and where it has none there may be one. Of the types that the position is of, any may mate.
bool MatesWithFrozenMen(const TChessboard& b) {
    CGlobalRegisters* const registers = RegistersFor(b);
    if (registers == nullptr || !registers->HasCustomTypes() || !IsKnownToTables(b))
        return false;
    ECustomAnswer answer = ECustomAnswer::Silent;
    for (std::size_t next = 0; answer == ECustomAnswer::Silent;)
        answer = AskNextCustomType(*registers, b, next);
    return answer == ECustomAnswer::Mates;
}

} // namespace

TMateResult AskPrecalcDataAnyhow(const TChessboard& b) {
    const int m = b.m_nMoves;
    const int n = HalfMovesByData(b);
    if (n == kUnknownHalfMoves)
        return MatesWithFrozenMen(b) ? MR_MATE : MR_NONE;
    if (n == 0)
        return MR_NOMATE;
    if (n <= m)
        return MR_MATE;
    TSearchContext& context = *b.m_pContext;
    if (context.m_nQuickerLevel == 0 || n > m + 2 * context.m_nAdditionalMoves)
        return MR_NOMATE;
    context.m_bAdditionalMovesUsed = true;
    return MR_MATE;
}

// --- the order of White's moves

namespace {

constexpr int kUnknownLength = 65535;

bool IsStoredTreeAsked(const TChessboard& p) {
    constexpr int kLeastPliesMore = 13; // above two for each man: shorter analyses are quick without it
    const int nMen = WhiteMen(p) + BlackMen(p) + 2;
    return ArePrecalcDataAtHand() && (p.m_nInitialMoves - p.m_nMoves) / 2 < p.m_pAnalysis->m_nStoredTreeLevels &&
           nMen <= kMaxTypeMen + 2 && p.m_nMoves >= 2 * nMen + kLeastPliesMore;
}

/// Half-moves until a white move, made in `child`, mates against every reply; 0: it does not.
int HalfMovesBehind(TChessboard& child) {
    TMove replies[kMaxMoves];
    const int count = GenerateBlackMoves(child, replies);
    int longest = 0;
    bool bAnyLegal = false;
    for (int i = 0; i < count; ++i) {
        TChessboard* const reply = CopyToChild(&child);
        const int stands = MakeBlackMove(*reply, replies[i], false);
        if (stands == kIllegalMove)
            continue;
        bAnyLegal = true;
        const int n = stands == kCertainEscape ? 0 : HalfMovesByData(*reply);
        if (n == 0 || n == kUnknownHalfMoves)
            return n == 0 ? 0 : kUnknownLength;
        longest = std::max(longest, n);
    }
    if (!bAnyLegal)
        return child.m_blackChecker != kNoChecker ? 1 : 0;
    return longest + 2;
}

std::uint8_t HintOf(int nHalfMoves) {
    constexpr int kLongestHint = 254;
    if (nHalfMoves == 0 || nHalfMoves == kUnknownLength)
        return kNoStoredHint;
    return static_cast<std::uint8_t>(std::min((nHalfMoves + 1) / 2, kLongestHint));
}

} // namespace

bool MatesByData(TChessboard& child, int nPlies) {
    const int n = HalfMovesBehind(child);
    return n != 0 && n != kUnknownLength && n <= nPlies;
}

EStoredTree OrderByStoredTree(TChessboard& p, int nMoves, TMove* list) {
    if (!IsStoredTreeAsked(p))
        return EStoredTree::Silent;
    maker_steps::UpdatePrecalcBits(p);
    if ((p.m_wKingState & kPrecalcCanAnswer) == 0 || HalfMovesByData(p) == kUnknownHalfMoves)
        return EStoredTree::Silent;
    bool bMates = false;
    for (int i = 0; i < nMoves; ++i) {
        TMove move = {list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0};
        TChessboard* const child = CopyToChild(&p);
        const int n = MakeWhiteMove(*child, move) != 0 ? HalfMovesBehind(*child) : 0;
        list[i].m_nEnPassant = HintOf(n);
        bMates = bMates || (n != 0 && n <= p.m_nMoves);
    }
    std::stable_sort(list, list + nMoves,
                     [](const TMove& a, const TMove& b) { return a.m_nEnPassant < b.m_nEnPassant; });
    return bMates ? EStoredTree::Mates : EStoredTree::Ordered;
}

} // namespace quillon
