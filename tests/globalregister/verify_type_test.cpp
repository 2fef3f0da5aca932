#include "globalregister/verification/verify_type.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <optional>
#include <system_error>

#include "core/fen.h"
#include "globalregister/disk_access.h"
#include "globalregister/generator/generate_texts.h"
#include "globalregister/precalc_format.h"
#include "globalregister/verified_tables.h"
#include "platform/file_lock.h"

namespace quillon {
namespace {

const TElements& QueenTable() {
    static const TElements elements = ThreeMenElements("Q");
    return elements;
}

/// The first index with this element, from one on: of the longest mates, on which no other element depends.
std::uint64_t IndexOf(const TElements& elements, std::uint8_t element, std::uint64_t nFrom = 1) {
    return static_cast<std::uint64_t>(
        std::ranges::find(elements.begin() + static_cast<std::ptrdiff_t>(nFrom), elements.end(), element) -
        elements.begin());
}

std::string LogLine(const std::string& type, std::uint64_t index, int stored, int computed) {
    const TPositionIndexing indexing(type);
    TChessboard b = EmptyChessboard();
    EXPECT_TRUE(indexing.GetPositionByIndex(index, b));
    return std::to_string(index) + "," + WriteFEN(b, false) + " w - -," + std::to_string(stored) + "," +
           std::to_string(computed);
}

constexpr std::uint8_t kLongest = 10;
const std::string kBeginning = "Verification of precalculated data for position type Q";

class VerifyQueen : public ::testing::Test {
  protected:
    VerifyQueen() : m_elements(QueenTable()), m_nIndex(IndexOf(m_elements, kLongest)) {}

    TVerifyResult Verify(const TVerifyRequest& request = {.m_typeName = "Q"}) {
        m_tables.Write("Q", m_elements);
        if (m_nWholeListLimit)
            m_tables.MarkWholeList("Q", {}, *m_nWholeListLimit);
        return m_tables.Verify(request);
    }
    void Plant(std::uint8_t element) { m_elements[m_nIndex] = element; }

    /// The leftover log of a run makes the next one check a part of the table only, this index among it.
    ///   nLimit  half-moves, what such a run would find; none: it has not come to its end.
    void LeaveLog(std::optional<int> nLimit = 0) {
        m_nWholeListLimit = nLimit;
        std::string log;
        for (std::uint64_t index = m_nIndex % 83 + 1; index < m_elements.size(); index += 83)
            log += std::to_string(index) + ",\n";
        log += std::to_string(m_nIndex) + ",\n";
        WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", TElements(log.begin(), log.end()));
    }

    CVerifiedTables m_tables;
    TElements m_elements;
    std::uint64_t m_nIndex;
    std::optional<int> m_nWholeListLimit;
};

TEST_F(VerifyQueen, RightTableIsAllOKWithAnEmptyLog) {
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::AllChecked);
    EXPECT_EQ(result.m_nFaults, 0u);
    EXPECT_TRUE(result.m_bAllRight);
    EXPECT_EQ(result.m_nChecked, m_elements.size());
    EXPECT_EQ(result.m_status, kBeginning + " complete - all OK");
    EXPECT_EQ(m_tables.m_user.m_status,
              (std::vector<std::string>{"Starting verification of precalculated data for position type Q",
                                        "100.0% (0 fault(s) found, 0 fixable, 0 fixed)", result.m_status}));
    EXPECT_EQ(m_tables.m_user.m_told,
              std::vector<std::string>{"Information: Complete (0 fault(s) found, 0 fixable, 0 fixed)"});
    EXPECT_EQ(std::filesystem::file_size(m_tables.Folder() / "PrecalcFailuresQ.txt"), 0u);
}

struct TPlanted {
    std::uint8_t m_element;
    int m_stored;
    std::size_t m_nFixable;
};

class VerifyPlanted : public VerifyQueen, public ::testing::WithParamInterface<TPlanted> {};

TEST_P(VerifyPlanted, IsFoundLoggedAndFixedWhereItIsFixable) {
    Plant(GetParam().m_element);
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::AllChecked);
    EXPECT_EQ(result.m_nFaults, 1u);
    EXPECT_EQ(result.m_nFixable, GetParam().m_nFixable);
    EXPECT_EQ(result.m_nFixed, GetParam().m_nFixable);
    EXPECT_EQ(result.m_status, kBeginning + " complete: 1 failure(s) detected");
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ.txt"),
              std::vector<std::string>{LogLine("Q", m_nIndex, GetParam().m_stored, 2 * kLongest - 1)});
    EXPECT_EQ(m_tables.Read("Q"), GetParam().m_nFixable != 0 ? QueenTable() : m_elements);
    const CRegisterUse data = m_tables.Use("Q");
    const int expected = GetParam().m_nFixable != 0 ? 2 * kLongest - 1 : GetParam().m_stored;
    EXPECT_EQ(data->IsMateByIndex(m_nIndex), static_cast<std::uint16_t>(expected));
}

INSTANTIATE_TEST_SUITE_P(EveryKind, VerifyPlanted,
                         ::testing::Values(TPlanted{0, 0, 1}, TPlanted{12, 23, 1}, TPlanted{100, 199, 1},
                                           TPlanted{9, 17, 0}, TPlanted{255, -1, 0}));

TEST(VerifyType, MateWhereThereIsNoneIsFoundAndNotFixable) {
    CVerifiedTables tables;
    const TPositionIndexing indexing("N");
    TElements elements(indexing.GetSize(), 0);
    TChessboard b = ChessboardFromFEN("8/8/8/4k3/8/8/1N6/2K5");
    elements[indexing.GetIndex(b)] = 2;
    tables.Write("N", elements);
    const TVerifyResult result = tables.Verify({.m_typeName = "N", .m_bFix = true});
    EXPECT_EQ(result.m_nFaults, 1u);
    EXPECT_EQ(result.m_nFixable, 0u);
    EXPECT_EQ(tables.Log("PrecalcFailuresN.txt"), std::vector<std::string>{LogLine("N", indexing.GetIndex(b), 3, 0)});
    EXPECT_EQ(tables.Read("N"), elements);
}

TEST_F(VerifyQueen, EveryFaultIsMendedInTheEnd) {
    for (std::uint64_t i = 1; i < m_elements.size(); i += 7)
        if (m_elements[i] > 1)
            m_elements[i] = 0;
    const TVerifyResult first = Verify({.m_typeName = "Q", .m_bFix = true, .m_nThreads = 2});
    EXPECT_GT(first.m_nFaults, 1000u);
    EXPECT_EQ(m_tables.m_user.m_asked.back(), "Error encountered. Try fix?");
    EXPECT_EQ(std::ranges::count(m_tables.m_user.m_asked, "Error encountered. Try fix?"), 1);
    for (int pass = 0; pass < 20 && m_tables.Read("Q") != QueenTable(); ++pass) {
        std::filesystem::remove(m_tables.Folder() / "PrecalcFailuresQ.txt");
        (void)m_tables.Verify({.m_typeName = "Q", .m_bFix = true, .m_nThreads = 2});
    }
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
}

/// The positions from which the planted one is reached, and others, come out too short: nothing of that is written.
TEST_F(VerifyQueen, ElementsThatAreTooShortSpoilNoneThatAreRight) {
    constexpr std::uint64_t kEvery = 401;
    for (std::uint64_t i = 1; i < m_elements.size(); i += kEvery)
        if (m_elements[i] > 2)
            m_elements[i] = i % 2 == 0 ? 1 : 2;
    Plant(0);
    m_tables.Write("Q", m_elements);
    for (int run = 0; run < 3; ++run) {
        std::filesystem::remove(m_tables.Folder() / "PrecalcFailuresQ.txt");
        const TVerifyResult result = m_tables.Verify({.m_typeName = "Q", .m_bFix = true, .m_nThreads = 2});
        EXPECT_GT(result.m_nFixable, 50u) << "what rests on them";
        EXPECT_EQ(result.m_nFixed, 0u);
        EXPECT_EQ(m_tables.Read("Q"), m_elements);
        EXPECT_NE(m_tables.m_user.m_told[m_tables.m_user.m_told.size() - 2].find(
                      " correction(s) not written: they may rest on elements that are too short, which cannot"),
                  std::string::npos);
    }
}

TEST_F(VerifyQueen, MateOnTheMoveIsCertainWhateverElseIsFaulty) {
    Plant(1);
    const std::uint64_t nMate =
        IndexOf(m_elements, 1) == m_nIndex
            ? static_cast<std::uint64_t>(
                  std::find(m_elements.begin() + static_cast<std::ptrdiff_t>(m_nIndex) + 1, m_elements.end(), 1) -
                  m_elements.begin())
            : IndexOf(m_elements, 1);
    m_elements[nMate] = 0;
    EXPECT_EQ(Verify({.m_typeName = "Q", .m_bFix = true}).m_nFixed, 1u);
    m_elements[nMate] = 1;
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
}

TEST_F(VerifyQueen, OtherFilesOfTheTypeAreNamed) {
    LeaveLog();
    WriteLzw(m_tables.Path("Q", ".packed.lzw"), m_elements);
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_file, m_tables.Path("Q"));
    ASSERT_EQ(result.m_otherFiles.size(), 1u);
    EXPECT_NE(result.m_otherFiles[0], result.m_file);
    EXPECT_EQ(m_tables.m_user.m_told.front(), "Warning: Verified is " + result.m_file.string() + ". Not looked at:\n" +
                                                  result.m_otherFiles[0].string());
}

TEST_F(VerifyQueen, FixesOfARunThatWasStoppedAreNotWritten) {
    Plant(0);
    LeaveLog(std::nullopt);
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(result.m_nFixable, 1u);
    EXPECT_EQ(result.m_nFixed, 0u);
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
    EXPECT_NE(m_tables.m_user.m_told[m_tables.m_user.m_told.size() - 2].find("1 correction(s) not written: only a run "
                                                                             "over the whole table can tell"),
              std::string::npos);
}

TEST_F(VerifyQueen, NoToTheFirstFaultLeavesTheFile) {
    Plant(0);
    LeaveLog();
    m_tables.m_user.m_bFixes = false;
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(m_tables.m_user.m_asked.back(), "Error encountered. Try fix?");
    EXPECT_EQ(result.m_nFixable, 1u);
    EXPECT_EQ(result.m_nFixed, 0u);
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
}

TEST_F(VerifyQueen, FaultsDoNotDependOnTheNumberOfThreads) {
    for (std::uint64_t i = 1; i < m_elements.size(); i += 97)
        m_elements[i] = static_cast<std::uint8_t>(m_elements[i] / 2);
    const TVerifyResult one = Verify();
    const std::vector<std::string> log = m_tables.Log("PrecalcFailuresQ.txt");
    std::filesystem::remove(m_tables.Folder() / "PrecalcFailuresQ.txt");
    const TVerifyResult three = Verify({.m_typeName = "Q", .m_nThreads = 3});
    EXPECT_GT(log.size(), 100u);
    EXPECT_EQ(log, m_tables.Log("PrecalcFailuresQ.txt"));
    EXPECT_EQ(one.m_nFixable, three.m_nFixable);
    EXPECT_EQ(one.m_nFaults, log.size());
}

// --- packed tables, settings

TEST_F(VerifyQueen, FaultIsToldAndStaysWhereNobodyWantsItFixed) {
    Plant(0);
    LeaveLog();
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_nFixable, 1u);
    EXPECT_EQ(result.m_nFixed, 0u);
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
    EXPECT_EQ(std::ranges::count(m_tables.m_user.m_asked, "Error encountered. Try fix?"), 0);
}

TEST_F(VerifyQueen, PackedTableIsVerifiedAndNotFixed) {
    Plant(0);
    LeaveLog();
    WriteLzw(m_tables.Path("Q", ".packed.lzw"), m_elements);
    const TVerifyResult result = m_tables.Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(result.m_nFaults, 1u);
    EXPECT_EQ(result.m_nFixed, 0u);
    EXPECT_EQ(m_tables.m_user.m_told.front(),
              "Warning: Cannot open file " + m_tables.Path("Q").string() +
                  " for update.\nAny detected incoherencies will not be fixed.\n\nUse ini option "
                  "AskIfSaveAfterDecompressAllToMem in order to create updatable uncompressed precalc file.");
}

TEST_F(VerifyQueen, PackedTableThatWasSavedUnpackedIsFixed) {
    m_nIndex = IndexOf(m_elements, 1);
    Plant(0);
    LeaveLog();
    WriteLzw(m_tables.Path("Q", ".packed.lzw"), m_elements);
    m_tables.m_options.m_nUseDataPackedForRandomAccess = 0;
    m_tables.m_options.m_bAskIfSaveAfterDecompressAllToMem = true;
    const TVerifyResult result = m_tables.Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(result.m_file, m_tables.Path("Q"));
    EXPECT_EQ(result.m_nFixed, 1u);
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
}

TEST_F(VerifyQueen, TableOnDiskIsVerifiedAndFixed) {
    Plant(0);
    LeaveLog();
    m_tables.m_nQuota = 3 * m_elements.size();
    m_tables.m_options.m_bGlobalRegisterForceDiskAccess = true;
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_TRUE(m_tables.Use("Q")->diskStream.is_open());
    EXPECT_EQ(result.m_nFixed, 1u);
    EXPECT_EQ(m_tables.Use("Q")->IsMateByIndex(m_nIndex), 2 * kLongest - 1);
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
}

TEST_F(VerifyQueen, SlowSettingsAreAskedAboutAndComeBack) {
    LeaveLog();
    m_tables.m_options.m_bGlobalRegisterForceDiskAccess = true;
    m_tables.m_user.m_eSlow = ESlowSetting::TurnOff;
    WriteLzw(m_tables.Path("Q", ".packed.lzw"), m_elements);
    bool bPacked = true;
    m_tables.m_user.m_runState = [&] {
        bPacked = m_tables.Use("Q")->nRandomAccessKind != kPlainAccess;
        return ERunState::Run;
    };
    EXPECT_EQ(m_tables.Verify({.m_typeName = "Q"}).m_status, kBeginning + " complete: 0 failure(s) detected");
    EXPECT_FALSE(bPacked) << "unpacked for the run";
    ASSERT_GE(m_tables.m_user.m_asked.size(), 2u);
    EXPECT_EQ(m_tables.m_user.m_asked[0], PackedDataQuestion()) << "as before tables are made";
    EXPECT_EQ(m_tables.m_user.m_asked[1], DiskAccessQuestion());
    EXPECT_EQ(m_tables.Registers().Options().m_nUseDataPackedForRandomAccess, 2);
    EXPECT_TRUE(m_tables.Registers().Options().m_bGlobalRegisterForceDiskAccess);
}

TEST_F(VerifyQueen, NoToASlowSettingEndsIt) {
    m_tables.m_user.m_eSlow = ESlowSetting::End;
    EXPECT_EQ(Verify().m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_EQ(m_tables.m_user.m_asked.size(), 1u);
    EXPECT_TRUE(m_tables.m_user.m_told.empty());
    EXPECT_FALSE(std::filesystem::exists(m_tables.Folder() / "PrecalcFailuresQ.txt"));
}

// --- tables in the making

constexpr std::uint8_t kReached = 5;

TEST_F(VerifyQueen, PartialTableIsComparedUpToWhatItHas) {
    for (std::uint64_t i = 1; i < m_elements.size(); ++i)
        if (m_elements[i] > kReached)
            m_elements[i] = 0;
    EXPECT_EQ(Verify({.m_typeName = "Q", .m_bPartial = true}).m_nFaults, 0u);
    EXPECT_EQ(m_tables.m_user.m_told.front(), "Information: Max. mate in the partially generated file is #5");
    EXPECT_GT(m_tables.Verify({.m_typeName = "Q"}).m_nFaults, 0u) << "as a finished table it is wrong";
}

TEST_F(VerifyQueen, PartialTableIsNotMisledByOneElement) {
    for (std::uint64_t i = 1; i < m_elements.size(); ++i)
        if (m_elements[i] > kReached)
            m_elements[i] = 0;
    Plant(60);
    LeaveLog();
    WriteElements(m_tables.Path("Q", ".iter"), {2 * kReached - 1, 0, 0, 0});
    EXPECT_EQ(Verify().m_nFaults, 1u);
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ_pass2.txt"), std::vector<std::string>{LogLine("Q", m_nIndex, 119, 0)});
}

TEST_F(VerifyQueen, TableThatLooksUnfinishedKeepsBlacksMarks) {
    for (std::uint64_t i = 1; i < m_elements.size(); ++i) {
        if (m_elements[i] == 0 || m_elements[i] > kReached)
            m_elements[i] = 127;
        m_elements[i] = static_cast<std::uint8_t>(m_elements[i] | (i % 3 == 0 ? 128 : 0));
    }
    LeaveLog();
    m_tables.m_nQuota = 3 * m_elements.size(); // so that it stays on disk
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_TRUE(m_tables.Use("Q")->diskStream.is_open());
    EXPECT_GT(result.m_nFaults, 100u);
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
    EXPECT_EQ(m_tables.m_user.m_told.front().find("Warning: The data of type Q look unfinished"), 0u);
}

TEST_F(VerifyQueen, PartialTableWithAFaultBelowItsLongestMate) {
    for (std::uint64_t i = 1; i < m_elements.size(); ++i)
        if (m_elements[i] > kReached)
            m_elements[i] = 0;
    m_nIndex = IndexOf(m_elements, kReached - 1);
    Plant(0);
    EXPECT_GE(Verify({.m_typeName = "Q", .m_bPartial = true}).m_nFaults, 1u);
    const std::vector<std::string> log = m_tables.Log("PrecalcFailuresQ.txt");
    EXPECT_TRUE(std::ranges::count(log, LogLine("Q", m_nIndex, 0, 2 * kReached - 3)));
}

/// Bits and lengths of a small type, as a load of a larger one has them.
void LoadBitData(TGlobalRegister& data, const std::filesystem::path& file, const TElements& pairs,
                 const TElements& lengths, bool bPairsInMemory) {
    data.loadedFrom = file;
    WriteElements(file, pairs);
    WriteElements(DetailsBeside(file), lengths);
    data.bBitData = true;
    data.data = pairs;
    (bPairsInMemory ? data.detailStream : data.diskStream).open(DetailsBeside(file), std::ios::binary);
}

/// A level of bit data that was given up has left its lengths, and no bits: it will find them again.
TEST(VerifyPartialBitData, LengthsWithoutTheirBitsAreNoFaults) {
    constexpr std::uint8_t kDone = 4;
    CVerifiedTables tables;
    TElements lengths = ThreeMenElements("R");
    TElements pairs(lengths.size() / 4, 0);
    for (std::uint64_t i = 1; i < lengths.size(); ++i) {
        if (lengths[i] > kDone + 1 || (lengths[i] == kDone + 1 && i % 3 == 0)) // not come to yet
            lengths[i] = 0;
        if (lengths[i] != 0 && lengths[i] <= kDone)
            AddToBitPair(pairs.data(), i, 1);
    }
    for (const bool bPairsInMemory : {true, false}) {
        TGlobalRegister data("R");
        LoadBitData(data, tables.Path("R"), pairs, lengths, bPairsInMemory);
        CTableLengths own(data, true);
        const COneMoveTables oneMove(own, tables.Registers());
        const auto faults = [&](int nLimit) {
            CIndexChecker checker(oneMove, nLimit);
            for (std::uint64_t i = 1; i < lengths.size(); i += 29)
                checker.CheckIndex(i);
            return checker.m_faults.size();
        };
        EXPECT_EQ(faults(2 * kDone - 1), 0u) << bPairsInMemory;
        EXPECT_GT(faults(0), 10u) << "of a finished table they are";
        EXPECT_GT(faults(2 * kDone + 3), 10u) << "of a level that is done, too";
    }
}

struct TBitsApart {
    const char* m_type;
    bool m_bPairsInMemory;
    bool m_bPair;          // says that White mates
    std::uint8_t m_length; // in moves, beside it
    int m_nStored, m_nComputed;
};

class VerifyBitData : public ::testing::TestWithParam<TBitsApart> {};

/// What is told as stored decides whether the element can be mended.
TEST_P(VerifyBitData, WhereBitsAndLengthsDifferTheWrongOneIsTold) {
    const TBitsApart& p = GetParam();
    CVerifiedTables tables;
    TGlobalRegister data(p.m_type);
    const bool bRook = data.typeName == "R"; // nobody mates with the other type
    TElements lengths = bRook ? ThreeMenElements("R") : TElements(data.GetSize(), 0);
    TChessboard b = ChessboardFromFEN("8/8/8/4k3/8/8/1N6/2K5");
    const std::uint64_t index = bRook ? IndexOf(lengths, 16) : data.GetIndex(b);
    lengths[index] = p.m_length;
    TElements pairs(lengths.size() / 4, 0);
    for (std::uint64_t i = 1; i < lengths.size(); ++i)
        if (i == index ? p.m_bPair : lengths[i] != 0)
            AddToBitPair(pairs.data(), i, 1);
    LoadBitData(data, tables.Path(p.m_type), pairs, lengths, p.m_bPairsInMemory);
    CTableLengths own(data, false);
    const COneMoveTables oneMove(own, tables.Registers());
    CIndexChecker checker(oneMove, 0);
    checker.CheckIndex(index);
    ASSERT_EQ(checker.m_faults.size(), 1u);
    EXPECT_EQ(checker.m_faults[0].m_nStored, p.m_nStored);
    EXPECT_EQ(checker.m_faults[0].m_nComputed, p.m_nComputed);
}

constexpr bool kInMemory = true, kOnDisk = false, kMate = true, kNoMate = false;

INSTANTIATE_TEST_SUITE_P(
    EveryKind, VerifyBitData,
    ::testing::Values(TBitsApart{"R", kInMemory, kNoMate, 16, 0, 31}, TBitsApart{"R", kInMemory, kNoMate, 20, 0, 31},
                      TBitsApart{"R", kInMemory, kMate, 0, -1, 31}, TBitsApart{"R", kOnDisk, kNoMate, 16, 0, 31},
                      TBitsApart{"R", kOnDisk, kNoMate, 20, 39, 31}, TBitsApart{"R", kOnDisk, kMate, 0, -1, 31},
                      TBitsApart{"N", kInMemory, kNoMate, 5, 9, 0}, TBitsApart{"N", kOnDisk, kNoMate, 5, 9, 0},
                      TBitsApart{"N", kOnDisk, kMate, 0, -1, 0}));

/// Beside Black's mark an element has seven bits.
TEST_F(VerifyQueen, ALengthThatAnElementHasNoRoomForIsTold) {
    constexpr std::uint8_t kMost = 126;
    m_elements.assign(m_elements.size(), kMost);
    m_elements[0] = 0;
    Plant(0);
    WriteElements(m_tables.Path("Q", ".iter"), {255, 0, 0, 0}); // mates in 128 may be missing
    const std::string line = LogLine("Q", m_nIndex, 0, 2 * kMost + 1) + "\n";
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", TElements(line.begin(), line.end()));
    m_nWholeListLimit = 255;
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true, .m_bSecondPassOnly = true});
    EXPECT_EQ(result.m_nFixable, 1u);
    EXPECT_EQ(result.m_nFixed, 0u);
    EXPECT_TRUE(std::ranges::count(m_tables.m_user.m_told,
                                   "Warning: 1 correction(s) not written: an element has no room for so long a mate "
                                   "(element " +
                                       std::to_string(m_nIndex) + ")."));
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
}

class VerifyInTheMaking : public VerifyQueen, public ::testing::WithParamInterface<bool> {};

TEST_P(VerifyInTheMaking, IsFixedWithBlacksMarks) {
    const bool bOnDisk = GetParam();
    if (bOnDisk)
        m_tables.m_nQuota = 3 * m_elements.size();
    for (std::uint64_t i = 1; i < m_elements.size(); ++i) {
        if (m_elements[i] == 0 || m_elements[i] > kReached)
            m_elements[i] = 127;
        m_elements[i] = static_cast<std::uint8_t>(m_elements[i] | (i % 3 == 0 ? 128 : 0));
    }
    const TElements right = m_elements;
    m_nIndex = static_cast<std::uint64_t>(std::ranges::find(m_elements, 128 | (kReached - 1)) - m_elements.begin());
    Plant(128 | 127);
    WriteElements(m_tables.Path("Q", ".iter"), {9, 0, 0, 0});
    LeaveLog(2 * kReached - 1);
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(m_tables.Use("Q")->diskStream.is_open(), bOnDisk);
    EXPECT_GE(result.m_nFixed, 1u);
    EXPECT_EQ(m_tables.Read("Q")[m_nIndex], right[m_nIndex]);
    EXPECT_TRUE(
        std::ranges::count(m_tables.m_user.m_told, "Information: Max. mate in the partially generated file is #5"));
}

INSTANTIATE_TEST_SUITE_P(MemoryAndDisk, VerifyInTheMaking, ::testing::Bool());

// --- other processes

/// Whoever has the lock writes to the same files.
TEST_F(VerifyQueen, FixesNothingThatAnotherProcessIsAtWorkOn) {
    Plant(0);
    LeaveLog();
    m_tables.Write("Q", m_elements);
    {
        CFileLock other;
        ASSERT_TRUE(other.Take(m_tables.Path("Q", ".LOCK")));
        EXPECT_EQ(Verify({.m_typeName = "Q", .m_bFix = true}).m_eEnd, EVerifyEnd::NotBegun);
        EXPECT_EQ(m_tables.m_user.m_told,
                  std::vector<std::string>{"Error: Another process is making or mending this table: " +
                                           m_tables.Path("Q", ".LOCK").string() + " is locked by it"});
        EXPECT_EQ(m_tables.Read("Q"), m_elements);
        EXPECT_EQ(Verify().m_eEnd, EVerifyEnd::AllChecked) << "looking is free";
    }
    LeaveLog();
    EXPECT_EQ(Verify({.m_typeName = "Q", .m_bFix = true}).m_nFixed, 1u);
    EXPECT_FALSE(std::filesystem::exists(m_tables.Path("Q", ".LOCK")));
}

// --- logs

TEST_F(VerifyQueen, SecondPassChecksTheLeftoverLinesOnly) {
    Plant(0);
    const std::string line = LogLine("Q", m_nIndex, 0, 2 * kLongest - 1) + "\n";
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", TElements(line.begin(), line.end()));
    m_nWholeListLimit = 0;
    const TVerifyResult second = Verify({.m_typeName = "Q", .m_bFix = true, .m_bSecondPassOnly = true});
    EXPECT_EQ(m_tables.m_user.m_asked[1], "Unempty log file " + (m_tables.Folder() / "PrecalcFailuresQ.txt").string() +
                                              " already exists\nApply second-pass fixes to data?");
    EXPECT_EQ(second.m_nChecked, 1u);
    EXPECT_EQ(second.m_nFixed, 1u);
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ_pass2.txt"), m_tables.Log("PrecalcFailuresQ.txt"));
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ.txt").size(), 1u) << "the first log stays";
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
}

TEST_F(VerifyQueen, SecondPassAloneNeedsALog) {
    EXPECT_EQ(Verify({.m_typeName = "Q", .m_bSecondPassOnly = true}).m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_EQ(m_tables.m_user.m_told.back(),
              "Error: Cannot open file " + (m_tables.Folder() / "PrecalcFailuresQ.txt").string());
}

TEST_F(VerifyQueen, WithoutASecondPassTheLeftoverLogIsKept) {
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", {'1', ',', '\n'});
    m_tables.m_user.m_bSecondPass = false;
    m_tables.m_user.m_runState = [] { return ERunState::Break; };
    EXPECT_EQ(Verify().m_eEnd, EVerifyEnd::Stopped);
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ.txt.BAK"), std::vector<std::string>{"1,"});
    EXPECT_TRUE(m_tables.Log("PrecalcFailuresQ.txt").empty());
    EXPECT_FALSE(std::filesystem::exists(m_tables.Folder() / "PrecalcFailuresQ.txt.whole"));
}

TEST_F(VerifyQueen, SecondPassOverALogWithoutFaultsHasNothingToCheck) {
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", {});
    m_nWholeListLimit = 0;
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bSecondPassOnly = true});
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::AllChecked);
    EXPECT_TRUE(result.m_bSecondPass);
    EXPECT_TRUE(result.m_bAllRight);
    EXPECT_EQ(result.m_nChecked, 0u);
}

TEST_F(VerifyQueen, ListOfARunThatWasStoppedIsRefusedWhereItIsEmpty) {
    m_tables.m_user.m_runState = [] { return ERunState::Break; };
    EXPECT_EQ(Verify().m_eEnd, EVerifyEnd::Stopped);
    m_tables.m_user.m_runState = [] { return ERunState::Run; };
    const TVerifyResult second = Verify({.m_typeName = "Q", .m_bSecondPassOnly = true});
    EXPECT_EQ(second.m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_FALSE(second.m_bAllRight);
    EXPECT_NE(m_tables.m_user.m_told.back().find(" names no fault, but "), std::string::npos);
}

TEST_F(VerifyQueen, SecondPassMendsByTheListOfAWholeRunOverTheseFiles) {
    Plant(0);
    EXPECT_EQ(Verify().m_nFaults, 1u);
    const std::filesystem::path log = m_tables.Folder() / "PrecalcFailuresQ.txt";
    const TVerifyRequest second{.m_typeName = "Q", .m_bFix = true, .m_bSecondPassOnly = true};
    const auto nFixedAfterChange = [&](const std::filesystem::path& file) {
        const auto before = std::filesystem::last_write_time(file);
        std::filesystem::last_write_time(file, before + std::chrono::seconds(1));
        const std::size_t nFixed = m_tables.Verify(second).m_nFixed;
        std::filesystem::last_write_time(file, before);
        return nFixed;
    };
    EXPECT_EQ(nFixedAfterChange(m_tables.Path("Q")), 0u);
    EXPECT_EQ(nFixedAfterChange(log), 0u);
    EXPECT_EQ(m_tables.Read("Q"), m_elements);
    EXPECT_EQ(m_tables.Verify(second).m_nFixed, 1u);
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
    EXPECT_TRUE(std::filesystem::exists(log.string() + ".whole")) << "the fixed file is still the one of the list";
}

TEST(VerifyType, SecondPassMendsNoLongerMateWhenASubTableHasChanged) {
    CVerifiedTables tables;
    for (const char* const type : {"Q", "R"})
        tables.Write(type, ThreeMenElements(type));
    const TPositionIndexing indexing("P");
    TChessboard b = ChessboardFromFEN("8/2P5/8/8/8/k7/8/K7");
    TElements elements(indexing.GetSize(), 0);
    elements[0] = kFlagPawnRanks48;
    tables.Write("P", elements);
    const std::string line = LogLine("P", indexing.GetIndex(b), 0, 0) + "\n";
    WriteElements(tables.Folder() / "PrecalcFailuresP.txt", TElements(line.begin(), line.end()));
    tables.MarkWholeList("P", {"Q", "R"}, 0);
    const auto time = std::filesystem::last_write_time(tables.Path("Q"));
    std::filesystem::last_write_time(tables.Path("Q"), time + std::chrono::seconds(1));
    const TVerifyRequest second{.m_typeName = "P", .m_bFix = true, .m_bSecondPassOnly = true};
    const TVerifyResult changed = tables.Verify(second);
    EXPECT_EQ(changed.m_nFixable, 1u);
    EXPECT_EQ(changed.m_nFixed, 0u);
    std::filesystem::last_write_time(tables.Path("Q"), time);
    EXPECT_EQ(tables.Verify(second).m_nFixed, 1u);
}

TEST_F(VerifyQueen, SecondPassThatFindsNothingProvesNothing) {
    LeaveLog();
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_nFaults, 0u);
    EXPECT_FALSE(result.m_bAllRight);
    EXPECT_EQ(result.m_status, kBeginning + " complete: 0 failure(s) detected");
}

TEST_F(VerifyQueen, LogThatIsNoneIsRefused) {
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", {'1', ',', '\n', '4', '0', '9', '6', '0', ','});
    EXPECT_EQ(Verify().m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_EQ(m_tables.m_user.m_told.back(),
              "Error: " + (m_tables.Folder() / "PrecalcFailuresQ.txt").string() + ", line 2: no index of this type");
    EXPECT_EQ(m_tables.Log("PrecalcFailuresQ.txt").size(), 2u);
}

TEST_F(VerifyQueen, LogThatCannotBeWrittenEndsItBeforeItBegins) {
    m_tables.Write("Q", m_elements);
    const TVerifyRequest request{.m_typeName = "Q", .m_logFolder = m_tables.Folder() / "none"};
    const TVerifyResult result = VerifyType(request, m_tables.Registers(), m_tables.m_user);
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_TRUE(result.m_bSystemFailure);
    EXPECT_EQ(m_tables.m_user.m_told.back(),
              "Error: Cannot open file " + (m_tables.Folder() / "none/PrecalcFailuresQ.txt").string());
}

// --- ends

TEST_F(VerifyQueen, StopEndsItWithTheCountsOfWhatWasChecked) {
    Plant(0);
    m_tables.m_user.m_runState = [] { return ERunState::Break; };
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::Stopped);
    EXPECT_EQ(result.m_nChecked, 0u);
    EXPECT_EQ(result.m_status, kBeginning + " but stopped by user.");
    EXPECT_EQ(m_tables.m_user.m_status.back(), result.m_status);
    EXPECT_EQ(m_tables.m_user.m_told.back().find("Information: Complete ("), 0u);
}

/// The log has gone, so nothing can say that it is a whole list: that is all.
TEST_F(VerifyQueen, WhatIsWrittenIsNotToldAsUnwritten) {
    Plant(0);
    LeaveLog();
    const std::filesystem::path log = m_tables.Folder() / "PrecalcFailuresQ.txt";
    m_tables.m_user.m_runState = [&log] {
        std::filesystem::remove(log);
        return ERunState::Run;
    };
    const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true});
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::AllChecked);
    EXPECT_EQ(result.m_nFixed, 1u);
    EXPECT_EQ(m_tables.m_user.m_told,
              (std::vector<std::string>{"Warning: Error writing to file: " + log.string() + ".whole",
                                        "Information: Complete (1 fault(s) found, 1 fixable, 1 fixed)"}));
    EXPECT_EQ(m_tables.Read("Q"), QueenTable());
}

/// What has been written is not told; all else is, whatever keeps it from being written.
TEST_F(VerifyQueen, WhatAFailureKeepsFromBeingWrittenIsTold) {
    constexpr std::uint8_t kMost = 126; // one more has no room beside Black's mark
    const std::uint64_t nSecond = IndexOf(m_elements, kLongest, m_nIndex + 1);
    m_elements.assign(m_elements.size(), kMost);
    m_elements[0] = 0;
    Plant(0);
    m_elements[nSecond] = 0;
    WriteElements(m_tables.Path("Q", ".iter"), {255, 0, 0, 0});
    const std::string lines = std::to_string(m_nIndex) + ",\n" + std::to_string(nSecond) + ",\n";
    WriteElements(m_tables.Folder() / "PrecalcFailuresQ.txt", TElements(lines.begin(), lines.end()));
    m_nWholeListLimit = 255;
    for (const int nFailsAt : {1, 2}) {
        m_tables.m_user.m_onTold = [nFailsAt, nTold = 0](std::string_view text) mutable {
            if (text.find("no room for so long") != std::string_view::npos && ++nTold == nFailsAt)
                throw std::bad_alloc();
        };
        m_tables.m_user.m_told.clear();
        const TVerifyResult result = Verify({.m_typeName = "Q", .m_bFix = true, .m_bSecondPassOnly = true});
        EXPECT_EQ(result.m_nFixable, 2u);
        EXPECT_EQ(result.m_eEnd, EVerifyEnd::Failed);
        EXPECT_TRUE(result.m_bSystemFailure);
        EXPECT_TRUE(std::ranges::count(m_tables.m_user.m_told, "Warning: " + std::to_string(3 - nFailsAt) +
                                                                   " correction(s) not written: the run was not "
                                                                   "completed."))
            << nFailsAt;
    }
}

TEST_F(VerifyQueen, FailuresOfMemoryAndFilesAreOfTheSystem) {
    const auto isOfSystem = [this](auto failure) {
        LeaveLog();
        m_tables.m_user.m_runState = [failure]() -> ERunState { throw failure; };
        const TVerifyResult result = Verify();
        EXPECT_EQ(result.m_eEnd, EVerifyEnd::Failed);
        return result.m_bSystemFailure;
    };
    EXPECT_FALSE(isOfSystem(ChessException("damaged")));
    EXPECT_TRUE(isOfSystem(CDiskFailure("cannot be read")));
    EXPECT_TRUE(isOfSystem(std::filesystem::filesystem_error("gone", std::make_error_code(std::errc::io_error))));
    EXPECT_TRUE(isOfSystem(std::bad_alloc()));
}

TEST_F(VerifyQueen, PauseWaitsAndGoesOn) {
    LeaveLog();
    int nAsked = 0;
    m_tables.m_user.m_runState = [&] { return ++nAsked < 10 ? ERunState::Pause : ERunState::Run; };
    EXPECT_EQ(Verify({.m_typeName = "Q", .m_nThreads = 2}).m_eEnd, EVerifyEnd::AllChecked);
    EXPECT_GE(nAsked, 10);
}

TEST(VerifyType, TypeWithoutData) {
    CVerifiedTables tables;
    EXPECT_EQ(tables.Verify({.m_typeName = "Q"}).m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_EQ(tables.m_user.m_told.back(), "Information: No information about positions of this type");
}

const std::string kMoreMemory = ". Allow more, or let data be read from disk (ini: GlobalRegisterForceDiskAccess).";

TEST_F(VerifyQueen, DataWithoutRoomAreNotMissing) {
    m_tables.m_nQuota = m_elements.size();
    const TVerifyResult result = Verify();
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_TRUE(result.m_bSystemFailure);
    EXPECT_EQ(m_tables.m_user.m_told,
              std::vector<std::string>{"Error: Not enough memory for the data of type Q" + kMoreMemory});
}

/// The own table may stay on disk; that of a promotion is too large even to be looked at.
TEST(VerifyType, NeededDataWithoutRoomAreNotMissing) {
    CVerifiedTables tables;
    TElements elements(TPositionIndexing("Pp").GetSize(), 0);
    elements[0] = kFlagPawnRanks48;
    tables.Write("Pp", elements);
    tables.Write("Pq", {kFlagPawnRanks48});
    tables.m_nQuota = elements.size() + 1;
    ASSERT_GT(TPositionIndexing("Pq").GetSize(), tables.m_nQuota);
    const TVerifyResult result = tables.Verify({.m_typeName = "Pp"});
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::NotBegun);
    EXPECT_TRUE(result.m_bSystemFailure);
    EXPECT_EQ(tables.m_user.m_told,
              std::vector<std::string>{"Error: Not enough memory for the data of type Pq" + kMoreMemory});
}

TEST(VerifyType, MissingTableOfWhatACaptureLeadsToEndsIt) {
    CVerifiedTables tables;
    tables.Write("Qn", TElements(TPositionIndexing("Qn").GetSize(), 0));
    const TVerifyResult result = tables.Verify({.m_typeName = "Qn"});
    EXPECT_EQ(result.m_eEnd, EVerifyEnd::Failed);
    EXPECT_EQ(result.m_status, "Verification of precalculated data for position type Qn could not be completed.");
    ASSERT_GE(tables.m_user.m_told.size(), 2u);
    const std::string& told = tables.m_user.m_told[tables.m_user.m_told.size() - 2];
    EXPECT_EQ(told.find("Info: Register not found or loaded for position "), 0u) << told;
    EXPECT_TRUE(told.ends_with(" w - - !")) << told;
}

} // namespace
} // namespace quillon
