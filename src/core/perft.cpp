#include "core/perft.h"

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"

namespace quillon {

namespace {

int Generate(const TChessboard& b, TMove* list) {
    return IsWhiteToMove(b) ? GenerateWhiteMoves(b, list) : GenerateBlackMoves(b, list);
}

bool Make(TChessboard& child, TMove& move) {
    return (IsWhiteToMove(child) ? MakeWhiteMove<kLegalityOnly>(child, move)
                                 : MakeBlackMove<kLegalityOnly>(child, move, false)) != 0;
}

} // namespace

std::uint64_t PerftDivide(TChessboard& root, int nDepth, const std::function<void(const TMove&, std::uint64_t)>& tell) {
    TMove list[kMaxMoves];
    const int count = Generate(root, list);
    std::uint64_t total = 0;
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&root);
        if (!Make(*child, list[i]))
            continue;
        const std::uint64_t leaves = Perft(*child, nDepth - 1);
        tell(list[i], leaves);
        total += leaves;
    }
    return total;
}

std::uint64_t Perft(TChessboard& root, int nDepth) {
    if (nDepth <= 0)
        return 1;
    TMove list[kMaxMoves];
    const int count = Generate(root, list);
    std::uint64_t leaves = 0;
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&root);
        if (Make(*child, list[i]))
            leaves += Perft(*child, nDepth - 1);
    }
    return leaves;
}

} // namespace quillon
