#include "tempregister/subproblem_file.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "core/chess_exception.h"
#include "support/random_positions.h"
#include "tempregister/numbered_boards.h"
#include "tempregister/register_folder.h"

namespace quillon::test {
namespace {

namespace fs = std::filesystem;

TSubproblemRecord Sample() {
    TSubproblemRecord record;
    record.m_item.m_board[kA1] = kWhiteKing;
    record.m_item.m_board[kH8] = kBlackPawn | kPawnMayNotAdvance;
    record.m_info.nMoves = 0x0107;
    record.m_info.nMove = 0x04030201;
    record.m_info.bValue = true;
    return record;
}

bool Same(const TSubproblemRecord& a, const TSubproblemRecord& b) {
    return a.m_item == b.m_item && a.m_info.nMoves == b.m_info.nMoves && a.m_info.nMarker == b.m_info.nMarker &&
           a.m_info.nMove == b.m_info.nMove && a.m_info.bValue == b.m_info.bValue;
}

bool IsReadable(const TSubproblemBytes& bytes) {
    TSubproblemRecord record;
    return DecodeSubproblem(bytes, record);
}

// White queens only, on the given squares.
TChessboardId QueensId(std::initializer_list<int> squares) {
    TChessboard b = EmptyChessboard();
    for (const int square : squares)
        b.m_board[static_cast<std::size_t>(square)] = kWhiteQueen;
    return MakeChessboardId(b);
}

// A register of one position with `nEntries` mates, each of another board.
class CRegisterOf : public TChessboardRegister<bool> {
  public:
    explicit CRegisterOf(unsigned nEntries) {
        SetPosition(NumberedBoard(1));
        for (unsigned i = 0; i < nEntries; ++i)
            Insert(static_cast<std::uint16_t>(1 + i % 10 * 2), NumberedBoard(i), i % 3 == 0, &i, false);
    }
};

// The trees are equal, moves and markers included.
bool SameTree(const TChessboardRegister<bool>& a, const TChessboardRegister<bool>& b) {
    const auto sameInner = [](const auto& x, const auto& y) {
        return x.first == y.first && Same({x.first, x.second}, {y.first, y.second});
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const auto& x, const auto& y) {
        return x.first == y.first &&
               std::equal(x.second.begin(), x.second.end(), y.second.begin(), y.second.end(), sameInner);
    });
}

class SubproblemFile : public testing::Test {
  protected:
    // The file of CRegisterOf's position.
    [[nodiscard]] fs::path File() const { return CRegisterOf(0).subproblemsPath; }

    [[nodiscard]] fs::path Backup() const { return File() += ".BAK"; }

    // Saves that many entries and returns the bytes of the file.
    std::string Saved(unsigned nEntries) const {
        CRegisterOf tree(nEntries);
        EXPECT_TRUE(tree.SaveSubproblems());
        return CRegisterFolder::Read(File());
    }

    CRegisterFolder m_folder;
};

} // namespace

TEST(SubproblemRecord, NumbersAreLittleEndianBehindTheBoard) {
    const TSubproblemBytes bytes = EncodeSubproblem(Sample());
    TSubproblemBytes expected{};
    expected[0] = 0x41;
    expected[63] = 0xa2;
    const std::uint8_t info[] = {0x07, 0x01, 0xda, 0x03, 0x01, 0x02, 0x03, 0x04, 0x01, 0, 0, 0};
    std::copy(std::begin(info), std::end(info), expected.begin() + 64);
    EXPECT_EQ(bytes, expected);
}

TEST(SubproblemRecord, DecodingIsTheInverse) {
    std::mt19937_64 rng(30);
    for (int i = 0; i < 2000; ++i) {
        TSubproblemRecord record;
        record.m_item.m_board = NumberedBoard(static_cast<unsigned>(reference::Draw(rng, 1u << 31)));
        record.m_info.nMoves = static_cast<std::uint16_t>(reference::Draw(rng, 65536));
        record.m_info.nMove = static_cast<std::uint32_t>(rng());
        record.m_info.bValue = reference::Chance(rng, 50);
        TSubproblemRecord read;
        ASSERT_TRUE(DecodeSubproblem(EncodeSubproblem(record), read));
        ASSERT_TRUE(Same(record, read));
    }
}

TEST(SubproblemRecord, WhatNoWriterWroteIsRefused) {
    const TSubproblemBytes good = EncodeSubproblem(Sample());
    EXPECT_TRUE(IsReadable(good));
    const struct {
        std::size_t m_nOffset;
        std::uint8_t m_nByte;
        const char* m_pWhat;
    } rows[] = {{5, 0x03, "no colour"},      {5, 0xc1, "both colours"},    {5, 0x62, "white pawn with a mark"},
                {66, 0xdb, "marker, low"},   {67, 0x04, "marker, high"},   {72, 2, "neither true nor false"},
                {5, 0x43, "no such figure"}, {5, 0xa1, "king with a mark"}};
    for (const auto& row : rows) {
        TSubproblemBytes bad = good;
        bad[row.m_nOffset] = row.m_nByte;
        EXPECT_FALSE(IsReadable(bad)) << row.m_pWhat;
    }
}

TEST(SubproblemRecord, ReadingTellsTheEndFromACutRecord) {
    const TSubproblemBytes bytes = EncodeSubproblem(Sample());
    const std::string record(bytes.begin(), bytes.end());
    for (std::size_t size = 0; size < 2 * record.size(); ++size) {
        std::istringstream file((record + record).substr(0, size));
        TSubproblemRecord read;
        if (size >= record.size()) {
            EXPECT_EQ(ReadSubproblem(file, read), ERecordRead::Record);
            EXPECT_TRUE(Same(read, Sample()));
        }
        const bool bWhole = size % record.size() == 0;
        EXPECT_EQ(ReadSubproblem(file, read), bWhole ? ERecordRead::End : ERecordRead::Damaged) << size;
    }
}

TEST(SolvedPositionPath, TellsWhichLettersAreCapitals) {
    // A queen on c1 and then on every second square gives groups of six bits with the value 36, "A".
    EXPECT_EQ(SolvedPositionPath("F", QueensId({}), ".cspdb"), fs::path("F") / "00000000000..cspdb");
    EXPECT_EQ(SolvedPositionPath("F", QueensId({2}), ".cpdb"), fs::path("F") / "A00000000000.1.cpdb");
    EXPECT_EQ(SolvedPositionPath("", QueensId({2, 4, 6, 8, 10}), ".x").string().substr(0, 5), "AAAAA");
    EXPECT_EQ(SolvedPositionPath("", QueensId({2, 4, 6, 8, 10}), ".x").extension(), ".x");
    EXPECT_EQ(SolvedPositionPath("", QueensId({2, 4, 6, 8, 10}), "").extension(), ".v");
    EXPECT_EQ(SolvedPositionPath("", QueensId({2, 4, 6, 8, 10, 12}), "").extension(), ".v1");
    // King a1, king h1: 1, 32 ("w"), 1 and zeros.
    TChessboard kings = EmptyChessboard();
    kings.m_board[kA1] = kWhiteKing;
    kings.m_board[kH1] = kBlackKing;
    EXPECT_EQ(SolvedPositionPath("", MakeChessboardId(kings), ".cspdb"), "1w1000000000.0.cspdb");
}

TEST_F(SubproblemFile, SavedEntriesAreLoadedAgain) {
    const std::string bytes = Saved(500);
    EXPECT_EQ(bytes.size(), 500u * 76);
    CRegisterOf original(500);
    TChessboardRegister<bool> loaded;
    loaded.SetPosition(NumberedBoard(1));
    EXPECT_TRUE(SameTree(original, loaded));
    EXPECT_EQ(loaded.nElements, 500u);
    EXPECT_TRUE(loaded.bRemoveSubsumed);
}

TEST_F(SubproblemFile, DefencesAreSavedAndNotCounted) {
    CRegisterOf tree(0);
    const std::uint32_t move = 0x01020304;
    tree.InsertDefence(4, NumberedBoard(7), true, &move, true);
    tree.Insert(3, NumberedBoard(7), true, &move, true);
    TChessboardRegister<bool> loaded;
    loaded.SetPosition(NumberedBoard(1));
    std::uint32_t found = 0;
    EXPECT_EQ(loaded.FindDefence(2, NumberedBoard(7), &found), kTreeYes);
    EXPECT_EQ(found, move);
    EXPECT_EQ(loaded.FindMate(3, NumberedBoard(7)), kTreeYes);
    EXPECT_EQ(loaded.nElements, 1u);
}

TEST_F(SubproblemFile, ARegisterWithoutEntriesMakesAnEmptyFile) {
    EXPECT_EQ(Saved(0), "");
    CRegisterOf tree(3);
    EXPECT_TRUE(tree.LoadSubproblems());
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    EXPECT_EQ(tree.FindMate(1, NumberedBoard(0)), kTreeUnknown);
}

TEST_F(SubproblemFile, TheOldFileBecomesTheBackup) {
    const std::string one = Saved(1);
    EXPECT_FALSE(fs::exists(Backup()));
    const std::string two = Saved(2);
    EXPECT_EQ(CRegisterFolder::Read(Backup()), one);
    Saved(3);
    EXPECT_EQ(CRegisterFolder::Read(Backup()), two); // the older backup is gone
}

TEST_F(SubproblemFile, OneRecordBelowTheLimitIsSaved) { EXPECT_EQ(Saved(13796).size(), 13796u * 76); }

TEST_F(SubproblemFile, AtTheLimitTheSaveFailsAndTheFileHasTheFirstRecords) {
    for (const unsigned nEntries : {13797u, 14000u}) {
        CRegisterOf tree(nEntries);
        EXPECT_FALSE(tree.SaveSubproblems());
        const std::string bytes = CRegisterFolder::Read(File());
        ASSERT_EQ(bytes.size(), 13797u * 76);
        EXPECT_EQ(tree.GetElementsCount(), nEntries);
        TChessboardRegister<bool> loaded;
        loaded.SetPosition(NumberedBoard(1));
        EXPECT_EQ(loaded.GetElementsCount(), 13797u);
    }
}

TEST_F(SubproblemFile, ACutFileFailsAndKeepsTheRecordsBeforeTheCut) {
    const std::string bytes = Saved(5);
    for (const std::size_t size : {3 * 76 + 1, 3 * 76 + 63, 3 * 76 + 64, 3 * 76 + 75}) {
        CRegisterFolder::Write(File(), bytes.substr(0, size));
        CRegisterOf tree(20);
        EXPECT_FALSE(tree.LoadSubproblems()) << size;
        EXPECT_EQ(tree.GetElementsCount(), 3u);
        EXPECT_TRUE(tree.bRemoveSubsumed);
    }
}

TEST_F(SubproblemFile, ADamagedRecordEndsTheLoad) {
    std::string bytes = Saved(5);
    bytes[2 * 76 + 66] ^= 1;
    CRegisterFolder::Write(File(), bytes);
    CRegisterOf tree(20);
    EXPECT_FALSE(tree.LoadSubproblems());
    EXPECT_EQ(tree.GetElementsCount(), 2u);
}

TEST_F(SubproblemFile, AFileThatContradictsItselfFails) {
    std::string bytes = Saved(1); // mate in one
    std::string other = bytes;
    other[64] = 3; // the same board, not even in two
    other[72] = 0;
    CRegisterFolder::Write(File(), bytes + other);
    CRegisterOf tree(0);
    EXPECT_FALSE(tree.LoadSubproblems());
    EXPECT_EQ(tree.GetElementsCount(), 1u);
    EXPECT_EQ(tree.FindMate(3, NumberedBoard(0)), kTreeYes);
    EXPECT_TRUE(tree.bRemoveSubsumed);
}

TEST_F(SubproblemFile, WhileLoadingNoEntryDisplacesAnother) {
    const std::string mateInOne = Saved(1);
    std::string mateInTwo = mateInOne;
    mateInTwo[64] = 3;
    CRegisterFolder::Write(File(), mateInTwo + mateInOne);
    CRegisterOf tree(0);
    ASSERT_TRUE(tree.LoadSubproblems());
    EXPECT_EQ(tree.at(1).size(), 1u);
    EXPECT_EQ(tree.at(3).size(), 1u);
    EXPECT_EQ(tree.GetElementsCount(), 2u);
}

TEST_F(SubproblemFile, WithoutAReadableFileTheRegisterStaysAsItWas) {
    const auto staysWhole = [] {
        CRegisterOf tree(9);
        return !tree.LoadSubproblems() && tree.GetElementsCount() == 9 && SameTree(tree, CRegisterOf(9));
    };
    EXPECT_TRUE(staysWhole()); // no file
    fs::create_symlink(File(), File());
    EXPECT_TRUE(staysWhole()); // one that cannot be opened
    fs::remove(File());
    EXPECT_TRUE([] {
        CRegisterOf tree(9);
        fs::create_directory(tree.subproblemsPath);
        return !tree.LoadSubproblems() && tree.GetElementsCount() == 9;
    }());
}

TEST_F(SubproblemFile, AFileThatCannotBeWrittenFailsTheSave) {
    CRegisterOf tree(9);
    const fs::path file = File();
    fs::create_directory(file);
    EXPECT_FALSE(tree.SaveSubproblems());
    EXPECT_TRUE(fs::is_directory(file)); // no plain file, so no backup is made of it
    tree.subproblemsPath = m_folder.Path() / "missing" / "file.cspdb";
    EXPECT_FALSE(tree.SaveSubproblems());
    EXPECT_FALSE(fs::exists(m_folder.Path() / "missing"));
    EXPECT_EQ(tree.GetElementsCount(), 9u);
}

TEST_F(SubproblemFile, AFullDiskFailsTheSave) {
    fs::create_symlink("/dev/full", File()); // a device that has never room
    EXPECT_FALSE(CRegisterOf(9).SaveSubproblems());
    EXPECT_FALSE(CRegisterOf(9000).SaveSubproblems());
}

TEST_F(SubproblemFile, WithoutABackupTheOldFileIsNotTouched) {
    const std::string bytes = Saved(2);
    fs::create_directories(Backup() / "in the way");
    EXPECT_FALSE(CRegisterOf(3).SaveSubproblems());
    EXPECT_EQ(CRegisterFolder::Read(File()), bytes);
}

TEST_F(SubproblemFile, ATemporaryRegisterTouchesNoFile) {
    const std::string bytes = Saved(2);
    TChessboardRegister<bool> tree;
    tree.bTemporary = true;
    tree.SetPosition(NumberedBoard(1));
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    tree.subproblemsPath = File();
    tree.Insert(1, NumberedBoard(100), true, nullptr, true);
    EXPECT_FALSE(tree.SaveSubproblems());
    EXPECT_FALSE(tree.LoadSubproblems());
    EXPECT_EQ(tree.GetElementsCount(), 1u);
    EXPECT_EQ(CRegisterFolder::Read(File()), bytes);
    EXPECT_FALSE(fs::exists(Backup()));
}

TEST_F(SubproblemFile, SettingAPositionResetsAndLoads) {
    Saved(5);
    TChessboardRegister<bool> tree;
    tree.SetPosition(NumberedBoard(2)); // without a file
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    tree.Insert(9, NumberedBoard(50), true, nullptr, false);
    tree.bKeepShort = false;
    tree.moves = {1, 2};
    tree.SetPosition(NumberedBoard(1));
    EXPECT_EQ(tree.board, NumberedBoard(1));
    EXPECT_EQ(tree.GetElementsCount(), 5u);
    EXPECT_EQ(tree.FindMate(9, NumberedBoard(50)), kTreeUnknown);
    EXPECT_TRUE(tree.bKeepShort && tree.moves.empty());
    EXPECT_EQ(tree.subproblemsPath.extension(), ".cspdb");
    EXPECT_EQ(tree.problemPath.extension(), ".cpdb");
    EXPECT_EQ(tree.problemPath.parent_path(), m_folder.Path());
}

TEST_F(SubproblemFile, SettingTheSamePositionAgainDoesNothing) {
    Saved(5);
    CRegisterOf tree(0);
    EXPECT_EQ(tree.GetElementsCount(), 5u);
    tree.Insert(9, NumberedBoard(50), true, nullptr, false);
    TDeferredLoad deferred{true};
    tree.SetPosition(NumberedBoard(1), &deferred);
    EXPECT_EQ(tree.GetElementsCount(), 6u);
    EXPECT_FALSE(deferred.m_bPending);
}

TEST_F(SubproblemFile, ALoadCanBeDeferred) {
    Saved(5);
    TChessboardRegister<bool> tree;
    TDeferredLoad deferred;
    tree.SetPosition(NumberedBoard(1), &deferred);
    EXPECT_TRUE(deferred.m_bPending);
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    EXPECT_TRUE(tree.LoadSubproblems());
    EXPECT_EQ(tree.GetElementsCount(), 5u);
}

TEST_F(SubproblemFile, APositionWithUnknownCodesIsRefusedAndNothingChanges) {
    CRegisterOf tree(5);
    TBoardBytes bad{};
    bad[kA1] = 0x7f;
    EXPECT_THROW(tree.SetPosition(bad), ChessException);
    EXPECT_EQ(tree.board, NumberedBoard(1));
    EXPECT_EQ(tree.GetElementsCount(), 5u);
}

} // namespace quillon::test
