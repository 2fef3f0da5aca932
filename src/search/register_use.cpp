#include "search/register_use.h"

#include "core/attacks.h"
#include "core/castling.h"
#include "search/analysis.h"
#include "search/control.h"

namespace quillon {

namespace {

/// Short analyses pay more for storing than they win.
constexpr int kShortestStoredAnalysis = 10; // plies of the root
constexpr int kFewestStoredPlies = 3;

bool IsTrialWithAdditionalMoves(const TSearchContext& context) {
    return context.m_nQuickerLevel != 0 && context.m_nAdditionalMoves != 0;
}

/// Under the key of a position whose bishop is off the board proofs of another kind may stand: of the bishop being on
/// that very square. Only doubt, which has the mode in its signature, is surely of this kind.
TMateResult FindInBishopMode(const TChessboard& b, ITemporaryRegister& known) {
    return known.Find(WithRemovedBishop(b), b.m_nMoves, b.m_nMoves) == MR_DOUBTFUL ? MR_DOUBTFUL : MR_NONE;
}

TMateResult Find(const TChessboard& b, int nMaxMoves) {
    ITemporaryRegister& known = *b.m_pAnalysis->m_pRegister;
    const TMateResult found = IsBishopRemoved(b) ? FindInBishopMode(b, known) : known.Find(b, b.m_nMoves, nMaxMoves);
    const bool bUseless = found <= MR_NONE || (found == MR_DOUBTFUL && b.m_byPass >= 2);
    return bUseless ? MR_NONE : found;
}

} // namespace

bool IsRegisterInForce(const TChessboard& b) {
    return b.m_pAnalysis->m_pRegister != nullptr && b.m_nInitialMoves >= kShortestStoredAnalysis;
}

bool IsRegisterSafe(const TChessboard& b) {
    if (b.m_pPrevious == nullptr)
        return true;
    return !IsEnPassantAvailable(b) && WhiteCastlingsOnBoard(b) == WhiteCastlingsLeft(b) &&
           BlackCastlingsOnBoard(b) == BlackCastlingsLeft(b);
}

TChessboard WithRemovedBishop(const TChessboard& b) {
    TChessboard key = b;
    if (!IsBishopRemoved(b))
        return key;
    const int colour = RemovedBishopColour(b);
    for (int s = 0; s < kSquares; ++s)
        if (key.m_board[static_cast<std::size_t>(s)] == kNoFigure && ColourOf(s) == colour) {
            PutFigure(key, static_cast<TSquare>(s), kBlackBishop);
            break;
        }
    return key;
}

TMateResult AskRegister(const TChessboard& b) {
    if (!IsRegisterInForce(b))
        return MR_NONE;
    TSearchContext& context = *b.m_pContext;
    const bool bTrial = IsTrialWithAdditionalMoves(context);
    if ((b.m_nMoves < kFewestStoredPlies && !bTrial) || !IsRegisterSafe(b))
        return MR_NONE;
    const TMateResult found = Find(b, bTrial ? b.m_nMoves + 2 * context.m_nAdditionalMoves : b.m_nMoves);
    if (found == MR_QUICKER) {
        context.m_bAdditionalMovesUsed = true;
        return MR_MATE;
    }
    if (found == MR_NOMATE || found == MR_DOUBTFUL)
        context.m_lastDoubtCause = found == MR_NOMATE ? 0 : ~std::uint32_t{0};
    return found;
}

TMateResult AskRegisterAboutReply(const TChessboard& child, int q) {
    if (q < kFewestStoredPlies && !IsTrialWithAdditionalMoves(*child.m_pContext))
        return MR_NONE;
    return AskRegister(child);
}

bool MayStore(const TChessboard& b) {
    return IsRegisterInForce(b) && b.m_nMoves >= kFewestStoredPlies && !b.m_pContext->m_bNoStore && !IsStopping(b) &&
           IsRegisterSafe(b);
}

void StoreVerdict(const TChessboard& b, TMateResult verdict) {
    if (!MayStore(b))
        return;
    const TSearchContext& context = *b.m_pContext;
    const int nMoves =
        b.m_nMoves + (verdict == MR_MATE && context.m_bAdditionalMovesUsed ? 2 * context.m_nAdditionalMoves : 0);
    const TChessboard key = WithRemovedBishop(b);
    if (verdict == MR_DOUBTFUL)
        b.m_pAnalysis->m_pRegister->InsertDoubtful(key, nMoves);
    else
        b.m_pAnalysis->m_pRegister->Insert(key, nMoves, verdict);
}

void StoreOtherPromotions(const TChessboard& b) {
    if (!MayStore(b))
        return;
    const TSquare square = b.m_lastMove.m_nTo;
    for (const TFigure kind : {kQueen, kRook, kBishop, kKnight}) {
        if (kind == KindOf(b.m_board[square]))
            continue;
        TChessboard other = b;
        --CounterOf(other, other.m_board[square]);
        PutFigure(other, square, kBlack | kind);
        StoreVerdict(other, MR_MATE);
    }
}

} // namespace quillon
