// Precalculated data of custom types in the nodes of the search. The lengths of the true table come from a retrograde
// analysis of its own; tables that lie show which positions are answered at all.

#include <gtest/gtest.h>

#include "globalregister/active_tables.h"
#include "search/precalc_use.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kPawnsBlocked = "Rk+Kc2+Pa2+pa3"; // what moves, then what does not
constexpr const char* kOfBlocked = "8/8/8/4k3/8/p7/P1K5/7R";

TElements Filled(const char* type, std::uint8_t element) {
    TElements elements(TPositionIndexing(type).GetSize(), element);
    elements[0] = 0; // the flags
    return elements;
}

/// Tables of custom types in use while this lives.
class CCustomTables {
  public:
    explicit CCustomTables(const std::vector<std::pair<const char*, TElements>>& tables) {
        for (const auto& [type, elements] : tables)
            WriteElements(PathOf(type), elements);
        if (!m_tables.Registers().UnloadAll())
            throw std::runtime_error("a load is in progress");
        m_tables.Activate(true);
    }

    /// Loads what this position is of, so that shallow nodes are answered too. How many tables that are.
    int LoadFor(const char* placement) {
        CSearchedPosition position(placement, 31);
        int count = 0;
        for (std::size_t next = 0;; ++count)
            if (!CRegisterUse(Registers().GetCustomRegister(position.Root(), {}, next)))
                return count;
    }

    [[nodiscard]] std::filesystem::path PathOf(const std::string& type) const {
        return m_tables.PathOf("").parent_path().parent_path() / "CustomPrecalc" / (PrecalcBaseName(type) + ".precalc");
    }
    [[nodiscard]] CGlobalRegisters& Registers() { return m_tables.Registers(); }
    [[nodiscard]] CHeardBoxes& Boxes() { return m_tables.Boxes(); }
    void Activate(bool bOn) { m_tables.Activate(bOn); }

  private:
    CActiveTables m_tables{false, {}};
};

TMateResult Answer(const char* placement, int nPlies) {
    CSearchedPosition position(placement, nPlies);
    return AskPrecalcData(position.Root());
}

TEST(CustomData, AMateInTimeIsTheAnswer) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 5)}});
    EXPECT_EQ(Answer(kOfBlocked, 19), MR_NONE) << "not worth a load";
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_MATE);
    CSearchedPosition position(kOfBlocked, 9);
    EXPECT_TRUE((position.Root().m_wKingState & kCustomDataMayMate) != 0);
    EXPECT_EQ(position.Verdict(), MR_MATE);
    EXPECT_EQ(position.Analysis().m_nPositions, 0u) << "nothing was searched";
}

/// There may be a shorter mate, and one that moves what the table has frozen.
TEST(CustomData, WithoutAMateInTimeThereIsNoAnswer) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 5)}});
    ASSERT_EQ(tables.LoadFor(kOfBlocked), 1);
    CSearchedPosition position(kOfBlocked, 7);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
    position.Context().m_nQuickerLevel = 1;
    position.Context().m_nAdditionalMoves = 10;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
    EXPECT_FALSE(position.Context().m_bAdditionalMovesUsed);
    EXPECT_EQ(HalfMovesByData(position.Root()), kUnknownHalfMoves) << "no exact length";
    WriteElements(tables.PathOf(kPawnsBlocked), Filled(kPawnsBlocked, 0));
    ASSERT_TRUE(tables.Registers().UnloadAll());
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_NONE);
}

TEST(CustomData, OnlyPositionsOfTheTypeAreAnswered) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    ASSERT_EQ(tables.LoadFor(kOfBlocked), 1);
    EXPECT_EQ(Answer("8/8/8/4k3/7R/p7/P1K5/8", 1), MR_MATE);
    for (const char* const other : {
             "8/8/8/4k3/8/p1K5/P7/7R",  // the king has moved
             "8/8/8/4k3/p7/P7/2K5/7R",  // the pawns stand higher
             "8/8/8/4k3/8/p7/P1K5/6RR", // a man more
             "8/8/8/4k3/8/8/P1K5/7R",   // a man less
             "8/8/8/4k3/8/n7/P1K5/7R",  // another man on the square
             "8/8/8/4k3/8/P7/p1K5/7R",  // the men exchanged
             "8/8/8/4k3/8/p7/P1K5/7B",  // another man that moves
         })
        EXPECT_EQ(Answer(other, 31), MR_NONE) << other;
}

TEST(CustomData, ASolveMayDoWithoutThem) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    ASSERT_EQ(tables.LoadFor(kOfBlocked), 1);
    CSearchedPosition position("8/8/8/4k3/7n/p7/P1K5/7R", 33);
    position.Root().m_wKingState |= kNoPrecalcData;
    position.Play("Rh1:h4 Ke5-d5");
    EXPECT_EQ(position.Now().m_wKingState & kCustomDataMayMate, 0);
    EXPECT_EQ(AskPrecalcDataAnyhow(position.Now()), MR_NONE);
}

TEST(CustomData, TheElementOfTheFlagsIsNoPosition) {
    constexpr const char* kType = "Qp(b3)+Kc1+kh7";
    TElements ones(TPositionIndexing(kType).GetSize(), 1);
    CCustomTables tables({{kType, ones}});
    EXPECT_EQ(Answer("8/7k/8/8/8/1p6/8/3QK3", 31), MR_NONE) << "not of the type";
    EXPECT_EQ(Answer("8/7k/8/8/8/1p6/8/2KQ4", 31), MR_MATE);
    EXPECT_EQ(Answer("8/7k/8/8/8/1p6/8/Q1K5", 31), MR_NONE);
}

TEST(CustomData, ACaptureBringsThemWithinReach) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    CSearchedPosition position("8/8/8/4k3/7n/p7/P1K5/7R", 33);
    EXPECT_FALSE((position.Root().m_wKingState & kCustomDataMayMate) != 0);
    position.Play("Rh1:h4 Ke5-d5");
    EXPECT_TRUE((position.Now().m_wKingState & kCustomDataMayMate) != 0);
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_MATE);
    position.Play("Kc2-b3 Kd5-d6");
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_NONE) << "the king has left its square";
}

/// What the search does where lengths are exact does not follow from custom data.
TEST(CustomData, TheyAreNotTakenForExactData) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    CSearchedPosition position("8/8/8/4k3/7n/p7/P1K5/7R", 33);
    position.Play("Rh1:h4 Ke5-d5");
    CSearchedPosition ofBlocked(kOfBlocked, 31);
    for (const TChessboard* const b : {&position.Root(), &position.Now(), &ofBlocked.Root()})
        EXPECT_EQ(b->m_wKingState & kPrecalcCanAnswer, 0);
}

constexpr const char* kNineMen = "Rk+Kc2+Pa2f2g2+pa3f3g3";
constexpr const char* kOfNineMen = "8/8/8/4k3/8/p4pp1/P1K2PP1/7R";

TEST(CustomData, TheNumberOfMenDoesNotMatter) {
    CCustomTables tables({{kNineMen, Filled(kNineMen, 5)}});
    CSearchedPosition position(kOfNineMen, 31);
    EXPECT_EQ(position.Root().m_wKingState & kCustomDataMayMate, kCustomDataMayMate);
    EXPECT_EQ(HalfMovesByData(position.Root()), kUnknownHalfMoves);
    EXPECT_EQ(Answer(kOfNineMen, 19), MR_NONE) << "not worth a load";
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_MATE);
    EXPECT_EQ(Answer(kOfNineMen, 9), MR_MATE);
    EXPECT_EQ(Answer(kOfNineMen, 7), MR_NONE);
}

TEST(CustomData, ManyMenAreNotLoadedForABoundedLook) {
    CCustomTables tables({{kNineMen, Filled(kNineMen, 5)}});
    CSearchedPosition position(kOfNineMen, 31);
    position.Context().m_nPositionsLeft = 1000;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
    EXPECT_EQ(tables.Registers().TotalMemoryInUse(), 0u);
    ASSERT_EQ(tables.LoadFor(kOfNineMen), 1);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_MATE) << "what is loaded is used";
}

TEST(CustomData, EnPassantIsUnknownToThem) {
    constexpr const char* kSideBySide = "Rk+Kc2+Pe5+pd5";
    CCustomTables tables({{kSideBySide, Filled(kSideBySide, 1)}});
    CSearchedPosition position("8/3p4/8/4P3/8/k7/2K5/7R", 35);
    position.Play("Rh1-h2 d7-d5");
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_NONE) << "the pawn can be taken";
    position.Play("Rh2-h1 Ka3-a2");
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_MATE);
}

TEST(CustomData, ABishopTakenOffIsUnknownToThem) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    CSearchedPosition position(kOfBlocked, 31);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_MATE);
    position.Root().m_bySideState |= 1;
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
}

TEST(CustomData, OfSeveralTypesAnyMayMate) {
    constexpr const char* kKingMoves = "KRk+Pa2+pa3";
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 0)}, {kKingMoves, Filled(kKingMoves, 3)}});
    EXPECT_EQ(tables.LoadFor(kOfBlocked), 2);
    EXPECT_EQ(Answer(kOfBlocked, 5), MR_MATE);
    EXPECT_EQ(Answer(kOfBlocked, 3), MR_NONE);
}

TEST(CustomData, CastlingAndHeldPawnsAreUnknownToThem) {
    constexpr const char* kHome = "Rk+Ke1+Pa2+pa3";
    CCustomTables tables({{kHome, Filled(kHome, 1)}});
    CSearchedPosition position("8/8/8/4k3/8/p7/P7/4K2R", 63);
    EXPECT_EQ(AskPrecalcData(position.Root()), MR_NONE);
    position.Play("Rh1-h2 Ke5-d5 Rh2-h1 Kd5-e5");
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_MATE) << "the right is lost";
    position.Now().m_board[String2Square("a3")] |= kPawnMayNotAdvance;
    EXPECT_EQ(AskPrecalcData(position.Now()), MR_NONE);
}

TEST(CustomData, ForbiddenOrDamagedTheyAreSilent) {
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    tables.Registers().SetQuota(0);
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_NONE);
    tables.Registers().SetQuota(1 << 20);
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_MATE);
    EXPECT_GT(tables.Registers().TotalMemoryInUse(), 0u);
    EXPECT_EQ(tables.Registers().Status().m_types.at(0).m_typeName, kPawnsBlocked);
    std::filesystem::resize_file(tables.PathOf(kPawnsBlocked), 1000);
    ASSERT_TRUE(tables.Registers().UnloadAll());
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_NONE);
    EXPECT_EQ(tables.Boxes().m_told.size(), 1u);
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_NONE);
    EXPECT_EQ(tables.Boxes().m_told.size(), 1u) << "not tried again";
}

/// The shorter name is asked first.
TEST(CustomData, ADamagedTypeLeavesTheOthersTheirAnswer) {
    constexpr const char* kKingMoves = "KRk+Pa2+pa3";
    CCustomTables tables({{kPawnsBlocked, Filled(kPawnsBlocked, 1)}});
    const std::string packed = tables.PathOf(kKingMoves).string() + ".packed.lzw";
    TElements elements(TPositionIndexing(kKingMoves).GetSize());
    for (std::size_t i = 1; i < elements.size(); ++i)
        elements[i] = i / 40 % 2 == 0 ? 0 : 40;
    WriteLzw(packed, elements);
    TElements bytes = ReadWholeFile(packed).value();
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 8), bytes.end(), std::uint8_t{255});
    WriteElements(packed, bytes);
    ASSERT_TRUE(tables.Registers().UnloadAll());
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_MATE);
    EXPECT_EQ(tables.Boxes().m_told.size(), 1u) << "the damage was met";
}

TEST(CustomData, BeyondTheLimitTheyAreLeftOutAndToldOf) {
    CCustomTables tables({});
    const auto nameOf = [](int square, char file) {
        return "Rk+K" + SquareText(static_cast<TSquare>(square)) + "+n" + std::string{file, '7'};
    };
    for (int square = 0; square < 32; ++square)
        for (const char file : std::string("abcdefgh"))
            WriteElements(tables.PathOf(nameOf(square, file)), {1});
    WriteElements(tables.PathOf(kPawnsBlocked), Filled(kPawnsBlocked, 1)); // behind them: its name is longer
    ASSERT_TRUE(tables.Registers().UnloadAll());
    tables.Activate(true);
    EXPECT_EQ(tables.Boxes().m_told,
              std::vector<std::string>{"Warning: Only 256 custom types are used: 1 are left out"});
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_NONE);
    std::filesystem::remove(tables.PathOf(nameOf(0, 'a')));
    ASSERT_TRUE(tables.Registers().UnloadAll()) << "what is gone takes no place";
    EXPECT_EQ(tables.Boxes().m_told.size(), 1u);
    EXPECT_EQ(Answer(kOfBlocked, 31), MR_MATE);
}

TEST(CustomData, ExactDataGoFirst) {
    constexpr const char* kFrozenKing = "Rk+Ka1";
    CCustomTables tables({{kFrozenKing, Filled(kFrozenKing, 1)}});
    ASSERT_EQ(tables.LoadFor("8/8/8/3k4/8/8/8/K6R"), 1);
    EXPECT_EQ(Answer("8/8/8/3k4/8/8/8/K6R", 3), MR_MATE);
    WriteElements(tables.PathOf("R").parent_path().parent_path() / "Precalc/R.precalc", ThreeMenElements("R"));
    ASSERT_TRUE(tables.Registers().UnloadAll());
    ASSERT_TRUE(IsTypeAvailable(TPositionIndexing("R").nPositionType));
    EXPECT_EQ(Answer("8/8/8/3k4/8/8/8/K6R", 3), MR_NOMATE);
}

// --- a true table: rook and black king move, the white king stays on b3

constexpr const char* kKingOnB3 = "Rk+Kb3";
constexpr int kFrozenKing = 17;

reference::Position KingOnB3(int rook, int king, reference::Side side) {
    reference::Position position;
    position.board.fill(reference::kEmpty);
    position.board[kFrozenKing] = 'K';
    position.board[static_cast<std::size_t>(rook)] = 'R';
    position.board[static_cast<std::size_t>(king)] = 'k';
    position.toMove = side;
    return position;
}

/// Lengths in moves, by rook and black king; 0: no mate by moves of the rook alone.
class CKingOnB3Lengths {
  public:
    CKingOnB3Lengths() {
        for (bool bChanged = true; bChanged; ++m_nLongest) {
            bChanged = false;
            for (int rook = 0; rook < kSquares; ++rook)
                for (int king = 0; king < kSquares; ++king)
                    if (IsPosition(rook, king) && At(rook, king) == 0 && Mates(rook, king))
                        m_found.push_back({rook, king}), bChanged = true;
            for (const auto& [rook, king] : m_found)
                At(rook, king) = m_nLongest + 1;
            m_found.clear();
        }
    }

    [[nodiscard]] int Length(int rook, int king) const { return m_lengths[Place(rook, king)]; }

    /// White to move, and Black not in check.
    [[nodiscard]] static bool IsPosition(int rook, int king) {
        return rook != king && rook != kFrozenKing && KingSteps(king, kFrozenKing) > 1 &&
               !reference::InCheck(KingOnB3(rook, king, reference::Side::White), reference::Side::Black);
    }

  private:
    [[nodiscard]] static std::size_t Place(int rook, int king) {
        return static_cast<std::size_t>(rook * kSquares + king);
    }
    [[nodiscard]] int& At(int rook, int king) { return m_lengths[Place(rook, king)]; }

    [[nodiscard]] bool Mates(int rook, int king) const {
        const reference::Position position = KingOnB3(rook, king, reference::Side::White);
        const std::vector<reference::Move> moves = reference::LegalMoves(position);
        return std::ranges::any_of(
            moves, [&](const reference::Move& move) { return move.from == rook && IsLost(move.to, king); });
    }

    /// Black to move; a capture of the rook leaves the type.
    [[nodiscard]] bool IsLost(int rook, int king) const {
        const reference::Position position = KingOnB3(rook, king, reference::Side::Black);
        const std::vector<reference::Move> replies = reference::LegalMoves(position);
        if (replies.empty())
            return reference::IsMate(position);
        return std::ranges::all_of(
            replies, [&](const reference::Move& reply) { return reply.to != rook && Length(rook, reply.to) != 0; });
    }

    std::array<int, std::size_t{kSquares} * kSquares> m_lengths{};
    std::vector<std::pair<int, int>> m_found;
    int m_nLongest = 0;
};

/// With the data every verdict is that of a search without them: mates that the table tells are mates, and mates that
/// the king helps with, sooner than the table's or where it has none, are found all the same.
TEST(CustomData, VerdictsAreThoseOfASearchWithoutThem) {
    const CKingOnB3Lengths lengths;
    const TPositionIndexing indexing(kKingOnB3);
    TElements elements = Filled(kKingOnB3, 0);
    std::vector<std::string> mates, others;
    for (int rook = 0; rook < kSquares; ++rook)
        for (int king = 0; king < kSquares; ++king) {
            if (!CKingOnB3Lengths::IsPosition(rook, king))
                continue;
            const std::string placement = reference::Placement(KingOnB3(rook, king, reference::Side::White));
            const int length = lengths.Length(rook, king);
            elements[indexing.GetIndex(ChessboardFromFEN(placement))] = static_cast<std::uint8_t>(length);
            (length != 0 ? mates : others).push_back(placement);
        }
    CCustomTables tables({{kKingOnB3, elements}});
    ASSERT_GT(mates.size(), 50u);
    ASSERT_EQ(tables.LoadFor(mates.front().c_str()), 1);
    std::mt19937_64 rng(71);
    std::shuffle(others.begin(), others.end(), rng);
    others.resize(static_cast<std::size_t>(Samples(200)));
    int nAnswered = 0;
    for (const std::vector<std::string>* const list : {&mates, &others})
        for (const std::string& placement : *list)
            for (const int nPlies : {1, 3, 5}) {
                tables.Activate(true);
                CSearchedPosition with(placement, nPlies);
                nAnswered += AskPrecalcData(with.Root()) == MR_MATE;
                const TMateResult verdict = with.Verdict();
                tables.Activate(false);
                EXPECT_EQ(verdict, CSearchedPosition(placement, nPlies).Verdict()) << placement << " " << nPlies;
            }
    EXPECT_GT(nAnswered, 100);
}

} // namespace
} // namespace quillon::test
