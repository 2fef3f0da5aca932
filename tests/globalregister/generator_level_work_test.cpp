// Work on single indices of a level, levels that were ended in the middle, and what lengths the forms can hold.

#include "core/chess_exception.h"
#include "globalregister/generated_tables.h"
#include "globalregister/generator/level_work.h"
#include "support/reference_chess.h"

namespace quillon {

namespace {

constexpr unsigned kOpen = 127;

// A table in hand, with the work of its levels.
template <class TCells> class CWorkForTest {
  public:
    explicit CWorkForTest(TGlobalRegister& table)
        : m_table(table), m_registers(TablesOfWinners().Registers()), m_materials(table, *m_registers),
          m_work(table, m_materials.Root()) {}

    [[nodiscard]] std::uint64_t Index(const std::string& placement) const {
        return m_table.GetIndex(ChessboardFromFEN(placement + " w - -"));
    }

    [[nodiscard]] TPlacement Placement(const std::string& placement) const {
        TPlacement p;
        EXPECT_TRUE(m_work.Geometry().PlacementOf(Index(placement), p)) << placement;
        return p;
    }

    TGlobalRegister& m_table;
    const std::unique_ptr<CGlobalRegisters> m_registers;
    const CMaterials m_materials;
    CLevelWork<TCells> m_work;
    TGeneratorThread m_thread;
};

// A table of bit data with its lengths beside it.
struct TBitsWithDetails : TOtherForm {
    explicit TBitsWithDetails(const std::string& type, std::uint8_t length = 0) : TOtherForm(type, 1, true) {
        Replace(TElements(m_table.GetSize(), length));
    }
    void Replace(const TElements& lengths) {
        EXPECT_TRUE(WriteWholeFile(Path(), lengths));
        m_table.details = std::make_unique<TDetailQueue>();
        m_table.details->detailFile.open(Path(), std::ios::binary | std::ios::in | std::ios::out);
    }
    [[nodiscard]] std::filesystem::path Path() const { return m_folder.Path() / "details"; }

    CTemporaryFolder m_folder;
};

TGeneratorOptions WithThreads(int nThreads) {
    TGeneratorOptions options;
    options.m_nThreads = nThreads;
    return options;
}

// A part of a level of "R", as a run that was stopped leaves it.
template <class TCells> void RunPart(TGlobalRegister& table, int nLevel) {
    CWorkForTest<TCells> work(table);
    const unsigned n = static_cast<unsigned>(nLevel + 1) / 2;
    const std::uint64_t end = nLevel == 1 ? table.GetSize() : table.GetSize() / 2;
    for (std::uint64_t index = 1; index < end; ++index)
        if (nLevel == 1)
            work.m_work.TryMated(index);
        else if (nLevel % 2 != 0)
            work.m_work.UnmoveWhite(work.m_thread, index, n);
        else
            work.m_work.TryBlack(work.m_thread, index, n);
    EXPECT_TRUE(FlushBitData(table, true));
}

constexpr int kLevelsOfRook = 33;

// Each fifth level, 1 among them, is begun, ended and run again, by the same run or by another one.
template <class TCells> void RunWithStops(TGlobalRegister& table, bool bSameRun, int nThreads) {
    const auto registers = TablesOfWinners().Registers();
    TGeneratorControl control;
    auto run = std::make_unique<CGeneratorRun>(table, *registers, control, WithThreads(nThreads));
    for (int level = 1; level <= kLevelsOfRook; ++level) {
        if (level % 5 == 1) {
            RunPart<TCells>(table, level);
            control.m_bStop = true;
            ASSERT_EQ(run->RunLevel(level).m_nResult, kLevelStopped);
            control.m_bStop = false;
            if (!bSameRun)
                run = std::make_unique<CGeneratorRun>(table, *registers, control, WithThreads(nThreads));
        }
        ASSERT_EQ(run->RunLevel(level).m_nResult, kLevelDone) << level;
    }
    FinishTable(table);
}

// Can White step two squares, past a black pawn's attack, so that every answer of Black keeps the material? By rules.
bool MayLoseAfterDoubleStep(const reference::Position& position) {
    using namespace reference;
    for (const Move& move : LegalMoves(position)) {
        if (position.board[move.from] != 'P' || move.to - move.from != 16)
            continue;
        const Position after = Play(position, move);
        const bool bInvites = (move.to % 8 > 0 && after.board[move.to - 1u] == 'p') ||
                              (move.to % 8 < 7 && after.board[move.to + 1u] == 'p');
        const std::vector<Move> answers = LegalMoves(after);
        if (bInvites && (!answers.empty() || InCheck(after)) && std::ranges::none_of(answers, [&](const Move& answer) {
                return IsCapture(after, answer) || answer.promotion != 0;
            }))
            return true;
    }
    return false;
}

// The board of an index with White to move, for the rules.
bool ReferencePosition(const TPositionIndexing& indexing, std::uint64_t index, reference::Position& position) {
    TChessboard b = EmptyChessboard();
    if (!indexing.GetPositionByIndex(index, b))
        return false;
    constexpr std::array<std::pair<TFigure, char>, 6> kLetters{{{kWhiteKing, 'K'},
                                                                {kBlackKing, 'k'},
                                                                {kWhiteQueen, 'Q'},
                                                                {kWhiteRook, 'R'},
                                                                {kWhitePawn, 'P'},
                                                                {kBlackPawn, 'p'}}};
    position = {};
    position.board.fill(reference::kEmpty);
    for (std::size_t square = 0; square < position.board.size(); ++square)
        for (const auto& [figure, letter] : kLetters)
            if (b.m_board[square] == figure)
                position.board[square] = letter;
    return !reference::InCheck(position, reference::Side::Black);
}

const std::string kPinnedPawns = "Pkp(d4)+Kc1+Ra4";

} // namespace

TEST(GeneratorLevelWork, LevelsEndedInTheMiddleAreMadeUpFor) {
    const TElements expected = ThreeMenElements("R");
    for (const int nThreads : {1, 2}) {
        TGlobalRegister bytes("R");
        ASSERT_TRUE(MakeWorkTable(bytes));
        RunWithStops<CByteCells>(bytes, nThreads == 1, nThreads);
        EXPECT_EQ(bytes.data, expected);

        TBitsWithDetails bits("R");
        RunWithStops<CBitCells>(bits.m_table, nThreads == 1, nThreads);
        EXPECT_EQ(ReadWholeFile(bits.Path()), expected);
        for (std::uint64_t index = 1; index < expected.size(); ++index)
            ASSERT_EQ(BitPair(bits.m_table.data.data(), index) & 1, expected[index] != 0) << index;
    }
}

TEST(GeneratorLevelWork, BlackLevelsReadNoDetails) {
    const auto registers = TablesOfWinners().Registers();
    TGeneratorControl control;
    TBitsWithDetails bits("R");
    {
        CGeneratorRun run(bits.m_table, *registers, control);
        for (int level = 1; level <= 2; ++level)
            ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
    }
    bits.Replace(TElements(bits.m_table.GetSize(), 0)); // whoever reads a length there fails
    CGeneratorRun run(bits.m_table, *registers, control);
    for (int level = 3; level <= 6; ++level)
        EXPECT_EQ(run.RunLevel(level).m_nResult, kLevelDone) << level;
}

TEST(GeneratorLevelWork, DoubleStepsPastAPawnFindWhatTheRulesTell) {
    TOtherForm other(kPinnedPawns, 1, false);
    TGlobalRegister& table = other.m_table;
    std::fill(table.data.begin(), table.data.end(), std::uint8_t{1}); // all quiet answers are answered
    CWorkForTest<CByteCells> work(table);
    unsigned nFound = 0, nInviting = 0;
    reference::Position position;
    for (std::uint64_t index = 1; index < table.GetSize(); ++index) {
        if (!ReferencePosition(table, index, position))
            continue;
        table.data[index] = kOpen;
        work.m_work.TryDoubleSteps(work.m_thread, index, 2);
        ASSERT_EQ(!work.m_thread.m_doubleSteps.empty(), MayLoseAfterDoubleStep(position)) << index;
        nFound += !work.m_thread.m_doubleSteps.empty();
        TPlacement p;
        ASSERT_TRUE(work.m_work.Geometry().PlacementOf(index, p));
        nInviting += InvitingPawns(p) != 0;
        work.m_work.EnterDoubleSteps(work.m_thread, 2);
        table.data[index] = 1;
    }
    EXPECT_GT(nFound, 0u);
    EXPECT_GT(nInviting, nFound);
}

TEST(GeneratorLevelWork, DoubleStepsAreEnteredAfterwards) {
    TOtherForm other(kPinnedPawns, 1, false);
    TGlobalRegister& table = other.m_table;
    std::fill(table.data.begin(), table.data.end(), std::uint8_t{1});
    CWorkForTest<CByteCells> work(table);
    const std::uint64_t index = work.Index("8/8/8/8/R2p3k/8/4P3/2K5");
    table.data[index] = kOpen;
    work.m_work.TryDoubleSteps(work.m_thread, index, 1); // no mate within 0 moves is known
    EXPECT_TRUE(work.m_thread.m_doubleSteps.empty());
    work.m_work.TryDoubleSteps(work.m_thread, index, 2);
    EXPECT_EQ(table.data[index], kOpen);
    work.m_work.EnterDoubleSteps(work.m_thread, 2);
    EXPECT_EQ(table.data[index], 2);
    EXPECT_TRUE(work.m_thread.m_doubleSteps.empty());
}

TEST(GeneratorLevelWork, LengthsOfBitDataAreReadWhereALevelWasBegun) {
    TBitsWithDetails bits(kPinnedPawns, 5);
    std::fill(bits.m_table.data.begin(), bits.m_table.data.end(), std::uint8_t{0x55});
    CWorkForTest<CBitCells> work(bits.m_table);
    const std::uint64_t index = work.Index("8/8/8/8/R2p3k/8/4P3/2K5");
    bits.m_table.data[index / 4] &= static_cast<std::uint8_t>(~(3u << 2 * (index % 4)));
    work.m_work.SetReadsLengths(true);
    work.m_work.TryDoubleSteps(work.m_thread, index, 5);
    EXPECT_TRUE(work.m_thread.m_doubleSteps.empty());
    work.m_work.TryDoubleSteps(work.m_thread, index, 6);
    EXPECT_EQ(work.m_thread.m_doubleSteps.size(), 1u);
    bits.Replace(TElements(bits.m_table.GetSize(), 0)); // a length that is not there is not a short one
    EXPECT_THROW(work.m_work.TryDoubleSteps(work.m_thread, index, 6), ChessException);
    work.m_work.SetReadsLengths(false);
    EXPECT_NO_THROW(work.m_work.TryDoubleSteps(work.m_thread, index, 6));
}

TEST(GeneratorLevelWork, UnmovesLeaveInvitingDoubleStepsToTheLookForwards) {
    TGlobalRegister table("Pp");
    ASSERT_TRUE(MakeWorkTable(table));
    CWorkForTest<CByteCells> work(table);
    for (const bool bBeside : {true, false}) {
        const std::string pawns = bBeside ? "3pP3/8/8/" : "2p1P3/8/8/"; // on d4 or c4
        const std::uint64_t lost = work.Index("7k/8/8/8/" + pawns + "2K5");
        table.data[lost] |= 0x80;
        work.m_work.UnmoveWhite(work.m_thread, lost, 3);
        EXPECT_EQ(table.data[work.Index(bBeside ? "7k/8/8/8/3p4/4P3/8/2K5" : "7k/8/8/8/2p5/4P3/8/2K5")], 3);
        EXPECT_EQ(table.data[work.Index(bBeside ? "7k/8/8/8/3p4/8/4P3/2K5" : "7k/8/8/8/2p5/8/4P3/2K5")],
                  bBeside ? kOpen : 3u);
    }
}

TEST(GeneratorLevelWork, PositionWithAnInvitingStepWaits) {
    TGlobalRegister table("Pp");
    ASSERT_TRUE(MakeWorkTable(table));
    CWorkForTest<CByteCells> work(table);
    const auto waits = [&](const std::string& placement) {
        const std::uint64_t index = work.Index(placement);
        work.m_work.ClearMarks();
        work.m_work.TryConversions(work.m_thread, index, 3, false);
        bool bMarked = false;
        CLevelMarks& marks = work.m_work.WaitingWhite();
        for (std::uint64_t word = 0; word < marks.Words(); ++word)
            marks.ForIndices(word, marks.Word(word, false),
                             [&](std::uint64_t marked) { bMarked = bMarked || marked == index; });
        return bMarked;
    };
    EXPECT_TRUE(waits("7k/8/8/8/3p4/8/4P3/2K5"));
    EXPECT_FALSE(waits("7k/8/8/8/2p5/8/4P3/2K5"));
}

TEST(GeneratorLevelWork, BlackWaitsForACaptureInPassing) {
    TGlobalRegister table("Pp");
    ASSERT_TRUE(MakeWorkTable(table));
    CWorkForTest<CByteCells> work(table);
    // 1 ... Ka7 and 1 ... d6 are answered; 1 ... d5 by 2 exd6 e.p. only, after which 2 ... Ka7 is forced.
    table.data[work.Index("8/k1Kp4/8/4P3/8/8/8/8")] = 1;
    table.data[work.Index("k7/2K5/3p4/4P3/8/8/8/8")] = 1;
    const auto registers = TablesOfWinners().Registers();
    const CRegisterUse data(registers->GetRegisterForTool(TPositionIndexing("P").nPositionType));
    const unsigned n = (data->IsMate(ChessboardFromFEN("8/k1K5/3P4/8/8/8/8/8 w - -")) + 1u) / 2 + 1;
    const std::uint64_t index = work.Index("k7/2Kp4/8/4P3/8/8/8/8");
    ASSERT_GT(n, 2u);
    const auto value = [&] {
        return work.m_work.FindMateByGlobalRegister(work.Placement("k7/2Kp4/8/4P3/8/8/8/8"), index, kNoDoubleStep,
                                                    2 * (n - 1));
    };
    EXPECT_EQ(value(), n);
    work.m_work.TryBlack(work.m_thread, index, n - 1);
    EXPECT_EQ(table.data[index], kOpen);
    CLevelMarks& waiting = work.m_work.WaitingBlack();
    std::uint64_t nMarked = 0;
    for (std::uint64_t word = 0; word < waiting.Words(); ++word)
        nMarked += waiting.Word(word, false) != 0 ? 1 : 0;
    EXPECT_EQ(nMarked, 1u);
    work.m_work.TryBlack(work.m_thread, index, n);
    EXPECT_EQ(table.data[index], kOpen | 0x80);
    table.data[work.Index("k7/2K5/3p4/4P3/8/8/8/8")] = kOpen;
    EXPECT_EQ(value(), kNotLost);
}

TEST(GeneratorLevelWork, OneHalfMoveIsRefused) {
    TGlobalRegister table("R");
    ASSERT_TRUE(MakeWorkTable(table));
    CWorkForTest<CByteCells> work(table);
    const std::string placement = "k7/8/K7/8/8/8/8/7R";
    try {
        static_cast<void>(
            work.m_work.FindMateByGlobalRegister(work.Placement(placement), work.Index(placement), kNoDoubleStep, 1));
        ADD_FAILURE();
    } catch (const ChessException& error) {
        EXPECT_STREQ(error.what(), "m_nMoves cannot be ==1 in FindMateByGlobalRegister");
    }
}

TEST(GeneratorLevelWork, WhatIsOpenIsNoMateAtAnyLevel) {
    std::array<std::uint8_t, 4> bytes{0, kOpen, 126, kOpen | 0x80};
    const CByteCells cells(bytes.data());
    for (const unsigned n : {126u, 127u, 128u, 255u, 1000u}) {
        EXPECT_FALSE(cells.IsWhiteWithin(1, n)) << n;
        EXPECT_FALSE(cells.IsWhiteWithin(3, n)) << n;
        EXPECT_TRUE(cells.IsWhiteWithin(2, n)) << n;
        EXPECT_FALSE(cells.IsWhiteOfLevel(1, n)) << n;
    }
    std::array<std::uint8_t, 4> words{0, 0, 0xff, 0x7f};
    const CWordCells wide(words.data());
    EXPECT_FALSE(wide.IsWhiteWithin(1, 32767));
    EXPECT_FALSE(wide.IsWhiteOfLevel(1, 32767));
}

TEST(GeneratorLevelWork, LevelsThatFindNothingMayGoOnBeyondWhatAByteHolds) {
    const auto registers = TablesOfWinners().Registers();
    TGeneratorControl control;
    TGlobalRegister table("R");
    ASSERT_TRUE(MakeWorkTable(table));
    CGeneratorRun run(table, *registers, control);
    for (int level = 1; level <= 255; ++level) {
        const TLevelResult result = run.RunLevel(level);
        ASSERT_EQ(result.m_nResult, kLevelDone) << level;
        if (level > kLevelsOfRook) {
            ASSERT_EQ(result.m_nFound, 0u) << level;
        }
    }
    CGeneratorRun again(table, *registers, control); // with full sweeps at the end
    for (int level = 253; level <= 255; ++level)
        EXPECT_EQ(again.RunLevel(level).m_nFound, 0u) << level;
    FinishTable(table);
    EXPECT_EQ(table.data, ThreeMenElements("R"));
}

TEST(GeneratorLevelWork, DetailsOfOneByteTakeNoLengthThatIsCutThere) {
    TBitsWithDetails bits("R");
    CWorkForTest<CBitCells> work(bits.m_table);
    const std::uint64_t lost = work.Index("k7/8/8/8/8/8/8/2K4R");
    AddToBitPair(bits.m_table.data.data(), lost, 2);
    EXPECT_THROW(work.m_work.UnmoveWhite(work.m_thread, lost, 255), ChessException);
    EXPECT_TRUE(std::ranges::all_of(bits.m_table.data, [](unsigned pairs) { return (pairs & 0x55) == 0; }));
    work.m_work.UnmoveWhite(work.m_thread, lost, 254);
    EXPECT_TRUE(FlushBitData(bits.m_table, true));
    EXPECT_EQ(ReadBitData(bits.m_table, work.Index("k7/8/8/8/8/8/8/2KR4")), 254);
    EXPECT_THROW(static_cast<void>(ReadBitData(bits.m_table, lost)), ChessException); // there is none
}

TEST(GeneratorLevelWork, LookupsTakeAllLengthsOfDetails) {
    TBitsWithDetails bits("R", 200);
    AddToBitPair(bits.m_table.data.data(), 9, 1);
    AddToBitPair(bits.m_table.data.data(), 10, 2);
    bits.m_table.details.reset();
    bits.m_table.detailStream.open(bits.Path(), std::ios::binary);
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(9), kUnknownHalfMoves); // a table in the making
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(10), kUnknownHalfMoves);
    bits.m_table.bCompactUnfinished = false;
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(9), 399);
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(10), 0);
    bits.m_table.diskStream = std::move(bits.m_table.detailStream);
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(9), 399);
    bits.m_table.bCompactUnfinished = true; // without the bits nobody knows which lengths are settled
    EXPECT_EQ(bits.m_table.ProvedHalfMovesByIndex(9), kUnknownHalfMoves);
}

// With both kings frozen index 0 is the queen on a1, where Black is mated: it holds the flags all the same.
TEST(GeneratorLevelWork, IndexZeroOfACustomTypeStaysTheFlags) {
    CGeneratedTables tables;
    const TElements elements = tables.Generate("Q+Kc7+ka8");
    const TPositionIndexing indexing("Q+Kc7+ka8");
    EXPECT_EQ(elements[0], 0);
    unsigned nMates = 0;
    reference::Position position;
    for (std::uint64_t index = 1; index < elements.size(); ++index) {
        bool bMates = false;
        if (ReferencePosition(indexing, index, position))
            for (const reference::Move& move : reference::LegalMoves(position))
                bMates = bMates || (position.board[move.from] == 'Q' && move.to != 0 &&
                                    reference::IsMate(reference::Play(position, move)));
        EXPECT_EQ(elements[index] == 1, bMates) << index;
        nMates += bMates;
    }
    EXPECT_GT(nMates, 0u);
}

TEST(GeneratorLevelWork, OnlyDataThatLooksAskForAreLoaded) {
    CGeneratedTables tables;
    tables.Write("R", ThreeMenElements("R"));
    const auto registers = tables.Registers();
    TGlobalRegister table("PP"); // "R" takes a promotion and a loss: one move of each side
    const CMaterials two(table, *registers);
    EXPECT_NE(registers->TotalMemoryInUse(), 0u);
    const auto others = tables.Registers();
    TGlobalRegister more("PPP"); // and here one more loss
    const CMaterials three(more, *others);
    EXPECT_EQ(others->TotalMemoryInUse(), 0u);
}

} // namespace quillon
