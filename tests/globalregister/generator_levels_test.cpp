// Tables by levels: against rules of the tests' own, against sweeps that look at every index, and taken up again.

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <set>
#include <sys/resource.h>
#include <thread>

#include "core/chess_exception.h"
#include "globalregister/generated_tables.h"
#include "globalregister/generator/generator_material.h"
#include "globalregister/generator/level_threads.h"
#include "tempregister/failing_allocation.h"

namespace quillon {

namespace {

// Q, R, and what P and p turn into.
CGeneratedTables& ThreeMenTables() {
    static CGeneratedTables tables;
    static const bool bMade = [] {
        tables.Generate("Q");
        tables.Generate("R");
        return true;
    }();
    static_cast<void>(bMade);
    return tables;
}

TGeneratorOptions Threads(int nThreads, bool bFullSweeps = false) {
    TGeneratorOptions options;
    options.m_nThreads = nThreads;
    options.m_bFullSweeps = bFullSweeps;
    return options;
}

void ExpectLikeReference(const std::string& type, const TElements& elements) {
    const TPositionIndexing indexing(type);
    ASSERT_EQ(elements.size(), indexing.GetSize());
    EXPECT_EQ(elements[0], 0);
    TChessboard b = EmptyChessboard();
    for (std::uint64_t index = 1; index < elements.size(); ++index) {
        int expected = 0;
        if (indexing.GetPositionByIndex(index, b)) {
            const TFigure figure = type == "Q" ? kWhiteQueen : kWhiteRook;
            const auto piece = std::find(b.m_board.begin(), b.m_board.end(), figure) - b.m_board.begin();
            expected = ReferenceTable(type).Length(WhiteKingSquare(b), static_cast<int>(piece), BlackKingSquare(b));
        }
        ASSERT_EQ(elements[index], expected) << type << " " << index;
    }
}

TLevelResult FailedLevelOne(CGeneratedTables& tables, const std::string& type, int nThreads) {
    const auto registers = tables.Registers();
    TGlobalRegister table(type);
    EXPECT_TRUE(MakeWorkTable(table));
    CGeneratorRun run(table, *registers, tables.Control(), Threads(nThreads));
    TLevelResult result = run.RunLevel(1);
    EXPECT_EQ(result.m_nResult, kLevelStopped);
    return result;
}

} // namespace

TEST(GeneratorLevels, QueenAndRookAreAsTheRulesSay) {
    CGeneratedTables tables;
    ExpectLikeReference("Q", tables.Generate("Q", Threads(1)));
    ExpectLikeReference("R", tables.Generate("R", Threads(2)));
}

TEST(GeneratorLevels, LongestMatesOfThreeMen) {
    CGeneratedTables& tables = ThreeMenTables();
    EXPECT_EQ(LongestMate(tables.Generate("Q")), 10u);
    EXPECT_EQ(LongestMate(tables.Generate("R")), 16u);
    EXPECT_EQ(LongestMate(tables.Generate("P")), 28u);
    for (const char* const type : {"B", "N", "q", "p"})
        EXPECT_EQ(LongestMate(tables.Generate(type)), 0u) << type;
}

TEST(GeneratorLevels, MarksFindWhatSweepsFind) {
    CGeneratedTables& tables = ThreeMenTables();
    for (const char* const type : {"Q", "R", "P"})
        EXPECT_EQ(tables.Generate(type, Threads(1)), tables.Generate(type, Threads(2))) << type;
    EXPECT_EQ(tables.Generate("Q", Threads(2)), tables.Generate("Q", Threads(2, true)));
}

TEST(GeneratorLevels, TakenUpAfterAnyLevelTheTableIsTheSame) {
    CGeneratedTables& tables = ThreeMenTables();
    for (const auto& [type, nLevels, nAtATime] :
         std::initializer_list<std::tuple<const char*, int, int>>{{"R", 33, 1}, {"P", 57, 8}}) {
        const TElements expected = tables.Generate(type);
        const auto registers = tables.Registers();
        TGlobalRegister table(type);
        ASSERT_TRUE(MakeWorkTable(table));
        std::unique_ptr<CGeneratorRun> run;
        for (int level = 1; level <= nLevels; ++level) {
            if (level % nAtATime == 1 || nAtATime == 1) {
                run = std::make_unique<CGeneratorRun>(table, *registers, tables.Control());
                if (level > 1 && level % 3 == 0) { // the last level is repeated
                    ASSERT_EQ(run->RunLevel(level - 1).m_nResult, kLevelDone);
                }
            }
            ASSERT_EQ(run->RunLevel(level).m_nResult, kLevelDone) << level;
        }
        FinishTable(table);
        EXPECT_EQ(table.data, expected) << type;
    }
}

TEST(GeneratorLevels, UnfinishedTableTellsTheLevelsDone) {
    CGeneratedTables tables;
    const auto registers = tables.Registers();
    TGlobalRegister table("R");
    ASSERT_TRUE(MakeWorkTable(table));
    CGeneratorRun run(table, *registers, tables.Control());
    std::uint64_t nFound = 0;
    for (int level = 1; level <= 9; ++level) {
        const TLevelResult result = run.RunLevel(level);
        ASSERT_EQ(result.m_nResult, kLevelDone);
        nFound += level % 2 != 0 ? result.m_nFound : 0;
    }
    const TElements finished = ThreeMenElements("R");
    EXPECT_EQ(nFound, static_cast<std::uint64_t>(std::count_if(finished.begin(), finished.end(), [](unsigned element) {
                  return element != 0 && element <= 5;
              })));
    for (std::size_t index = 1; index < finished.size(); ++index) {
        const unsigned element = table.data[index] & 0x7f;
        ASSERT_EQ(element, finished[index] != 0 && finished[index] <= 5 ? finished[index] : 127u) << index;
    }
}

TEST(GeneratorLevels, WordsHoldTheSameLengths) {
    CGeneratedTables tables;
    const auto registers = tables.Registers();
    TOtherForm words("R", 2, false);
    CGeneratorRun run(words.m_table, *registers, tables.Control(), Threads(2));
    for (int level = 1; level <= 33; ++level)
        ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
    FinishTable(words.m_table);
    const TElements expected = ThreeMenElements("R");
    for (std::size_t index = 1; index < expected.size(); ++index)
        ASSERT_EQ(words.m_table.data[2 * index] + 256 * words.m_table.data[2 * index + 1], expected[index]) << index;
}

TEST(GeneratorLevels, BitDataWriteTheirLengthsBesideThem) {
    CGeneratedTables tables;
    const auto registers = tables.Registers();
    TOtherForm bits("R", 1, true);
    const CTemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / "R.precalc.details";
    const TElements expected = ThreeMenElements("R");
    ASSERT_TRUE(WriteWholeFile(path, TElements(expected.size(), 0)));
    bits.m_table.details = std::make_unique<TDetailQueue>();
    bits.m_table.details->detailFile.open(path, std::ios::binary | std::ios::in | std::ios::out);
    CGeneratorRun run(bits.m_table, *registers, tables.Control(), Threads(2));
    for (int level = 1; level <= 33; ++level)
        ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
    FinishTable(bits.m_table);
    EXPECT_EQ(ReadWholeFile(path), expected);
    for (std::size_t index = 1; index < expected.size(); ++index)
        ASSERT_EQ(BitPair(bits.m_table.data.data(), index) & 1, expected[index] != 0) << index;
}

TEST(GeneratorLevels, DetailsThatCannotBeWrittenEndTheLevel) {
    CGeneratedTables tables;
    const auto registers = tables.Registers();
    TOtherForm bits("R", 1, true);
    bits.m_table.details = std::make_unique<TDetailQueue>(); // its file is not open
    CGeneratorRun run(bits.m_table, *registers, tables.Control());
    const TLevelResult result = run.RunLevel(1);
    EXPECT_EQ(result.m_nResult, kLevelStopped);
    ASSERT_FALSE(result.m_errors.empty());
    EXPECT_NE(result.m_errors.front().find("Error in Generate_MainLoop2 in call to "), std::string::npos);
    EXPECT_TRUE(result.m_bSystemFailed);
}

/// Neither if memory is short even for its text.
TEST(GeneratorLevels, AFailureIsNoStopOfTheUser) {
    TGeneratorControl control;
    const TGeneratorOptions options;
    const ChessException failure("what the data say");
    CLevelThreads told(control, options, 1, 1), untold(control, options, 1, 1);
    told.AddError(failure);
    {
        const test::CFailingAllocations failing;
        untold.AddError(failure);
    }
    EXPECT_FALSE(told.Result().IsEndedByUser());
    EXPECT_FALSE(told.Result().m_bSystemFailed);
    const TLevelResult result = untold.Result();
    EXPECT_TRUE(result.m_errors.empty());
    EXPECT_EQ(result.m_nResult, kLevelStopped);
    EXPECT_FALSE(result.IsEndedByUser());
    EXPECT_TRUE(result.m_bFailed);
    EXPECT_TRUE(result.m_bSystemFailed);
}

TEST(GeneratorLevels, AMateWithoutALengthIsNoFailureOfTheFile) {
    TOtherForm bits("R", 1, true);
    const CTemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / "R.precalc.details";
    WriteElements(path, {0, 0, 7});
    bits.m_table.details = std::make_unique<TDetailQueue>();
    bits.m_table.details->detailFile.open(path, std::ios::binary | std::ios::in | std::ios::out);
    EXPECT_EQ(ReadBitData(bits.m_table, 2), 7);
    EXPECT_THROW((void)ReadBitData(bits.m_table, 1), ChessException);
    EXPECT_THROW((void)ReadBitData(bits.m_table, 3), CDetailFileFailure) << "behind the end";
}

TEST(GeneratorLevels, StopAndBreakEndALevel) {
    CGeneratedTables tables;
    const auto registers = tables.Registers();
    TGlobalRegister table("R");
    ASSERT_TRUE(MakeWorkTable(table));
    CGeneratorRun run(table, *registers, tables.Control(), Threads(2));
    tables.Control().m_bStop = true;
    const TLevelResult stopped = run.RunLevel(1);
    EXPECT_EQ(stopped.m_nResult, kLevelStopped);
    EXPECT_TRUE(stopped.IsEndedByUser());
    tables.Control().m_nPause = kGeneratorBreaks;
    EXPECT_EQ(run.RunLevel(1).m_nResult, kLevelBroken);
    tables.Control().m_bStop = false;
    tables.Control().m_nPause = kGeneratorGoesOn;
    for (int level = 1; level <= 33; ++level)
        ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
    FinishTable(table);
    EXPECT_EQ(table.data, ThreeMenElements("R"));
}

/// For each level: never back, and to the end, whatever it consists of.
TEST(GeneratorLevels, ProgressGoesFromTheBeginningOfALevelToItsEnd) {
    CGeneratedTables& tables = ThreeMenTables();
    const auto registers = tables.Registers();
    for (const int nThreads : {1, 3})
        for (const char* const type : {"P", "Qk+Kc3", "Kkp(b7)+Pa2"}) {
            TGlobalRegister table(type);
            ASSERT_TRUE(MakeWorkTable(table));
            std::vector<unsigned> shown;
            TGeneratorOptions options = Threads(nThreads);
            options.m_nProgressMs = 0;
            options.m_onProgress = [&](const TGeneratorProgress& progress) { shown.push_back(progress.m_nPermille); };
            CGeneratorRun run(table, *registers, tables.Control(), options);
            for (int level = 1; level <= 6; ++level) {
                shown.clear();
                ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
                EXPECT_TRUE(std::ranges::is_sorted(shown)) << type << " " << level;
                EXPECT_EQ(shown.back(), 1000u) << type << " " << level;
                if (nThreads == 1) { // several may leave out the last part
                    ASSERT_GE(shown.size(), 2u);
                    EXPECT_GT(*std::prev(shown.end(), 2), 600u) << type << " " << level;
                }
            }
        }
}

TEST(GeneratorLevels, ThreadsHaveThePriorityThatIsWanted) {
    const auto registers = ThreeMenTables().Registers();
    TGlobalRegister table("R");
    ASSERT_TRUE(MakeWorkTable(table));
    std::set<int> nice;
    TGeneratorOptions options = Threads(4);
    options.m_nThreadPriority = -3;
    options.m_nProgressMs = 0;
    const int own = getpriority(PRIO_PROCESS, 0);
    options.m_onProgress = [&](const TGeneratorProgress&) {
        nice.insert(getpriority(PRIO_PROCESS, 0));
        if (nice.size() == 1 && nice.contains(own)) // on a busy machine the others hardly begin before all is done
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    };
    CGeneratorRun run(table, *registers, ThreeMenTables().Control(), options);
    for (int level = 1; level <= 300 && nice.size() < 2; ++level)
        ASSERT_EQ(run.RunLevel(level).m_nResult, kLevelDone);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), own) << "this thread is not one of them";
    constexpr int kLow = 15; // as the system measures it
    if (own < kLow) {
        EXPECT_EQ(nice, (std::set<int>{own, kLow}));
    }
}

TEST(GeneratorLevels, MissingMaterialIsNamed) {
    CGeneratedTables tables;
    tables.Write("R", ThreeMenElements("R"));
    for (const int nThreads : {1, 2}) {
        const TLevelResult result = FailedLevelOne(tables, "P", nThreads);
        ASSERT_FALSE(result.m_errors.empty());
        EXPECT_EQ(result.m_errors.front(), "No global register found for position type Q");
        EXPECT_FALSE(result.m_bSystemFailed);
    }
    const auto registers = tables.Registers();
    TGlobalRegister table("P");
    ASSERT_TRUE(MakeWorkTable(table));
    const CGeneratorRun run(table, *registers, tables.Control());
    EXPECT_EQ(run.MissingTypes(), std::vector<std::string>{"Q"}); // one bishop or knight needs no data
    EXPECT_LT(run.MemoryInUse() * 10, table.data.size());
}

TEST(GeneratorLevels, CustomTypeClaimsOnlyWhatIsTrueWithAllMenFree) {
    CGeneratedTables tables;
    const TElements elements = tables.Generate("Qk+Kc3", Threads(2));
    const TPositionIndexing custom("Qk+Kc3"), free("Q");
    const TElements expected = ThreeMenElements("Q");
    unsigned nMates = 0;
    TChessboard b = EmptyChessboard();
    for (std::uint64_t index = 1; index < elements.size(); ++index) {
        if (elements[index] == 0)
            continue;
        ASSERT_TRUE(custom.GetPositionByIndex(index, b));
        const unsigned best = expected[free.GetIndex(b)];
        ASSERT_NE(best, 0u) << index;
        ASSERT_GE(elements[index], best) << index;
        nMates += elements[index] >= 2;
    }
    EXPECT_GT(nMates, 0u);
}

TEST(GeneratorMaterial, LettersAreCounted) {
    const TGeneratorMaterial material = InitForGenerator("QRRbp");
    EXPECT_EQ(material.m_nLetters, 5u);
    EXPECT_EQ(material.m_scratch.m_whiteRooks, 2);
    EXPECT_EQ(material.m_scratch.m_blackBishops, 1);
    EXPECT_TRUE(material.m_bOrdinary);
    EXPECT_FALSE(InitForGenerator("QQ").m_bOrdinary);
    EXPECT_FALSE(InitForGenerator("nnn").m_bOrdinary);
    for (const char* const type : {"K", "Qx", "QK+a2", "?"})
        EXPECT_THROW(static_cast<void>(InitForGenerator(type)), ChessException) << type;
}

TEST(GeneratorMaterial, LoneMinorPieceNeedsABlackManToMate) {
    for (const char* const type : {"", "B", "N", "q", "rp"})
        EXPECT_FALSE(CanWhiteMate(type)) << type;
    for (const char* const type : {"Q", "P", "BN", "NN", "Nn", "Bp"})
        EXPECT_TRUE(CanWhiteMate(type)) << type;
}

} // namespace quillon
