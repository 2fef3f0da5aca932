#include "globalregister/generator/generate.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "core/chess_exception.h"
#include "globalregister/generate_fixture.h"
#include "globalregister/generator/existing_table.h"
#include "globalregister/precalc_format.h"
#include "globalregister/table_files.h"
#include "platform/memory_info.h"
#include "platform/save_file.h"

namespace quillon {
namespace {

TEST_F(GenerateTables, MadeFromTheRules) {
    m_folder.Write("MaxMateIndexesCache/Q.idx", "of an earlier table");
    const TGenerateReport report = Make("Q");
    EXPECT_EQ(report.m_status, EGenerateStatus::Done);
    EXPECT_TRUE(report.m_bMade);
    EXPECT_EQ(report.m_found, EFoundTable::None);
    EXPECT_EQ(report.m_nMate, 10u);
    EXPECT_GE(report.m_nLevels, 19u);
    EXPECT_EQ(report.m_file, Plain("Q"));
    EXPECT_EQ(report.m_nBytes, 40960u);
    const TElements& expected = Expected("Q");
    EXPECT_EQ(report.m_nPositions,
              static_cast<std::uint64_t>(std::ranges::count_if(expected, [](auto n) { return n != 0; })));
    EXPECT_FALSE(fs::exists(m_folder.Path() / "MaxMateIndexesCache/Q.idx"));
    ExpectWhole("Q");
    EXPECT_EQ(m_host.m_boxes.m_told, TTexts{});
    EXPECT_EQ(m_host.m_ended, TTexts{"Q"});
}

TEST_F(GenerateTables, FoldersForSoManyMenAreUsed) {
    fs::create_directories(m_folder.Path() / "Precalc/3pieces-pawns");
    const TGenerateReport report = Make("R");
    EXPECT_EQ(report.m_file, m_folder.Path() / "Precalc/3pieces-pawns/R.precalc");
    EXPECT_TRUE(ReadWholeFile(report.m_file) == Expected("R"));
}

// --- settings of the run

TEST_F(GenerateTables, SlowSettingsAreChallenged) {
    m_precalc.m_nUseDataPackedForRandomAccess = 2;
    m_precalc.m_bGlobalRegisterForceDiskAccess = true;
    m_precalc.m_folders.m_secondRoot = m_folder.Path() / "second";
    m_host.m_answers = {EThreeWay::No};
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(m_host.m_asked,
              TTexts{"Option to use compressed data \"random access\" (ini: UseDataPackedForRandomAccess) is on - it "
                     "slows down data generation process.\nDo you want to continue?\n\nNOTE: Select CANCEL, to "
                     "continue with changed setting to force unpack data to memory (for better performance)"});
    m_host.m_asked.clear();
    m_host.m_answers = {EThreeWay::Yes, EThreeWay::No};
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Cancelled);
    ASSERT_EQ(m_host.m_asked.size(), 2u);
    EXPECT_EQ(m_host.m_asked[1],
              "Option to use data from disk (ini: GlobalRegisterForceDiskAccess) without loading to memory is on - it "
              "SIGNIFICANTLY slows down data generation process.\nDo you want to continue?\n\nNOTE: Select CANCEL, to "
              "continue with changed setting to force unpack data to memory (for better performance)");
    m_host.m_asked.clear();
    m_host.m_answers = {EThreeWay::Cancel, EThreeWay::Yes};
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(m_host.m_boxes.m_asked, TTexts{"There is an additional PrecalcPath = " +
                                             (m_folder.Path() / "second").string() + "\nDo you want to continue?"});
    EXPECT_FALSE(fs::exists(Plain("Q")));
    m_host.m_boxes.m_answers = {true, true};
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
    ExpectWhole("Q");
}

TEST_F(GenerateTables, MemoryIsLimited) {
    m_options.m_nMemoryBytes = 40000;
    const TGenerateReport report = Make("Q");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_TRUE(report.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: Not enough memory to allocate buffer for data generation."});
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.Path() / "Precalc"), {}), 0);
}

// --- what is there already

TEST_F(GenerateTables, AFinishedTableStaysUnlessItIsToBeMadeAnew) {
    WriteElements(Plain("Q"), Old());
    m_host.m_answers = {EThreeWay::Yes, EThreeWay::Cancel, EThreeWay::No};
    for (const EGenerateStatus status : {EGenerateStatus::Done, EGenerateStatus::Cancelled}) {
        const TGenerateReport report = Make("Q");
        EXPECT_EQ(report.m_status, status);
        EXPECT_EQ(report.m_found, EFoundTable::Finished);
        EXPECT_FALSE(report.m_bMade);
        EXPECT_TRUE(Table("Q") == Old());
    }
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
    EXPECT_EQ(m_host.m_asked, TTexts(3, "File already exists. Continue filling data?"));
    EXPECT_TRUE(ReadWholeFile(Beside("Q", ".BAK")) == Old());
    ExpectWhole("Q");
}

TEST_F(GenerateTables, OptionsAnswerForTheUser) {
    WriteElements(Plain("Q"), Old());
    for (const EExistingTable choice : {EExistingTable::Leave, EExistingTable::Continue, EExistingTable::Restart}) {
        m_options.m_existing = choice;
        const TGenerateReport report = Make("Q");
        EXPECT_EQ(report.m_status, EGenerateStatus::Done);
        EXPECT_EQ(report.m_bMade, choice == EExistingTable::Restart);
    }
    ExpectWhole("Q");
    m_options.m_existing = EExistingTable::Restart;
    EXPECT_EQ(MakeUpTo("Q", 5).m_status, EGenerateStatus::Cancelled);
    m_options.m_existing = EExistingTable::Leave;
    const TGenerateReport left = Make("Q");
    EXPECT_EQ(left.m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(left.m_found, EFoundTable::Unfinished);
    EXPECT_EQ(left.m_nMate, 3u) << "level 5 is White's third move";
    m_options.m_existing = EExistingTable::Continue;
    EXPECT_TRUE(Make("Q").m_bMade);
    ExpectWhole("Q");
    EXPECT_EQ(m_host.m_asked, TTexts{});
}

/// The rest of the files is what a stopped restart leaves.
TEST_F(GenerateTables, AnotherRestartDoesNotCostTheFinishedTable) {
    WriteElements(Plain("Q"), Old());
    m_options.m_existing = EExistingTable::Restart;
    (void)MakeUpTo("Q", 3);
    (void)MakeUpTo("Q", 5);
    EXPECT_TRUE(ReadWholeFile(Beside("Q", ".BAK")) == Old());
    EXPECT_EQ(ReadWholeFile(Beside("Q", ".iter")), (TElements{5, 0, 0, 0}));
}

TEST_F(GenerateTables, ATableInAnyFormIsThere) {
    m_options.m_packForm = ETableForm::Lz4;
    ASSERT_TRUE(Make("Q").m_bMade);
    m_options.m_packForm.reset();
    fs::remove(Plain("Q"));
    const TElements packed = ReadWholeFile(Beside("Q", ".lz4")).value();
    m_options.m_existing = EExistingTable::Continue;
    const TGenerateReport there = Make("Q");
    EXPECT_EQ(there.m_status, EGenerateStatus::Done);
    EXPECT_EQ(there.m_file, Beside("Q", ".lz4"));
    EXPECT_EQ(there.m_nBytes, packed.size());
    EXPECT_FALSE(there.m_bMade || fs::exists(Plain("Q")));
    m_options.m_existing = EExistingTable::Restart;
    EXPECT_TRUE(Make("Q").m_bMade);
    EXPECT_FALSE(fs::exists(Beside("Q", ".lz4")));
    EXPECT_EQ(ReadWholeFile(Beside("Q", ".lz4.BAK")), packed);
    ExpectWhole("Q");
}

TEST_F(GenerateTables, ATableOfTheSecondRootIsThere) {
    m_precalc.m_folders.m_secondRoot = m_folder.Path() / "second";
    const fs::path file = m_folder.Path() / "second/Q.precalc";
    WriteElements(file, Old());
    m_host.m_boxes.m_answers = {true, true};
    m_options.m_existing = EExistingTable::Leave;
    const TGenerateReport there = Make("Q");
    EXPECT_EQ(there.m_status, EGenerateStatus::Done);
    EXPECT_EQ(there.m_file, file);
    m_options.m_existing = EExistingTable::Restart;
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
    ASSERT_EQ(m_host.m_boxes.m_told.size(), 1u);
    EXPECT_TRUE(m_host.m_boxes.m_told[0].starts_with("Error: The following file exists: " + file.string()));
    EXPECT_TRUE(fs::is_empty(m_folder.Path() / "Precalc"));
}

/// One of the first root does not help: that of the second would be marked as in the making, and taken all the same.
TEST_F(GenerateTables, NoRestartBesideAFinishedTableOfTheSecondRoot) {
    m_precalc.m_folders.m_secondRoot = m_folder.Path() / "second";
    const fs::path file = m_folder.Path() / "second/Q.precalc";
    WriteElements(file, Old());
    WriteElements(Plain("Q"), Old(2));
    m_options.m_existing = EExistingTable::Restart;
    m_host.m_boxes.m_answers = {true, true};
    for (const bool bUnfinished : {false, true}) {
        if (bUnfinished)
            WriteElements(Beside("Q", ".iter"), {3, 0, 0, 0});
        EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
        ASSERT_EQ(m_host.m_boxes.m_told.size(), 1u);
        EXPECT_TRUE(m_host.m_boxes.m_told[0].starts_with("Error: The following file exists: " + file.string()));
        EXPECT_TRUE(Table("Q") == Old(2));
        EXPECT_EQ(fs::exists(Beside("Q", ".iter")), bUnfinished);
    }
}

/// It has its full size, but no load takes it for finished, nor a table of the first root beside it.
TEST_F(GenerateTables, ATableInTheMakingInTheSecondRootIsNoneAndTold) {
    m_precalc.m_folders.m_secondRoot = m_folder.Path() / "second";
    const fs::path file = m_folder.Path() / "second/Q.precalc";
    WriteElements(file, Old());
    WriteElements(file.string() + ".iter", {3, 0, 0, 0});
    for (const bool bFirstToo : {false, true})
        for (const EExistingTable choice : {EExistingTable::Leave, EExistingTable::Continue, EExistingTable::Restart}) {
            m_host.m_boxes.m_asked.clear();
            m_host.m_boxes.m_answers = {true};
            m_options.m_existing = choice;
            if (bFirstToo)
                WriteElements(Plain("Q"), Old());
            EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
            ASSERT_EQ(m_host.m_boxes.m_told.size(), 1u);
            EXPECT_TRUE(m_host.m_boxes.m_told[0].starts_with("Error: A table in the making: " + file.string()));
        }
    EXPECT_FALSE(fs::exists(Beside("Q", ".iter")));
}

/// The same folder under both names has one table.
TEST_F(GenerateTables, ASecondRootThatIsTheFirstIsNoOtherFolder) {
    m_precalc.m_folders.m_secondRoot = m_folder.Path() / "Precalc";
    m_host.m_boxes.m_answers = {true};
    WriteElements(Plain("Q"), Old());
    m_options.m_existing = EExistingTable::Restart;
    (void)MakeUpTo("Q", 3);
    m_options.m_existing = EExistingTable::Continue;
    m_host.m_boxes.m_asked.clear();
    EXPECT_TRUE(Make("Q").m_bMade);
    ExpectWhole("Q");
}

TEST_F(GenerateTables, WhatIsNoTableIsNotTakenForOne) {
    WriteElements(Plain("Q"), {1, 2, 3});
    m_options.m_existing = EExistingTable::Leave;
    const TGenerateReport wrong = Make("Q");
    EXPECT_EQ(wrong.m_status, EGenerateStatus::Failed);
    EXPECT_FALSE(wrong.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told,
              TTexts{"Error: Error reading file " + Plain("Q").string() + " (it is no whole table of its type)"});
    EXPECT_EQ(Table("Q"), (TElements{1, 2, 3}));
    m_options.m_existing = EExistingTable::Restart;
    EXPECT_TRUE(Make("Q").m_bMade);
    ExpectWhole("Q");
}

TEST_F(GenerateTables, OneProcessMakesATable) {
    fs::create_directories(Plain("Q").parent_path());
    CGeneratorFiles other({Plain("Q"), {}});
    ASSERT_TRUE(other.Lock());
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
    ASSERT_EQ(m_host.m_boxes.m_told.size(), 1u);
    EXPECT_TRUE(m_host.m_boxes.m_told[0].starts_with("Error: Another process is making or mending this table: "));
    EXPECT_FALSE(fs::exists(Plain("Q")));
}

TEST_F(GenerateTables, ASaveThatNobodyCanEndForbidsToGoOn) {
    WriteElements(Beside("Q", ".SAVE_PENDING"), {});
    m_options.m_existing = EExistingTable::Restart;
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
    EXPECT_EQ(m_host.m_boxes.m_told,
              TTexts{"Error: The following file exists: " + Beside("Q", ".SAVE_PENDING").string() +
                     "\n\nThis indicates a failure during save.\nGeneration cannot be continued."});
    EXPECT_FALSE(fs::exists(Plain("Q")));
}

TEST_F(GenerateTables, FilesThatAreNotWhatTheyWereAreRefused) {
    MakeUpTo("Q", 6);
    const TElements table = Table("Q");
    m_options.m_existing = EExistingTable::Continue;
    TElements wrong = table;
    wrong.pop_back();
    const auto expectFailure = [this](const fs::path& file, bool bSystem) {
        const TGenerateReport report = Make("Q");
        EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
        EXPECT_EQ(report.m_bSystemFailed, bSystem) << file;
        EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: Error reading file " + file.string()});
    };
    WriteElements(Plain("Q"), wrong);
    expectFailure(Plain("Q"), false);
    wrong = table;
    wrong[0] = 1; // flags of pawns
    WriteElements(Plain("Q"), wrong);
    expectFailure(Plain("Q"), false);
    fs::remove(Plain("Q"));
    fs::create_directory(Plain("Q")); // what cannot be read
    expectFailure(Plain("Q"), true);
    fs::remove(Plain("Q"));
    WriteElements(Plain("Q"), table);
    WriteElements(Beside("Q", ".iter"), {6, 0});
    expectFailure(Beside("Q", ".iter"), false);
    fs::remove(Beside("Q", ".iter"));
    fs::create_directory(Beside("Q", ".iter"));
    expectFailure(Beside("Q", ".iter"), true);
    fs::remove(Beside("Q", ".iter"));
    WriteElements(Beside("Q", ".iter"), {6, 0, 0, 0});
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
    ExpectWhole("Q");
}

/// As after a power failure: there is no other way to get on than by hand, which would make the table pass for
/// finished.
TEST_F(GenerateTables, ARestartNeedsNoLevelThatCanBeRead) {
    MakeUpTo("Q", 6);
    const TElements unfinished = Table("Q");
    WriteElements(Beside("Q", ".BAK"), Old());
    for (const TElements& noLevel : {TElements{}, TElements{6, 0}, TElements(4, 0), TElements{0, 128, 0, 0},
                                     TElements(4, 255)}) { // cut, or no level of any table
        WriteElements(Beside("Q", ".iter"), noLevel);
        for (const EExistingTable choice : {EExistingTable::Leave, EExistingTable::Continue}) {
            m_options.m_existing = choice;
            EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Failed);
            EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: Error reading file " + Beside("Q", ".iter").string()});
        }
        EXPECT_TRUE(Table("Q") == unfinished);
    }
    m_options.m_existing = EExistingTable::Restart;
    const TGenerateReport report = Make("Q");
    EXPECT_EQ(report.m_found, EFoundTable::Unfinished);
    EXPECT_TRUE(report.m_bMade);
    EXPECT_TRUE(ReadWholeFile(Beside("Q", ".BAK")) == Old()) << "worth more than an unfinished one";
    ExpectWhole("Q");
}

// --- several types

TEST_F(GenerateTables, MissingTypesAreNamed) {
    MakeUpTo("Q", 3); // what is unfinished is no data
    const TGenerateReport report = Make("QRr");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_FALSE(report.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told.back(), "Error: No global register found for position type Q, R, QR, Qr, Rr");
    EXPECT_EQ(report.m_missingTypes, (TTexts{"Q", "R", "QR", "Qr", "Rr"}));
    EXPECT_FALSE(fs::exists(Plain("QRr")));
}

/// They need not be made: it is the memory that is missing.
TEST_F(GenerateTables, TypesWithoutRoomAreNotMissing) {
    WriteElements(Plain("Q"), Expected("Q"));
    WriteElements(Plain("R"), Expected("R"));
    m_options.m_nMemoryBytes = 130'000; // P takes 98304 of them, and a tenth for its marks
    const TGenerateReport report = Make("P");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_TRUE(report.m_bSystemFailed);
    EXPECT_EQ(report.m_missingTypes, TTexts{});
    ASSERT_FALSE(m_host.m_boxes.m_told.empty());
    EXPECT_EQ(m_host.m_boxes.m_told.back(), "Error: Error reading register data from disk (not enough memory? "
                                            "UseDataPackedForRandomAccess off?): Q, R");
}

/// They are to be made anew, and no memory would help.
TEST_F(GenerateTables, DamagedTypesAreNamed) {
    WriteElements(Plain("Q"), Expected("Q"));
    TElements damaged = Expected("R");
    damaged[damaged.size() / 2] = kUnknownElement;
    WriteElements(Plain("R"), damaged);
    const TGenerateReport report = Make("P");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_FALSE(report.m_bSystemFailed);
    EXPECT_EQ(report.m_missingTypes, TTexts{});
    ASSERT_FALSE(m_host.m_boxes.m_told.empty());
    EXPECT_EQ(m_host.m_boxes.m_told.back(), "Error: Error reading register data from disk (not enough memory? "
                                            "UseDataPackedForRandomAccess off?): R");
}

/// Behind a promotion the mates of these tables are longer than a byte can tell beside Black's mark.
TEST_F(GenerateTables, FailuresOfALevelAreListed) {
    for (const char* const type : {"Q", "R"}) {
        TElements elements(40960, 126);
        elements[0] = 0;
        WriteElements(Plain(type), elements);
    }
    TElements nothingFound(TPositionIndexing("P").GetSize(), 127);
    nothingFound[0] = kFlagPawnRanks48;
    WriteElements(Plain("P"), nothingFound);
    WriteElements(Beside("P", ".iter"), {250, 0, 0, 0});
    m_options.m_existing = EExistingTable::Continue;
    m_options.m_nThreads = 1; // so that it is found once
    const TGenerateReport report = Make("P");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_FALSE(report.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: An error occurred during data generation.\nError in "
                                            "Generate_MainLoop2: no room for a mate in 127 moves"});
    EXPECT_EQ(report.m_nLevels, 252u);
}

/// Four queens without their combinations would be 2.5 GiB.
TEST_F(GenerateTables, ATableOfSixMenIsMeasuredWithItsCombinations) {
    m_options.m_nMemoryBytes = std::uint64_t{150} << 20;
    EXPECT_EQ(Make("QQQQ").m_missingTypes, TTexts{"QQQ"});
}

/// Such a list is that of another table whenever one is put back as it was.
TEST_F(GenerateTables, ListsOfLongestMatesAreNotBelieved) {
    WriteElements(Plain("Q"), Expected("Q"));
    WriteElements(Plain("R"), Expected("R"));
    TElements list(16, 0);
    list[0] = 100; // moves
    list[8] = 1;
    for (const char* type : {"Q", "R"})
        WriteElements(m_folder.Path() / "MaxMateIndexesCache" / (std::string(type) + ".idx"), list);
    const TGenerateReport report = Make("P");
    EXPECT_TRUE(report.m_bMade);
    EXPECT_LT(report.m_nLevels, 100u);
}

TEST_F(GenerateTables, ATypeWithConversionsIsTakenUp) {
    WriteElements(Plain("Q"), Expected("Q"));
    WriteElements(Plain("R"), Expected("R"));
    m_options.m_existing = EExistingTable::Continue;
    ASSERT_TRUE(Make("P").m_bMade);
    const TElements whole = Table("P");
    fs::remove(Plain("P"));
    m_options.m_onFileStep = [nLeft = 100](std::string_view) mutable {
        if (nLeft-- == 0)
            throw TRunKilled{};
    };
    EXPECT_THROW((void)Make("P"), TRunKilled);
    m_options.m_onFileStep = {};
    ASSERT_TRUE(Make("P").m_bMade);
    EXPECT_TRUE(Table("P") == whole);
}

TEST_F(GenerateTables, WhatIsMissingIsMadeFirst) {
    WriteElements(Plain("Q"), Expected("Q"));
    m_options.m_bWithSubtypes = true;
    CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
    TGeneratorControl control;
    const auto reports = GenerateMany({"P"}, m_options, m_host, registers, control);
    EXPECT_EQ(m_host.m_ended, (TTexts{"R", "P"}));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].m_status, EGenerateStatus::Done);
    EXPECT_EQ(reports[1].m_nMate, 28u); // the longest win of a pawn
    EXPECT_EQ(Table("P").at(0), 1);
    ExpectWhole("R");
}

TEST_F(GenerateTables, OneThatFailsDoesNotKeepTheRest) {
    WriteElements(Beside("Q", ".SAVE_PENDING"), {});
    CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
    TGeneratorControl control;
    (void)GenerateMany({"R", "Q", "QX"}, m_options, m_host, registers, control);
    EXPECT_EQ(m_host.m_ended, (TTexts{"Q", "R", "QX"}));
    ASSERT_EQ(m_host.m_boxes.m_told.size(), 3u);
    EXPECT_EQ(m_host.m_boxes.m_told[1], "Error: Error in InitForGenerator");
    EXPECT_EQ(m_host.m_boxes.m_told[2], "Error: An error occurred during data generation");
    ExpectWhole("R");
}

/// A black pawn that can move may be analysed shortly: the user is asked, and the table is the same.
TEST_F(GenerateTables, CustomTypesHaveAFolderOfTheirOwn) {
    TElements first;
    for (const bool bAnswer : {false, true}) {
        m_host = {};
        m_host.m_boxes.m_answers = {bAnswer};
        const TGenerateReport report = Make("Kkp(b3)+Ra1");
        EXPECT_EQ(report.m_status, EGenerateStatus::Done);
        EXPECT_EQ(report.m_file, m_folder.Path() / "CustomPrecalc/Kk_p_(b3)+Ra1.precalc");
        EXPECT_EQ(m_host.m_boxes.m_asked, TTexts{"Should short analysis for unblocked black pawns be used?"});
        EXPECT_EQ(report.m_nBytes, TPositionIndexing("Kkp(b3)+Ra1").GetSize());
        const TElements table = ReadWholeFile(report.m_file).value();
        EXPECT_TRUE(first.empty() || table == first);
        first = table;
        fs::remove(report.m_file);
    }
}

/// What a pawn becomes leaves the pattern, also where there is a table of it: here ones that mate at once everywhere.
TEST_F(GenerateTables, CustomTypesTakeNothingFromOtherTables) {
    const std::string type = "KPk+Pa2";
    const TGenerateReport alone = Make(type);
    ASSERT_EQ(alone.m_status, EGenerateStatus::Done);
    const TElements table = ReadWholeFile(alone.m_file).value();
    fs::remove(alone.m_file);
    for (const char* name : {"Q", "R", "P", "QP", "RP", "BP", "NP"}) {
        TPositionIndexing indexing(name);
        const std::uint16_t wFlags = FlagsOf(indexing, false);
        ASSERT_TRUE(ApplyFlags(indexing, wFlags));
        TElements elements(indexing.GetSize(), 1);
        elements[0] = static_cast<std::uint8_t>(wFlags);
        WriteElements(Plain(name), elements);
        ASSERT_TRUE(HasFinishedTable(TPositionIndexing(name), m_precalc.m_folders)) << name;
    }
    ASSERT_TRUE(Make(type).m_bMade);
    EXPECT_TRUE(ReadWholeFile(alone.m_file) == table);
}

TEST_F(GenerateTables, PackedBeside) {
    m_options.m_packForm = ETableForm::Lzw;
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
    EXPECT_TRUE(fs::exists(Beside("Q", ".packed.lzw")));
    m_precalc.m_nUseDataPackedForRandomAccess = 2;
    fs::remove(Plain("Q"));
    CGlobalRegisters registers(m_precalc, m_host, std::uint64_t{1} << 30);
    const CRegisterUse data(registers.GetRegisterForTool(TPositionIndexing("Q").nPositionType));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->nRandomAccessKind, kPackedAccess);
    m_options.m_existing = EExistingTable::Restart;
    fs::create_directory(Beside("Q", ".lz4"));
    m_options.m_packForm = ETableForm::Lz4;
    m_precalc.m_nUseDataPackedForRandomAccess = 0;
    const TGenerateReport report = Make("Q");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_TRUE(report.m_bSystemFailed) << "the packed form cannot be written";
    ASSERT_EQ(m_host.m_boxes.m_told.size(), 1u);
    EXPECT_TRUE(m_host.m_boxes.m_told[0].starts_with("Error: An error occurred during data compression"));
    ExpectWhole("Q");
}

/// A load takes them before the bits, and reads no packed form of the file of lengths.
TEST_F(GenerateTables, LengthsOfBitsPackedForReadingAreATable) {
    const fs::path lengths = Beside("QQQQ", ".details");
    EXPECT_EQ(NameInForm(lengths, ETableForm::Lzw), Beside("QQQQ", ".packed.lzw"));
    EXPECT_EQ(NameInForm(lengths, ETableForm::Archive), Beside("QQQQ", ".details.packed.lz4"));
    WriteElements(lengths, {2, 0, 0});
    const auto failure = [&](const char* extension) -> std::string {
        try {
            PackTableFile(lengths, ETableForm::Lzw, Beside("QQQQ", extension), 1);
        } catch (const ChessException& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_NE(failure(".details.packed.lzw").find("not a name for these data"), std::string::npos);
    EXPECT_NE(failure(".packed.lzw").find("has 3 bytes"), std::string::npos) << "which is what it is made of";
}

TEST_F(GenerateTables, ATableThatIsThereIsPacked) {
    WriteElements(Plain("Q"), Expected("Q"));
    m_options.m_existing = EExistingTable::Leave;
    m_options.m_packForm = ETableForm::Lz4;
    EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
    EXPECT_TRUE(fs::exists(Beside("Q", ".lz4")));
    EXPECT_TRUE(HasFinishedTable(TPositionIndexing("Q"), m_precalc.m_folders));
    EXPECT_EQ(Make("Q").m_bPacked, true) << "it is there";
    WriteElements(Beside("Q", ".lz4"), {1});
    fs::remove(Plain("Q"));
    EXPECT_FALSE(HasFinishedTable(TPositionIndexing("Q"), m_precalc.m_folders));
}

TEST_F(GenerateTables, AWrongTypeAmongOthersIsOneFailure) {
    m_options.m_bWithSubtypes = true;
    CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
    TGeneratorControl control;
    const auto reports = GenerateMany({"QX"}, m_options, m_host, registers, control);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].m_status, EGenerateStatus::Failed);
}

TEST_F(GenerateTables, WrongTypesAreRefused) {
    for (const char* type : {"", "QRBNPq", "Qx", "K"}) {
        EXPECT_EQ(Make(type).m_status, EGenerateStatus::Failed) << type;
        EXPECT_EQ(m_host.m_boxes.m_told.size(), 1u) << type;
    }
    EXPECT_FALSE(fs::exists(m_folder.Path() / "Precalc"));
}

} // namespace
} // namespace quillon
