#include "globalregister/verification/compute_expected.h"

#include <algorithm>
#include <iterator>

#include "core/attacks.h"
#include "core/fen.h"
#include "core/generation.h"
#include "core/makers.h"
#include "globalregister/table_position.h"
#include "globalregister/verification/one_move_types.h"

namespace quillon {

COneMoveTables::COneMoveTables(CTableLengths& own, CGlobalRegisters& registers) : m_own(own) {
    for (const std::string& typeName : TypesAfterOneMove(own.Data().typeName)) {
        const TPositionType type = TPositionIndexing(typeName).nPositionType;
        if (type == own.Data().nPositionType)
            continue;
        auto use = std::make_unique<CRegisterUse>(registers.GetRegisterForTool(type));
        if (!*use && registers.LacksRoom(type))
            throw CNoRoom(NoRoomText(typeName));
        if (!*use)
            continue;
        if (auto lengths = std::make_unique<CTableLengths>(**use, false); !lengths->LooksUnfinished())
            m_others.emplace(type, std::move(lengths));
        m_uses.push_back(std::move(use));
    }
    HoldDetails(registers);
}

// What else is loaded while this is used would not know of them: all has been loaded.
void COneMoveTables::HoldDetails(const CGlobalRegisters& registers) {
    std::uint64_t nFree = registers.Quota() - std::min(registers.Quota(), registers.TotalMemoryInUse());
    nFree -= m_own.HoldDetails(nFree);
    for (const auto& [type, lengths] : m_others)
        nFree -= lengths->HoldDetails(nFree);
}

std::vector<std::filesystem::path> COneMoveTables::OtherFiles() const {
    std::vector<std::filesystem::path> files;
    for (const auto& [type, lengths] : m_others)
        std::ranges::copy(lengths->Files(), std::back_inserter(files));
    return files;
}

CExpectedMate::CExpectedMate(const COneMoveTables& tables)
    : m_tables(tables), m_empty(EmptyChessboard()), m_context(NewSearchContext()) {
    m_context->m_pRoot = &m_empty;
}

bool CExpectedMate::SetPosition(std::uint64_t index) {
    TChessboard& root = RootSlot(*m_context, kPlies);
    root = m_empty;
    root.m_pContext = m_context.get();
    root.m_nMoves = root.m_nInitialMoves = kPlies;
    return GetTablePosition(m_tables.Own().Data(), index, root);
}

int CExpectedMate::ComputeExpected() { return BestWhiteMove(RootSlot(*m_context, kPlies), false, false); }

// The quickest mate so far bounds the other moves; none is quicker than one at once.
int CExpectedMate::BestWhiteMove(TChessboard& b, bool bOtherType, bool bEnPassantOnly) {
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    int best = 0;
    for (int i = 0; i < count && best != 1; ++i) {
        const bool bCapture = b.m_board[list[i].m_nTo] != kNoFigure;
        TChessboard* const child = CopyToChild(&b);
        if (MakeWhiteMove<kLegalityOnly>(*child, list[i]) == 0)
            continue;
        const bool bEnPassant = list[i].m_nEnPassant != 0;
        if (bEnPassantOnly && !bEnPassant)
            continue;
        const bool bOther = bOtherType || bCapture || bEnPassant || PromotionKind(list[i]) != 0;
        if (const int length = AfterWhiteMove(*child, bOther, best); length != 0)
            best = length;
    }
    return best;
}

// Half-moves from before White's move on; 0 if that does not mate, or not in fewer than nBest (0: no bound).
int CExpectedMate::AfterWhiteMove(TChessboard& b, bool bOtherType, int nBest) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(b, list);
    int longest = 0;
    for (int i = 0; i < count; ++i) {
        const bool bCapture = b.m_board[list[i].m_nTo] != kNoFigure;
        TChessboard* const child = CopyToChild(&b);
        if (MakeBlackMove<kLegalityOnly>(*child, list[i], false) == kIllegalMove)
            continue;
        const bool bOther = bOtherType || bCapture || list[i].m_nEnPassant != 0 || PromotionKind(list[i]) != 0;
        const int length = WhiteToMove(*child, bOther);
        if (length <= 0 || (nBest != 0 && length + 2 >= nBest))
            return 0;
        longest = std::max(longest, length);
    }
    if (longest != 0)
        return longest + 2;
    return b.m_blackChecker != kNoChecker ? 1 : 0;
}

// What the table does not know of the position is no mate.
int CExpectedMate::WhiteToMove(TChessboard& b, bool bOtherType) {
    const int length = std::max(Look(b, bOtherType), 0);
    if (!IsEnPassantAvailable(b))
        return length;
    const int capture = BestWhiteMove(b, bOtherType, true);
    return length == 0 || capture == 0 ? length + capture : std::min(length, capture);
}

int CExpectedMate::Look(const TChessboard& b, bool bOtherType) const {
    const CTableLengths* table = &m_tables.Own();
    if (bOtherType) {
        if (CannotMate(b))
            return 0;
        table = m_tables.Find(GetPositionType(b));
        if (table == nullptr)
            throw CNoTable("Register not found or loaded for position " + TablePositionFEN(b) + " !");
    }
    const int length = table->HalfMoves(table->Data().GetIndex(b));
    if (bOtherType && length == kUnknownLength)
        throw CNoTable("The data of type " + table->Data().typeName + " are damaged: they tell no length of position " +
                       TablePositionFEN(b) + ". Verify that type first.");
    return length;
}

std::string NoRoomText(std::string_view typeName) {
    return "Not enough memory for the data of type " + std::string(typeName) +
           ". Allow more, or let data be read from disk (ini: GlobalRegisterForceDiskAccess).";
}

std::string TablePositionFEN(const TChessboard& b) { return WriteFEN(b, false) + " w - -"; }

} // namespace quillon
