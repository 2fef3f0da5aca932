#include "globalregister/global_registers.h"

#include <atomic>
#include <thread>

#include "core/fen.h"
#include "core/heuristic_parameters.h"
#include "core/queries.h"
#include "globalregister/active_registers.h"
#include "globalregister/precalc_files.h"
#include "globalregister/table_files.h"
#include "platform/sleep.h"
#include "platform/temporary_folder.h"
#include "support/random_positions.h"
#include "tempregister/failing_allocation.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kTable = 40960;
constexpr std::uint64_t kFourTables = 4 * kTable + 1000;

TPositionType TypeOf(const char* letters) { return TPositionIndexing(letters).nPositionType; }

// White never mates with these.
const TElements& NoMates() {
    static const TElements elements(kTable, 0);
    return elements;
}

TChessboard QueenBoard() { return ThreeMenBoard("Q", 0, 9, 36); }

TChessboard WithMoves(TChessboard b, int nMoves) {
    b.m_nMoves = static_cast<std::uint16_t>(nMoves);
    return b;
}

class GlobalRegisters : public testing::Test {
  protected:
    GlobalRegisters() { m_options.m_folders = {m_home.Path(), ""}; }

    void Write(const std::string& type, const TElements& elements) {
        WriteElements(m_home.Path() / "Precalc" / (PrecalcBaseName(type) + ".precalc"), elements);
    }
    void WriteFive() {
        for (const char* const type : {"Q", "B", "N", "q", "r"})
            Write(type, NoMates());
    }
    CGlobalRegisters& Open(std::uint64_t nQuota = 1 << 20) {
        m_registers = std::make_unique<CGlobalRegisters>(m_options, m_boxes, nQuota);
        return *m_registers;
    }
    bool IsLoaded(const char* type) {
        for (const TRegisterStatus& status : m_registers->Status().m_types)
            if (status.m_typeName == type)
                return status.m_bLoaded;
        return false;
    }
    bool Use(const char* type) {
        return static_cast<bool>(CRegisterUse(m_registers->GetRegisterForTool(TypeOf(type))));
    }

    CTemporaryFolder m_home;
    TPrecalcOptions m_options;
    CHeardBoxes m_boxes;
    std::unique_ptr<CGlobalRegisters> m_registers;
};

TEST_F(GlobalRegisters, LoadOnceAndCountUses) {
    Write("Q", NoMates());
    CGlobalRegisters& registers = Open();
    EXPECT_TRUE(registers.IsTypeAvailable(TypeOf("Q")));
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("R")));
    EXPECT_FALSE(registers.IsTypeAvailable(0));
    EXPECT_EQ(registers.TotalMemoryInUse(), 0u) << "nothing is loaded before it is asked for";
    TGlobalRegister* const first = registers.GetRegisterForTool(QueenBoard());
    TGlobalRegister* const second = registers.GetRegister(WithMoves(QueenBoard(), 3), {});
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second) << "loaded data answer at any depth";
    EXPECT_EQ(registers.Status().m_types.at(0).m_nRefCount, 2);
    EXPECT_EQ(registers.TotalMemoryInUse(), kTable);
    EXPECT_EQ(registers.MemoryShown(), kTable);
    EXPECT_EQ(registers.TotalMemoryInUse(TypeOf("Q")), 0u);
    registers.ReleaseRegister(first);
    registers.ReleaseRegister(second);
    EXPECT_EQ(registers.Status().m_types.at(0).m_nRefCount, 0);
    registers.Unload(TypeOf("Q"));
    EXPECT_EQ(registers.TotalMemoryInUse(), 0u);
    EXPECT_EQ(registers.MemoryShown(), 0u);
    EXPECT_TRUE(Use("Q")) << "unloaded data can be loaded again";
}

TEST_F(GlobalRegisters, WhatCannotBeHadIsRemembered) {
    TElements cut = NoMates();
    cut.pop_back();
    Write("R", cut);
    CGlobalRegisters& registers = Open();
    EXPECT_TRUE(registers.IsTypeAvailable(TypeOf("R"))) << "there is a file";
    EXPECT_FALSE(Use("R"));
    EXPECT_FALSE(Use("Q"));
    EXPECT_EQ(m_boxes.m_told.size(), 1u);
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("R")));
    Write("R", NoMates());
    Write("Q", NoMates());
    EXPECT_FALSE(Use("R"));
    EXPECT_FALSE(Use("Q"));
    EXPECT_EQ(m_boxes.m_told.size(), 1u) << "the disk is not touched again";
    EXPECT_TRUE(registers.UnloadAll());
    EXPECT_TRUE(Use("R"));
    EXPECT_TRUE(Use("Q"));
}

TEST_F(GlobalRegisters, WithoutQuotaNothingLoads) {
    Write("Q", NoMates());
    CGlobalRegisters& registers = Open(0);
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("Q")));
    EXPECT_FALSE(Use("Q"));
    EXPECT_EQ(registers.GetRegister(WithMoves(QueenBoard(), 99), {}), nullptr);
    registers.SetQuota(1 << 20);
    EXPECT_TRUE(Use("Q"));
    registers.SetQuota(0);
    EXPECT_FALSE(IsLoaded("Q"));
}

// A problem that forbids data gets none, though others before it have loaded some and still hold them.
TEST_F(GlobalRegisters, WithoutQuotaLoadedDataAreSilent) {
    Write("Q", NoMates());
    CGlobalRegisters& registers = Open(kTable + 1000);
    {
        const CRegisterUse disk(registers.GetRegisterForTool(TypeOf("Q")));
        ASSERT_TRUE(disk);
        EXPECT_TRUE(disk->diskStream.is_open());
        registers.SetQuota(0);
        EXPECT_TRUE(IsLoaded("Q")) << "in use";
        EXPECT_EQ(registers.GetRegister(WithMoves(QueenBoard(), 99), {}), nullptr);
    }
    registers.SetQuota(0);
    EXPECT_FALSE(IsLoaded("Q"));
}

TEST_F(GlobalRegisters, MoreMemoryIsANewChance) {
    TElements cut = NoMates();
    cut.pop_back();
    Write("Q", NoMates());
    Write("R", cut);
    m_options.m_bGlobalRegisterForceDiskAccess = false;
    CGlobalRegisters& registers = Open(kTable);
    for (const char* const type : {"Q", "B"})
        EXPECT_FALSE(Use(type)) << "no room";
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("Q")));
    for (int asked = 0; asked < 2; ++asked) {
        EXPECT_FALSE(Use("Q"));
        EXPECT_TRUE(registers.LacksRoom(TypeOf("Q"))) << "whoever asks is told, not the first alone";
        EXPECT_FALSE(Use("B"));
        EXPECT_FALSE(registers.LacksRoom(TypeOf("B"))) << "there is no file";
    }
    registers.SetQuota(kTable);
    EXPECT_FALSE(Use("Q"));
    registers.SetQuota(1 << 20);
    EXPECT_TRUE(registers.IsTypeAvailable(TypeOf("Q")));
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("B"))) << "there is no file";
    EXPECT_TRUE(Use("Q"));
    EXPECT_FALSE(Use("R"));
    registers.SetQuota(2 << 20);
    EXPECT_FALSE(registers.IsTypeAvailable(TypeOf("R"))) << "memory does not mend a file";
}

TEST_F(GlobalRegisters, WhatTheMachineHasNoMemoryForHadNoRoom) {
    WriteLz4(m_home.Path() / "Precalc/Q.precalc.lz4", ThreeMenElements("Q"));
    CGlobalRegisters& registers = Open();
    {
        const test::CFailingAllocations failing(0, kTable);
        EXPECT_FALSE(Use("Q"));
    }
    EXPECT_TRUE(registers.LacksRoom(TypeOf("Q")));
    EXPECT_EQ(registers.TotalMemoryInUse(), 0u);
    registers.SetQuota(2 << 20);
    EXPECT_TRUE(Use("Q"));
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{});
}

TEST_F(GlobalRegisters, CustomTypesAreHadByTheirNumber) {
    constexpr const char* kCustomType = "Rk+Kc2+Pa2+pa3";
    TElements elements(TPositionIndexing(kCustomType).GetSize(), 5);
    elements[0] = 0; // the flags
    WriteElements(m_home.Path() / "CustomPrecalc" / (PrecalcBaseName(kCustomType) + ".precalc"), elements);
    CGlobalRegisters& registers = Open();
    EXPECT_EQ(registers.CustomNumber("Rk+Kc2+Pa2+pa4"), 0u);
    const TPositionType number = registers.CustomNumber(kCustomType);
    ASSERT_NE(number, 0u);
    EXPECT_EQ(registers.GetRegisterForTool(number + 2), nullptr) << "there is no second one";
    {
        const CRegisterUse data(registers.GetRegisterForTool(number));
        ASSERT_TRUE(data);
        EXPECT_EQ(data->typeName, kCustomType);
    }
    registers.Unload(number);
    const TChessboard b = ChessboardFromFEN("8/8/8/4k3/8/p7/P1K5/7R");
    std::size_t next = 0;
    EXPECT_FALSE(CRegisterUse(registers.GetCustomRegister(b, {}, next))) << "not worth a load";
    next = 0;
    EXPECT_TRUE(CRegisterUse(registers.GetCustomRegisterForTool(b, next)));
    EXPECT_FALSE(CRegisterUse(registers.GetCustomRegisterForTool(b, next)));
}

TEST_F(GlobalRegisters, DataNotUsedForLongestGoFirst) {
    WriteFive();
    Open(kFourTables);
    for (const char* const type : {"B", "Q", "N", "q"}) {
        EXPECT_TRUE(Use(type));
        SleepMs(12); // more than the grain of the clock
    }
    EXPECT_TRUE(Use("B"));
    SleepMs(12);
    EXPECT_TRUE(Use("r"));
    EXPECT_FALSE(IsLoaded("Q"));
    for (const char* const type : {"B", "N", "q", "r"})
        EXPECT_TRUE(IsLoaded(type)) << type;
    EXPECT_EQ(m_registers->TotalMemoryInUse(), 4 * kTable);
}

TEST_F(GlobalRegisters, DataInUseStay) {
    WriteFive();
    CGlobalRegisters& registers = Open(kFourTables);
    std::vector<TGlobalRegister*> used;
    for (const char* const type : {"B", "Q", "N", "q"})
        used.push_back(registers.GetRegisterForTool(TypeOf(type)));
    {
        const CRegisterUse last(registers.GetRegisterForTool(TypeOf("r")));
        ASSERT_TRUE(last);
        EXPECT_TRUE(last->diskStream.is_open()) << "there is no room in memory";
    }
    EXPECT_EQ(registers.TotalMemoryInUse(), 4 * kTable);
    registers.SetQuota(3 * kTable);
    EXPECT_EQ(registers.TotalMemoryInUse(), 4 * kTable) << "all are in use";
    for (TGlobalRegister* const data : used)
        registers.ReleaseRegister(data);
    registers.SetQuota(3 * kTable);
    EXPECT_EQ(registers.TotalMemoryInUse(), 3 * kTable);
}

TEST_F(GlobalRegisters, GeneratorIsToldThatThereIsNoRoom) {
    WriteFive();
    CGlobalRegisters& registers = Open(kFourTables);
    registers.SetGeneratorMode(true);
    for (const char* const type : {"B", "Q", "N", "q"})
        EXPECT_TRUE(Use(type));
    EXPECT_EQ(m_boxes.m_told, std::vector<std::string>{});
    (void)Use("r");
    ASSERT_FALSE(m_boxes.m_told.empty());
    EXPECT_EQ(m_boxes.m_told[0], "Warning: Cannot load subregister: memory quota for data generation exceeded");
    for (const char* const type : {"B", "Q", "N", "q"})
        EXPECT_TRUE(IsLoaded(type)) << type << ": nothing is unloaded";
}

struct TGateRow {
    const char* m_fen;
    std::uint32_t m_nHeuristics;
    int m_nAlways, m_nSmall; // half-moves from which on any table, or one of few men, is loaded; 0: never
};

// Told for a search of one solution; with all solutions each limit is six half-moves lower.
TEST_F(GlobalRegisters, ShallowNodesLoadNothing) {
    const TGateRow rows[] = {
        {"8/8/8/3k4/8/8/8/K3Q3", 0, 19, 15},
        {"8/8/8/3k4/8/8/1n6/K3Q3", 0, 19, 15},
        {"8/8/8/3k4/8/8/1nn5/K3Q3", 0, 19, 0},
        {"8/8/8/3k4/8/8/8/K3R3", 0, 21, 0},
        {"8/8/8/3k4/8/8/8/K3Q3", SH_KEEPKINGONTHEEDGE, 21, 19},
        {"8/8/8/3k4/8/8/8/K3Q3", SH_ASSERTBLACKKINGSURROUNDED, 21, 19},
        {"8/8/8/3k4/8/8/1nn5/K3Q3", SH_DONTLETFIGUREUNBLOCK, 21, 0},
        {"8/8/8/3k4/8/8/8/K3Q3", SH_ZUGZWANG, 19, 15},
    };
    for (const TGateRow& row : rows)
        for (const bool bAll : {false, true})
            for (int n = 1; n < 40; n += 2) {
                TChessboard b = WithMoves(ChessboardFromFEN(row.m_fen), n);
                b.m_nHeuristics = row.m_nHeuristics;
                const int deep = n + (bAll ? 6 : 0);
                const bool bExpected = deep >= row.m_nAlways || (row.m_nSmall != 0 && deep >= row.m_nSmall);
                EXPECT_EQ(IsWorthLoading(b, {.m_bAllSolutions = bAll}, 2), bExpected) << row.m_fen << ' ' << n << bAll;
            }
}

TEST_F(GlobalRegisters, TightLimitsKeepLargeTablesOut) {
    const char* const boards[] = {"8/8/8/3k4/8/8/1n6/K3Q3", "8/8/8/3k4/8/8/1nn5/K3Q3", "8/8/8/3k4/8/8/1nnn4/K3Q3"};
    const bool expected[][3] = {{true, true, true}, {true, true, false}, {true, false, false}};
    for (std::size_t i = 0; i < std::size(boards); ++i) {
        const TChessboard b = WithMoves(ChessboardFromFEN(boards[i]), 99);
        EXPECT_EQ(IsWorthLoading(b, {}, 2), expected[0][i]) << i;
        EXPECT_EQ(IsWorthLoading(b, {.m_bTightLimits = true}, 2), expected[1][i]) << i;
        EXPECT_EQ(IsWorthLoading(b, {.m_bTightLimits = true}, 1), expected[2][i]) << i;
    }
    Write("Q", NoMates());
    CGlobalRegisters& registers = Open();
    EXPECT_EQ(registers.GetRegister(WithMoves(QueenBoard(), 13), {}), nullptr);
    EXPECT_FALSE(IsLoaded("Q"));
    const CRegisterUse loaded(registers.GetRegister(WithMoves(QueenBoard(), 15), {}));
    EXPECT_TRUE(loaded);
}

TEST_F(GlobalRegisters, OfManyMenTablesWithFrozenOnesAreLoaded) {
    const TChessboard b = WithMoves(ChessboardFromFEN("7k/8/8/8/8/pppppp2/8/7K"), 99);
    const std::pair<const char*, bool> types[] = {{"Kkp(a3)p(b3)p(c3)p(d3)p(e3)p(f3)", false},
                                                  {"Kkp(a3)p(b3)p(c3)p(d3)p(e3)+pf3", true}};
    for (const auto& [type, bLoaded] : types) {
        const fs::path path = m_home.Path() / "CustomPrecalc" / (PrecalcBaseName(type) + ".precalc");
        WriteElements(path, TElements(TPositionIndexing(type).GetSize(), 0));
        CGlobalRegisters& registers = Open(1 << 22);
        std::size_t next = 0;
        EXPECT_EQ(static_cast<bool>(CRegisterUse(registers.GetCustomRegister(b, {}, next))), bLoaded) << type;
        EXPECT_TRUE(CRegisterUse(registers.GetRegisterForTool(registers.CustomNumber(type)))) << type;
        fs::remove(path);
    }
}

// A load that waits until it is told to go on: the box about an unfinished table holds it up.
class CHeldBox final : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {
        ++m_nTold;
        while (!m_bGo)
            SleepMs(1);
    }
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
    std::atomic<int> m_nTold{0};
    std::atomic<bool> m_bGo{false};
};

std::atomic<int> g_nAskedToStop{0};

TEST_F(GlobalRegisters, SecondThreadWaitsForTheLoadOfTheFirst) {
    TElements unfinished = NoMates();
    unfinished[777] = kUnknownElement;
    Write("Q", unfinished);
    CHeldBox box;
    CGlobalRegisters registers(m_options, box, 1 << 20);
    std::atomic<TGlobalRegister*> first{nullptr}, second{nullptr};
    const auto load = [&](std::atomic<TGlobalRegister*>& data) {
        data = registers.GetRegisterForTool(TypeOf("Q"));
        registers.ReleaseRegister(data);
    };
    std::thread a(load, std::ref(first));
    while (box.m_nTold == 0)
        SleepMs(1);
    EXPECT_EQ(registers.Status().m_nPending, 1);
    EXPECT_FALSE(registers.UnloadAll()) << "a load is pending";
    std::thread b(load, std::ref(second));
    g_nAskedToStop = 0;
    TSearchGate stopped;
    stopped.m_isStopping = [](const TChessboard&) { return ++g_nAskedToStop > 3; };
    EXPECT_EQ(registers.GetRegister(WithMoves(QueenBoard(), 99), stopped), nullptr) << "stopped while it waited";
    EXPECT_EQ(second, nullptr);
    box.m_bGo = true;
    a.join();
    b.join();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(box.m_nTold, 1) << "one load";
}

TEST_F(GlobalRegisters, StatusTellsSizesUsesAndWhatIsMissing) {
    Write("Q", NoMates());
    CGlobalRegisters& registers = Open();
    EXPECT_EQ(ShowStatus(registers.Status()),
              "Current size of global register in memory: 0 MB\n0 register(s) pending.");
    const CRegisterUse queen(registers.GetRegisterForTool(TypeOf("Q")));
    EXPECT_FALSE(Use("R"));
    registers.ReleaseRegister(registers.GetRegisterForTool(TypeOf("Q")));
    EXPECT_EQ(ShowStatus(registers.Status()), "Current size of global register in memory: 0 MB\n"
                                              "Q 0 MB AllocCount=1 LastAccess 0 sec(s). ago\n"
                                              "R unavailable/redundant/not enough memory\n"
                                              "0 register(s) pending.");
}

TEST_F(GlobalRegisters, OnlyActiveDataAreAtHand) {
    Write("Q", NoMates());
    EXPECT_FALSE(IsPrecalcDataAvailable(TypeOf("Q")));
    EXPECT_FALSE(IsTypeAvailable(TypeOf("Q")));
    {
        const CActiveRegisters active(Open());
        EXPECT_TRUE(IsPrecalcDataAvailable(TypeOf("Q")));
        EXPECT_FALSE(IsPrecalcDataAvailable(TypeOf("R")));
        EXPECT_TRUE(IsTypeAvailable(TypeOf("Q")));
        EXPECT_TRUE(IsLoaded("Q"));
        EXPECT_EQ(m_registers->Status().m_types.at(0).m_nRefCount, 0) << "the question leaves nothing pinned";
    }
    EXPECT_FALSE(IsPrecalcDataAvailable(TypeOf("Q")));
}

TEST_F(GlobalRegisters, FilesAreFoundWhereTheyAreLookedFor) {
    const CTemporaryFolder second;
    Write("Q", NoMates());
    m_home.Write("Precalc/4pieces-pawns/Qr_.precalc.lz4", "x");
    m_home.Write("Precalc/QR.precalc", "not looked for: there is a sub-folder for its men");
    m_home.Write("Precalc/readme.txt", "x");
    m_home.Write("CustomPrecalc/KQk_+Pa2.precalc", "x");
    second.Write("Q.precalc.packed.lzw", "xyz");
    second.Write("PPp_.precalc.details", "x");
    const TPrecalcFolders folders = FoldersOf(m_home.Path(), second.Path());
    std::vector<std::string> names;
    for (const TPrecalcFileFound& found : FindPrecalcFiles(folders))
        names.push_back(found.m_typeName + (found.m_file.m_bDetails ? " details " : " ") +
                        std::to_string(static_cast<int>(found.m_file.m_kind)) +
                        (found.m_file.m_bSecondRoot ? " second " : " ") + std::to_string(found.m_nSize));
    EXPECT_EQ(names, (std::vector<std::string>{"Q 0 40960", "Q 2 second 3", "Qr 1 1", "PPp details 0 second 1",
                                               "KQk+Pa2 0 1"}));
    const TPrecalcFolders direct = FoldersOf(second.Path(), "");
    EXPECT_EQ(FindPrecalcFiles(direct).size(), 2u) << "a folder with the files themselves";
}

// Eight threads look up while tables are loaded, evicted for lack of room, and unloaded under them.
TEST_F(GlobalRegisters, AnswersAreRightWhileDataComeAndGo) {
    WriteFive();
    Write("Q", ThreeMenElements("Q"));
    Write("R", ThreeMenElements("R"));
    CGlobalRegisters& registers = Open(kFourTables);
    const reference::ThreeMenTable& queens = ReferenceTable("Q");
    const reference::ThreeMenTable& rooks = ReferenceTable("R");
    std::atomic<int> nWrong{0}, nAnswers{0}, nRunning{8}, nRounds{0};
    const auto lookUp = [&](unsigned seed) {
        std::mt19937_64 rng(seed);
        for (int i = 0; i < 2000 || nRounds < 15; ++i) {
            const int w = reference::DrawInt(rng, 64), p = reference::DrawInt(rng, 64), k = reference::DrawInt(rng, 64);
            if (w == p || p == k || w == k)
                continue;
            const bool bQueen = reference::Chance(rng, 50);
            const TChessboard b = WithMoves(ThreeMenBoard(bQueen ? "Q" : "R", w, p, k), 31);
            const CRegisterUse data(registers.GetRegister(b, {}));
            if (!data)
                continue;
            const int length = (bQueen ? queens : rooks).Length(w, p, k);
            nWrong += data->IsMate(b) != (length == 0 ? 0 : 2 * length - 1);
            ++nAnswers;
        }
        --nRunning;
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 8; ++i)
        threads.emplace_back(lookUp, i);
    std::mt19937_64 rng(8);
    while (nRunning > 0) {
        const char* const types[] = {"Q", "R", "B", "N", "q", "r"};
        (void)Use(types[reference::Draw(rng, 6)]);
        registers.Unload(TypeOf(types[reference::Draw(rng, 2)]));
        ++nRounds;
        SleepMs(0);
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(nWrong, 0);
    EXPECT_GT(nAnswers, 8'000);
    for (const TRegisterStatus& status : registers.Status().m_types)
        EXPECT_EQ(status.m_nRefCount, 0) << status.m_typeName;
}

// Tables larger than a quarter of the quota are read from disk, plain and packed.
TEST_F(GlobalRegisters, ManyThreadsReadFromDisk) {
    for (const bool bPacked : {false, true}) {
        const fs::path table = m_home.Path() / "Precalc/R.precalc";
        fs::remove(table);
        if (bPacked)
            WriteLzw(table.string() + ".packed.lzw", ThreeMenElements("R"));
        else
            WriteElements(table, ThreeMenElements("R"));
        CGlobalRegisters& registers = Open(kTable + 1000);
        std::atomic<int> nWrong{0}, nAnswers{0};
        const auto lookUp = [&](unsigned seed) {
            std::mt19937_64 rng(seed);
            for (int i = 0; i < 60; ++i) {
                const int w = reference::DrawInt(rng, 64), p = reference::DrawInt(rng, 64),
                          k = reference::DrawInt(rng, 64);
                if (w == p || p == k || w == k)
                    continue;
                const TChessboard b = WithMoves(ThreeMenBoard("R", w, p, k), 31);
                const CRegisterUse data(registers.GetRegister(b, {}));
                if (!data)
                    continue;
                const int length = ReferenceTable("R").Length(w, p, k);
                nWrong += data->ProvedHalfMoves(b) != (length == 0 ? 0 : 2 * length - 1);
                nAnswers += data->diskStream.is_open() || (data->packed && data->packed->IsStreaming());
            }
        };
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < 8; ++i)
            threads.emplace_back(lookUp, i);
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(nWrong, 0);
        EXPECT_GT(nAnswers, 300);
    }
}

} // namespace
} // namespace quillon
