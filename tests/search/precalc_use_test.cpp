// Precalculated data in the nodes of the search. Lengths come from a retrograde analysis of its own.

#include "search/precalc_use.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "core/generation.h"
#include "core/queries.h"
#include "globalregister/active_tables.h"
#include "globalregister/precalc_format.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

// Rh7-h1 mates.
constexpr const char* kMateInOne = "8/7R/8/8/8/1K6/8/k7";
constexpr const char* kFarMate = "8/8/8/3k4/8/8/8/K6R";

int LengthOf(const char* placement) {
    const TChessboard b = ChessboardFromFEN(placement);
    const auto rook = static_cast<int>(std::find(b.m_board.begin(), b.m_board.end(), static_cast<TFigure>(kWhiteRook)) -
                                       b.m_board.begin());
    return ReferenceTable("R").Length(WhiteKingSquare(b), rook, BlackKingSquare(b));
}

TEST(PrecalcUse, WithoutDataThereIsNoAnswer) {
    CSearchedPosition position(kFarMate, 31);
    EXPECT_FALSE((position.Root().m_wKingState & kPrecalcCanAnswer) != 0);
    EXPECT_EQ(AskPrecalcDataAnyhow(position.Root()), MR_NONE);
    EXPECT_EQ(HalfMovesByData(position.Root()), kUnknownHalfMoves);
}

TEST(PrecalcUse, NodesAreAnsweredByLength) {
    const CActiveTables tables(true, {"R"});
    const int length = LengthOf(kFarMate);
    ASSERT_GT(length, 9);
    CSearchedPosition exact(kFarMate, 2 * length - 1), shorter(kFarMate, 2 * length - 3);
    EXPECT_TRUE((exact.Root().m_wKingState & kPrecalcCanAnswer) != 0);
    EXPECT_EQ(exact.Verdict(), MR_MATE);
    EXPECT_EQ(shorter.Verdict(), MR_NOMATE);
    EXPECT_EQ(exact.Analysis().m_nPositions + shorter.Analysis().m_nPositions, 0u) << "nothing was searched";
    CSearchedPosition other("8/8/8/3k4/8/8/6P1/K6R", 9);
    EXPECT_FALSE((other.Root().m_wKingState & kPrecalcCanAnswer) != 0);
    other.Play("Rh1-h5 Kd5-d4");
    EXPECT_FALSE((other.Now().m_wKingState & kPrecalcCanAnswer) != 0);
}

TEST(PrecalcUse, CapturesBringTheDataWithinReach) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position("8/8/8/3k4/7n/8/8/K6R", 31);
    EXPECT_FALSE((position.Root().m_wKingState & kPrecalcCanAnswer) != 0);
    position.Play("Rh1:h4");
    EXPECT_TRUE((position.Now().m_wKingState & kPrecalcCanAnswer) != 0);
    EXPECT_EQ(position.Verdict(), MR_MATE);
    position.Play("Kd5-d6");
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_MATE);
}

/// The list is gone when its giver is: no node after this one may take it.
TEST(PrecalcUse, AnAnsweredNodeDropsTheListHandedIn) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position(kFarMate, 9); // too few plies for a mate
    TMove foreign[1]{};
    TSearchContext& context = position.Context();
    context.m_pResumeList = foreign;
    context.m_nResumeCount = 1;
    context.m_byResumeList = 2;
    EXPECT_EQ(position.Verdict(false), MR_NOMATE);
    EXPECT_EQ(context.m_byResumeList, 0);
    CSearchedPosition mate(kMateInOne, 1);
    mate.Context().m_byResumeList = 2;
    EXPECT_EQ(mate.Verdict(false), MR_MATE);
    EXPECT_EQ(mate.Context().m_byResumeList, 0);
}

TEST(PrecalcUse, AdditionalMovesAllowALongerMate) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position(kFarMate, 5);
    TSearchContext& context = position.Context();
    const int missing = LengthOf(kFarMate) - 3;
    context.m_nAdditionalMoves = static_cast<std::int16_t>(missing);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NOMATE) << "not in a short-mate search";
    context.m_nQuickerLevel = 1;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_MATE);
    EXPECT_TRUE(context.m_bAdditionalMovesUsed);
    context.m_bAdditionalMovesUsed = false;
    context.m_nAdditionalMoves = static_cast<std::int16_t>(missing - 1);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NOMATE);
    EXPECT_FALSE(context.m_bAdditionalMovesUsed);
}

// A look for a mate in two asks for no longer one, whatever is allowed around it.
TEST(PrecalcUse, MateInTwoIsNoLongerMate) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position(kFarMate, 9);
    position.Context().m_nQuickerLevel = 1;
    position.Context().m_nAdditionalMoves = 40;
    EXPECT_FALSE(HasMateInTwo(position.Root()));
    EXPECT_EQ(position.Context().m_nAdditionalMoves, 40);
}

TEST(PrecalcUse, CastlingIsUnknownToTables) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition castling("8/8/8/3k4/8/8/8/4K2R", 63);
    EXPECT_EQ(AskPrecalcData(castling.Root()), MR_NONE);
    castling.Play("Ke1-e2 Kd5-d4");
    EXPECT_EQ(AskPrecalcData(castling.Now()), MR_MATE);
    castling.Play("Ke2-e1 Kd4-d5");
    EXPECT_EQ(AskPrecalcData(castling.Now()), MR_MATE) << "the right is lost";
}

/// Whether a table of `Pp` that knows no mate is at hand from now on.
bool OffersPawnsWithoutMates(CActiveTables& tables) {
    TElements pawns(TPositionIndexing("Pp").GetSize(), 0);
    pawns[0] = kFlagPawnRanks48;
    tables.Write("Pp", pawns);
    if (!tables.Registers().UnloadAll())
        return false;
    tables.Activate(true);
    return IsTypeAvailable(TPositionIndexing("Pp").nPositionType);
}

TEST(PrecalcUse, EnPassantIsUnknownToTables) {
    CActiveTables tables(false, {});
    ASSERT_TRUE(OffersPawnsWithoutMates(tables));
    CSearchedPosition beside("8/3p4/8/4P3/8/8/8/K6k", 31), apart("8/3p4/8/6P1/8/8/8/K6k", 31);
    EXPECT_EQ(AskPrecalcData(beside.Root()), MR_NOMATE);
    EXPECT_EQ(AskPrecalcData(beside.Play("Ka1-a2 d7-d5").Now()), MR_NONE);
    EXPECT_EQ(AskPrecalcData(apart.Play("Ka1-a2 d7-d5").Now()), MR_NOMATE);
    EXPECT_EQ(AskPrecalcData(beside.Play("Ka2-a3 Kh1-h2").Now()), MR_NOMATE) << "the moment has passed";
}

TEST(PrecalcUse, BishopOffTheBoardIsUnknownToTables) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position(kFarMate, 31);
    position.Root().m_bySideState |= 1;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
}

TEST(PrecalcUse, HeldPawnIsUnknownToTables) {
    CActiveTables tables(false, {});
    ASSERT_TRUE(OffersPawnsWithoutMates(tables));
    CSearchedPosition position("8/3p4/8/6P1/8/8/8/K6k", 31);
    ASSERT_EQ(AskPrecalcData(position.Root()), MR_NOMATE);
    position.Root().m_board[String2Square("d7")] |= kPawnMayNotAdvance;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
}

TEST(PrecalcUse, ForbiddenDataAreSilent) {
    CActiveTables tables(true, {"R"});
    CSearchedPosition position(kMateInOne, 31);
    ASSERT_EQ(HalfMovesByData(position.Root()), 1);
    tables.Registers().SetQuota(0);
    EXPECT_EQ(HalfMovesByData(position.Root()), kUnknownHalfMoves);
}

TEST(PrecalcUse, ShallowNodesDoNotLoad) {
    CActiveTables tables(false, {"R"});
    CSearchedPosition shallow(kFarMate, 19), deep(kFarMate, 21), loaded(kMateInOne, 1);
    EXPECT_EQ(AskPrecalcData(shallow.Root()), MR_NONE);
    EXPECT_EQ(tables.Registers().TotalMemoryInUse(), 0u);
    shallow.Analysis().m_nSolveMode = kAllSolutions;
    EXPECT_NE(AskPrecalcData(shallow.Root()), MR_NONE);
    tables.Registers().Unload(TPositionIndexing("R").nPositionType);
    EXPECT_NE(AskPrecalcData(deep.Root()), MR_NONE);
    EXPECT_EQ(AskPrecalcData(loaded.Root()), MR_MATE) << "what is loaded answers at any depth";
}

/// Bit data of two white pawns and a black one, as files with holes, that know one mate: in `nMoves`, from here.
void WritePawnMate(CActiveTables& tables, const TChessboard& mate, int nMoves) {
    TPositionIndexing indexing("PPp");
    ASSERT_TRUE(ApplyFlags(indexing, kFlagPawnRanks48));
    const std::uint64_t index = indexing.GetIndex(mate);
    const auto write = [&](const std::filesystem::path& path, std::uint64_t nBytes, std::uint64_t at, int byte) {
        tables.Write("PPp", {});
        std::ofstream file(path, std::ios::binary);
        file.put(static_cast<char>(kFlagPawnRanks48));
        file.seekp(static_cast<std::streamoff>(at));
        file.put(static_cast<char>(byte));
        file.close();
        std::filesystem::resize_file(path, nBytes);
    };
    const std::filesystem::path pairs = tables.PathOf("PPp");
    write(std::filesystem::path(pairs) += ".details", indexing.GetSize(), index, nMoves);
    write(pairs, indexing.GetSize() / kPairsOfAByte, index / kPairsOfAByte, 1 << (2 * (index % kPairsOfAByte)));
}

// In the trials of a long analysis the lengths of bit data, which are on disk, are read only behind a change of the
// material, where a long mate would do and pawns are all that is left.
TEST(PrecalcUse, InTrialsLengthsOfPawnsAreReadBehindACapture) {
    CActiveTables tables(false, {});
    WritePawnMate(tables, ChessboardFromFEN("8/7p/8/8/4k3/8/1P3P2/1K6"), 9);
    tables.Registers().SetQuota(1 << 20); // the lengths alone, from disk
    ASSERT_TRUE(tables.Registers().UnloadAll());
    tables.Activate(true);
    CSearchedPosition captured("8/7p/8/8/4k3/8/1P3P2/n1K5", 39), quiet("8/7p/8/8/4k3/8/1P3P2/2K5", 39);
    captured.Play("Kc1-b1 Ke4-d4").Play("Kb1:a1 Kd4-d3").Play("Ka1-b1 Kd3-e4");
    quiet.Play("Kc1-b1 Ke4-d4").Play("Kb1-a1 Kd4-d3").Play("Ka1-b1 Kd3-e4");
    for (CSearchedPosition* const position : {&captured, &quiet}) {
        TSearchContext& context = position->Context();
        ASSERT_EQ(HalfMovesByData(position->Now()), 17) << "outside of trials";
        context.m_nQuickerLevel = 1;
        context.m_nAdditionalMoves = 5;
        context.m_nQuickerStart = 33;
        EXPECT_EQ(HalfMovesByData(position->Now()), 17) << "of a short analysis";
        context.m_nQuickerStart = 25;
        EXPECT_EQ(HalfMovesByData(position->Now()), position == &captured ? 17 : kUnknownHalfMoves);
        context.m_nAdditionalMoves = 4;
        EXPECT_EQ(HalfMovesByData(position->Now()), kUnknownHalfMoves);
    }
}

TEST(PrecalcUse, DamagedDataAreToldOfAndGivenUp) {
    CActiveTables tables(false, {});
    WriteLzw(tables.PathOf("R").string() + ".packed.lzw", ThreeMenElements("R"));
    TElements bytes = ReadWholeFile(tables.PathOf("R").string() + ".packed.lzw").value();
    std::fill(bytes.begin() + 100, bytes.end(), std::uint8_t{255});
    WriteElements(tables.PathOf("R").string() + ".packed.lzw", bytes);
    ASSERT_TRUE(tables.Registers().UnloadAll());
    tables.Activate(true);
    CSearchedPosition position(kMateInOne, 31);
    ASSERT_TRUE((position.Root().m_wKingState & kPrecalcCanAnswer) != 0);
    EXPECT_EQ(position.Verdict(), MR_MATE) << "the search goes on";
    ASSERT_EQ(tables.Boxes().m_told.size(), 1u);
    EXPECT_EQ(tables.Boxes().m_told[0].find("Error: R: "), 0u);
    EXPECT_FALSE(IsPrecalcDataAvailable(TPositionIndexing("R").nPositionType));
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
    EXPECT_EQ(tables.Boxes().m_told.size(), 1u);
}

TEST(StoredTree, OrdersTheRootsMovesByTheirLength) {
    const CActiveTables tables(true, {"R"});
    CSearchedPosition position("8/8/8/8/8/2K5/7R/k7", 19), shorter("8/8/8/8/8/2K5/7R/k7", 17);
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(position.Root(), list);
    EXPECT_EQ(OrderByStoredTree(shorter.Root(), count, list), EStoredTree::Silent);
    ASSERT_EQ(OrderByStoredTree(position.Root(), count, list), EStoredTree::Mates);
    const auto lengthBehind = [](const TMove& move) {
        const reference::Position root = reference::ProblemFromFen("8/8/8/8/8/2K5/7R/k7");
        const reference::Position after = reference::Play(root, {move.m_nFrom, move.m_nTo, 0});
        int longest = 0;
        for (const reference::Move reply : reference::LegalMoves(after)) {
            const reference::Position next = reference::Play(after, reply);
            const auto rook = std::find(next.board.begin(), next.board.end(), 'R') - next.board.begin();
            const int length = rook == kSquares
                                   ? 0
                                   : ReferenceTable("R").Length(reference::KingSquare(next, reference::Side::White),
                                                                static_cast<int>(rook),
                                                                reference::KingSquare(next, reference::Side::Black));
            if (length == 0)
                return 255;
            longest = std::max(longest, length);
        }
        return reference::HasLegalMove(after) ? longest + 1 : reference::IsMate(after) ? 1 : 255;
    };
    int previous = 0;
    for (int i = 0; i < count; ++i) {
        const TMove move = list[i];
        TMove played{move.m_nFrom, move.m_nTo, 0, 0};
        if (MakeWhiteMove(*CopyToChild(&position.Root()), played) != 0) {
            EXPECT_EQ(move.m_nEnPassant, lengthBehind(move)) << i;
        }
        EXPECT_GE(move.m_nEnPassant, previous);
        previous = move.m_nEnPassant;
    }
    TMove silent[kMaxMoves];
    position.Analysis().m_nStoredTreeLevels = 0;
    EXPECT_EQ(OrderByStoredTree(position.Root(), GenerateWhiteMoves(position.Root(), silent), silent),
              EStoredTree::Silent);
}

} // namespace
} // namespace quillon::test
