#include "tempregister/chessboard_register.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/chess_exception.h"
#include "platform/memory_info.h"
#include "support/random_positions.h"
#include "tempregister/failing_allocation.h"
#include "tempregister/numbered_boards.h"
#include "tempregister/register_folder.h"

namespace quillon::test {
namespace {

constexpr const char* kIncoherent = "Incoherent information in TChessboardRegister::Insert()";

// Counts the calls for room; what a call does can be given.
class CTree : public TChessboardRegister<bool> {
  public:
    explicit CTree(std::uint64_t budget = kNoBudget) : TChessboardRegister(budget) { bTemporary = true; }

    void EmptySomeDataWhenRegisterFull(bool bEarly) override {
        ++m_nEvictions;
        m_bEarly = m_bEarly || bEarly;
        m_bLocked = m_bLocked || lock.IsOwnedByThisThread() || lock.Readers() != 0;
        if (m_evict)
            m_evict();
    }

    void Mate(int nMoves, int nBoard) {
        Insert(static_cast<std::uint16_t>(nMoves), Board(nBoard), true, nullptr, false);
    }
    void NoMate(int nMoves, int nBoard) {
        Insert(static_cast<std::uint16_t>(nMoves), Board(nBoard), false, nullptr, false);
    }
    void Defence(int nMoves, int nBoard, bool bValue) {
        InsertDefence(static_cast<std::uint16_t>(nMoves), Board(nBoard), bValue, nullptr, false);
    }
    [[nodiscard]] int Find(int nMoves, int nBoard) const {
        return (nMoves & 1) != 0 ? FindMate(static_cast<std::uint16_t>(nMoves), Board(nBoard))
                                 : FindDefence(static_cast<std::uint16_t>(nMoves), Board(nBoard), nullptr);
    }
    [[nodiscard]] std::size_t Entries() const {
        std::size_t entries = 0;
        for (const auto& [length, boards] : *this)
            entries += boards.size();
        return entries;
    }

    static TBoardBytes Board(int number) { return NumberedBoard(static_cast<unsigned>(number)); }

    int m_nEvictions = 0;
    bool m_bEarly = false;
    bool m_bLocked = false; // a call came with a lock held
    std::function<void()> m_evict;
};

// Has no memory while m_failing is set, until it logs something.
class CShortOfMemory : public TChessboardRegister<bool> {
  public:
    CShortOfMemory() { bTemporary = true; }

    void LogMessage(std::string_view text, int nParam1, int nParam2) override {
        m_failing.reset();
        TChessboardRegister::LogMessage(text, nParam1, nParam2);
    }

    std::optional<CFailingAllocations> m_failing;
};

// A budget in bytes that has room for exactly that many elements.
std::uint64_t BudgetFor(std::uint64_t elements) { return (elements * 9600 + 72) / 73; }

std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ChessException& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(ChessboardRegister, StartsEmptyWithItsFlagsSet) {
    const TChessboardRegister<bool> tree;
    EXPECT_TRUE(tree.empty() && tree.bRemoveSubsumed && tree.bKeepShort && !tree.bTemporary);
    EXPECT_EQ(tree.problemHeader.m_nMarkerWhite, 986);
    EXPECT_EQ(tree.problemHeader.m_nMarkerBlack, 986);
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    EXPECT_EQ(tree.GetDoubtfulCount(), 0u);
    EXPECT_EQ(tree.parent, nullptr);
}

TEST(ChessboardRegister, BudgetBoundsTheElements) {
    const TChessboardRegister<bool> tree(1'000'199);
    EXPECT_EQ(tree.nMemoryLimit, 1'000'199u);
    EXPECT_EQ(tree.nMemoryForElements, 730'145u); // 730145.27
    EXPECT_EQ(tree.nMaxElements, 7605u);          // 7605.6
    EXPECT_EQ(TChessboardRegister<bool>(0).nMaxElements, 0u);
    for (const std::uint64_t elements : {1u, 2u, 7u, 1000u})
        EXPECT_EQ(TChessboardRegister<bool>(BudgetFor(elements)).nMaxElements, elements);
}

TEST(ChessboardRegister, PhysicalMemoryBoundsTheBudget) {
    const TChessboardRegister<bool> tree;
    EXPECT_EQ(tree.nMemoryLimit, PhysicalMemory());
    EXPECT_LT(tree.nMemoryForElements, tree.nMemoryLimit);
    EXPECT_GT(tree.nMaxElements, 0u);
}

TEST(ChessboardRegister, AMateHoldsForLongerLengthsOnly) {
    CTree tree;
    tree.Mate(5, 1);
    EXPECT_EQ(tree.Find(3, 1), kTreeUnknown);
    EXPECT_EQ(tree.Find(5, 1), kTreeYes);
    EXPECT_EQ(tree.Find(7, 1), kTreeYes);
    EXPECT_EQ(tree.Find(7, 2), kTreeUnknown);
}

TEST(ChessboardRegister, NoMateHoldsForShorterLengthsOnly) {
    CTree tree;
    tree.NoMate(5, 1);
    EXPECT_EQ(tree.Find(3, 1), kTreeNo);
    EXPECT_EQ(tree.Find(5, 1), kTreeNo);
    EXPECT_EQ(tree.Find(7, 1), kTreeUnknown);
}

TEST(ChessboardRegister, ADefenceHoldsForShorterLengthsAndItsAbsenceForLonger) {
    CTree tree;
    tree.Defence(4, 1, true);
    tree.Defence(8, 1, false);
    const int expected[] = {kTreeYes, kTreeYes, kTreeUnknown, kTreeNo, kTreeNo}; // 2, 4, 6, 8, 10
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(tree.Find(2 + 2 * i, 1), expected[i]);
}

TEST(ChessboardRegister, MatesAndDefencesOfABoardAreApart) {
    CTree tree;
    tree.Mate(3, 1);
    EXPECT_EQ(tree.Find(4, 1), kTreeUnknown);
    tree.Defence(4, 1, true);
    EXPECT_EQ(tree.Find(3, 1), kTreeYes);
    EXPECT_EQ(tree.Find(4, 1), kTreeYes);
}

TEST(ChessboardRegister, ALongerNoMateReplacesTheShorterOne) {
    CTree tree;
    tree.NoMate(3, 1);
    tree.NoMate(5, 1);
    EXPECT_EQ(tree.Entries(), 1u);
    EXPECT_EQ(tree.GetElementsCount(), 1u);
    EXPECT_EQ(tree.at(5).size(), 1u);
}

TEST(ChessboardRegister, AShorterMateReplacesTheLongerOnes) {
    CTree tree;
    tree.bRemoveSubsumed = false;
    tree.Mate(9, 1);
    tree.Mate(7, 1);
    EXPECT_EQ(tree.GetElementsCount(), 2u);
    tree.bRemoveSubsumed = true;
    tree.NoMate(1, 1);
    tree.Mate(7, 2);
    tree.Mate(3, 1);
    EXPECT_EQ(tree.GetElementsCount(), 3u); // mate and no mate of board 1, mate of board 2
    EXPECT_EQ(tree.Entries(), 3u);
    EXPECT_EQ(tree.Find(7, 2), kTreeYes);
}

TEST(ChessboardRegister, DefencesReplaceWhatTheyImplyAndAreNotCounted) {
    CTree tree;
    tree.Defence(2, 1, true);
    tree.Defence(4, 1, true);
    tree.Defence(10, 1, false);
    tree.Defence(8, 1, false);
    EXPECT_EQ(tree.Entries(), 2u);
    EXPECT_EQ(tree.at(4).size() + tree.at(8).size(), 2u);
    EXPECT_EQ(tree.GetElementsCount(), 0u);
}

TEST(ChessboardRegister, WhatIsImpliedIsNotStored) {
    CTree tree;
    tree.Mate(5, 1);
    tree.Mate(7, 1);
    tree.Mate(5, 1);
    tree.NoMate(3, 1);
    tree.NoMate(1, 1);
    EXPECT_EQ(tree.Entries(), 2u);
    EXPECT_EQ(tree.GetElementsCount(), 2u);
}

TEST(ChessboardRegister, AContradictionThrowsAndStoresNothing) {
    CTree tree;
    tree.Mate(3, 1);
    EXPECT_EQ(ErrorOf([&] { tree.NoMate(5, 1); }), kIncoherent);
    EXPECT_EQ(ErrorOf([&] { tree.NoMate(3, 1); }), kIncoherent);
    tree.NoMate(5, 2);
    EXPECT_EQ(ErrorOf([&] { tree.Mate(3, 2); }), kIncoherent);
    tree.Defence(4, 1, true);
    EXPECT_EQ(ErrorOf([&] { tree.Defence(2, 1, false); }), kIncoherent);
    tree.Defence(4, 2, false);
    EXPECT_EQ(ErrorOf([&] { tree.Defence(6, 2, true); }), kIncoherent);
    EXPECT_EQ(tree.Entries(), 4u);
    EXPECT_EQ(tree.GetElementsCount(), 2u);
    EXPECT_EQ(tree.m_nEvictions, 0);
    EXPECT_FALSE(tree.lock.IsOwnedByThisThread());
}

TEST(ChessboardRegister, TheStoredMoveIsThatOfTheAnsweringEntry) {
    CTree tree;
    const std::uint32_t lasting = 0x0a0b0c0d;
    const std::uint32_t losing = 0x01020304;
    tree.InsertDefence(4, CTree::Board(1), true, &lasting, false);
    tree.InsertDefence(8, CTree::Board(1), false, &losing, false);
    std::uint32_t move = 7;
    EXPECT_EQ(tree.FindDefence(2, CTree::Board(1), &move), kTreeYes);
    EXPECT_EQ(move, lasting);
    EXPECT_EQ(tree.FindDefence(10, CTree::Board(1), &move), kTreeNo);
    EXPECT_EQ(move, losing);
    move = 7;
    EXPECT_EQ(tree.FindDefence(6, CTree::Board(1), &move), kTreeUnknown);
    EXPECT_EQ(move, 7u); // left alone
    tree.Defence(4, 2, true);
    EXPECT_EQ(tree.FindDefence(4, CTree::Board(2), &move), kTreeYes);
    EXPECT_EQ(move, 0u); // none was given
}

TEST(ChessboardRegister, AnEntryHoldsLengthMarkerMoveAndValue) {
    CTree tree;
    const std::uint32_t key = 0x00001c34;
    tree.Insert(299, CTree::Board(5), true, &key, false);
    const auto& info = tree.at(299).at(TChessboardRegisterItem{CTree::Board(5)});
    EXPECT_EQ(info.nMoves, 299);
    EXPECT_EQ(info.nMarker, 986);
    EXPECT_EQ(info.nMove, key);
    EXPECT_TRUE(info.bValue);
}

TEST(ChessboardRegister, OnceShortOnesAreGivenUpTheyAreDropped) {
    CTree tree;
    tree.bKeepShort = false;
    EXPECT_NO_THROW(tree.Mate(3, 1));
    tree.Defence(2, 1, true);
    EXPECT_EQ(tree.Entries(), 0u);
    tree.Mate(5, 1);
    tree.Defence(4, 1, true);
    EXPECT_EQ(tree.Entries(), 2u);
    tree.Clear();
    EXPECT_TRUE(tree.bKeepShort);
    tree.Mate(3, 1);
    EXPECT_EQ(tree.Entries(), 1u);
}

TEST(ChessboardRegister, ClearEmptiesTreeAndCounters) {
    CTree tree;
    tree.Mate(3, 1);
    tree.nDoubtfulInTree = 4;
    tree.Clear();
    EXPECT_TRUE(tree.empty());
    EXPECT_EQ(tree.GetElementsCount(), 0u);
    EXPECT_EQ(tree.GetDoubtfulCount(), 0u);
    EXPECT_EQ(tree.Find(3, 1), kTreeUnknown);
}

TEST(ChessboardRegister, AFullRegisterAsksForRoomAndDropsTheEntryWithoutIt) {
    CTree tree(BudgetFor(2));
    tree.Mate(5, 1);
    tree.Mate(5, 2);
    EXPECT_EQ(tree.m_nEvictions, 0);
    EXPECT_NO_THROW(tree.Mate(5, 3));
    EXPECT_EQ(tree.m_nEvictions, 1);
    EXPECT_EQ(tree.Find(5, 3), kTreeUnknown);
    tree.Defence(4, 3, true);
    EXPECT_EQ(tree.m_nEvictions, 2);
    EXPECT_EQ(tree.Find(4, 3), kTreeUnknown);
    EXPECT_EQ(tree.Entries(), 2u);
    EXPECT_FALSE(tree.m_bEarly);
    EXPECT_FALSE(tree.m_bLocked);
}

TEST(ChessboardRegister, AFullRegisterThatGetsRoomStoresTheEntry) {
    CTree tree(BudgetFor(2));
    tree.m_evict = [&tree] { tree.Clear(); };
    tree.Mate(5, 1);
    tree.Mate(5, 2);
    tree.Mate(5, 3);
    EXPECT_EQ(tree.m_nEvictions, 1);
    EXPECT_EQ(tree.Find(5, 3), kTreeYes);
    EXPECT_EQ(tree.GetElementsCount(), 1u);
}

TEST(ChessboardRegister, WithoutAnyBudgetNothingIsStoredNorRoomAskedFor) {
    CTree tree(0);
    tree.Mate(5, 1);
    tree.Defence(4, 1, true);
    EXPECT_EQ(tree.Entries(), 0u);
    EXPECT_EQ(tree.m_nEvictions, 0);
}

TEST(ChessboardRegister, AnOwnedRegisterLeavesCountingAndRoomToItsOwner) {
    CTree owner(BudgetFor(1));
    CTree tree(BudgetFor(1));
    tree.parent = &owner;
    tree.Mate(5, 1);
    tree.Mate(5, 2); // the owner holds nothing yet, so there is room
    EXPECT_EQ(tree.GetElementsCount(), 2u);
    owner.Mate(5, 9);
    tree.Mate(5, 3);
    EXPECT_EQ(tree.Find(5, 3), kTreeUnknown);
    EXPECT_EQ(owner.m_nEvictions, 1);
    EXPECT_EQ(tree.m_nEvictions, 0);
}

TEST(ChessboardRegister, WhenMemoryRunsOutTheMateIsLostAndRoomIsMade) {
    const CRegisterFolder folder;
    CTree tree;
    tree.Mate(5, 1);
    for (const long nAllowed : {0L, 1L}) { // the level, then the entry
        const CFailingAllocations failing(nAllowed);
        EXPECT_NO_THROW(tree.Mate(7, 2));
    }
    EXPECT_EQ(tree.m_nEvictions, 2);
    EXPECT_FALSE(tree.m_bEarly);
    EXPECT_FALSE(tree.m_bLocked);
    EXPECT_EQ(tree.GetElementsCount(), 1u);
    EXPECT_EQ(tree.Find(7, 2), kTreeUnknown);
    EXPECT_EQ(tree.Find(5, 1), kTreeYes);
    tree.Mate(7, 2);
    EXPECT_EQ(tree.Find(7, 2), kTreeYes);
}

TEST(ChessboardRegister, WhenMemoryRunsOutTheLogSaysSo) {
    const CRegisterFolder folder;
    RegisterOptions().m_bRegisterInfoLog = true;
    CShortOfMemory tree;
    tree.Insert(9, CTree::Board(1), true, nullptr, false);
    tree.m_failing.emplace();
    tree.Insert(11, CTree::Board(2), true, nullptr, false);
    EXPECT_FALSE(tree.m_failing);
    EXPECT_EQ(CRegisterFolder::Read(folder.LogPath()),
              "Exception caught in method TChessboardRegister::Insert, msg params: 11, 1\n"
              "\t\t\tElementsIn= 1, DoubtfulElementsIn=0\n");
}

TEST(ChessboardRegister, WhenMemoryRunsOutADefenceTellsItsCaller) {
    CTree tree;
    tree.Defence(2, 1, true);
    {
        const CFailingAllocations failing;
        EXPECT_THROW(tree.Defence(4, 1, true), std::bad_alloc);
    }
    EXPECT_EQ(tree.m_nEvictions, 0);
    EXPECT_FALSE(tree.lock.IsOwnedByThisThread());
    EXPECT_EQ(tree.Find(2, 1), kTreeYes);
    EXPECT_EQ(tree.Find(4, 1), kTreeUnknown);
}

TEST(ChessboardRegister, LookingUpAllocatesNothing) {
    CTree tree;
    for (int board = 0; board < 50; ++board) {
        tree.Mate(5, board);
        tree.Defence(4, board, true);
    }
    const long before = AllocationsOfThisThread();
    for (int board = 0; board < 100; ++board) {
        EXPECT_EQ(tree.Find(7, board), board < 50 ? kTreeYes : kTreeUnknown);
        EXPECT_EQ(tree.Find(4, board), board < 50 ? kTreeYes : kTreeUnknown);
    }
    EXPECT_EQ(AllocationsOfThisThread(), before);
}

TEST(ChessboardRegister, ReadersOfOtherThreadsSeeWholeEntries) {
    CTree tree;
    std::vector<std::thread> readers;
    std::array<int, 3> wrong{};
    for (std::size_t t = 0; t < wrong.size(); ++t)
        readers.emplace_back([&tree, &misses = wrong[t]] {
            for (int round = 0; round < 40; ++round)
                for (int board = 0; board < 100; ++board) {
                    const int mate = tree.Find(board % 2 == 0 ? 5 : 3, board);
                    misses += mate != kTreeUnknown && mate != (board % 2 == 0 ? kTreeYes : kTreeNo) ? 1 : 0;
                    const int defence = tree.Find(4, board);
                    misses += defence != kTreeUnknown && defence != kTreeYes ? 1 : 0;
                }
        });
    for (int board = 0; board < 100; ++board) {
        if (board % 2 == 0)
            tree.Mate(5, board);
        else
            tree.NoMate(3, board);
        tree.Defence(4, board, true);
    }
    for (std::thread& reader : readers)
        reader.join();
    for (const int misses : wrong)
        EXPECT_EQ(misses, 0);
    EXPECT_EQ(tree.GetElementsCount(), 100u);
}

// The register against a model that keeps, for a board and a parity, every statement it ever took.
namespace {

struct TStatement {
    bool m_bValue;
    std::uint32_t m_nMove;
};
using TStatements = std::map<int, TStatement>;             // by length
using TModel = std::map<std::pair<int, int>, TStatements>; // by board and parity of the length

// Whether a statement about `length` settles the question about `nMoves`. White: a mate in fewer plies is one in more.
// Black: a defence that lasts more plies lasts fewer.
bool Settles(int length, bool bValue, int nMoves) {
    if (length == nMoves)
        return true;
    const bool bWhite = length % 2 != 0;
    if (bWhite)
        return bValue ? length < nMoves : length > nMoves;
    return bValue ? length > nMoves : length < nMoves;
}

std::optional<bool> Ask(const TStatements& statements, int nMoves) {
    for (const auto& [length, statement] : statements)
        if (Settles(length, statement.m_bValue, nMoves))
            return statement.m_bValue;
    return std::nullopt;
}

// Of all statements those that no other one implies: what the register is to hold.
TStatements Strongest(const TStatements& statements) {
    TStatements strongest;
    for (const auto& [length, statement] : statements) {
        const bool bImplied =
            std::any_of(statements.begin(), statements.end(), [&, length = length, statement = statement](auto& other) {
                return other.first != length && other.second.m_bValue == statement.m_bValue &&
                       Settles(other.first, statement.m_bValue, length);
            });
        if (!bImplied)
            strongest[length] = statement;
    }
    return strongest;
}

class CRandomPlay {
  public:
    explicit CRandomPlay(std::uint64_t seed) : m_rng(seed) { m_tree.SetPosition(NumberedBoard(1)); }

    void Step() {
        const int board = reference::DrawInt(m_rng, kBoards);
        const int nMoves = reference::DrawInt(m_rng, 20);
        const int choice = reference::DrawInt(m_rng, 1000);
        if (choice < 500)
            InsertBoth(board, nMoves);
        else if (choice < 990)
            Compare(board, nMoves);
        else if (choice < 997)
            SaveAndLoad();
        else
            Forget();
    }

    void CompareAll() const {
        std::size_t mates = 0;
        std::size_t entries = 0;
        for (int board = 0; board < kBoards; ++board)
            for (int parity = 0; parity < 2; ++parity) {
                const TStatements held = HeldOf(board, parity);
                const auto model = m_model.find({board, parity});
                const TStatements expected = model == m_model.end() ? TStatements{} : Strongest(model->second);
                ASSERT_TRUE(std::equal(held.begin(), held.end(), expected.begin(), expected.end(),
                                       [](const auto& a, const auto& b) {
                                           return a.first == b.first && a.second.m_bValue == b.second.m_bValue &&
                                                  a.second.m_nMove == b.second.m_nMove;
                                       }));
                entries += held.size();
                mates += parity != 0 ? held.size() : 0;
            }
        ASSERT_EQ(m_tree.GetElementsCount(), mates);
        m_nEntriesSeen = std::max(m_nEntriesSeen, entries);
    }

    int m_nContradictions = 0;
    mutable std::size_t m_nEntriesSeen = 0;

  private:
    static constexpr int kBoards = 60;

    void InsertBoth(int board, int nMoves) {
        const bool bValue = reference::Chance(m_rng, 50);
        const auto move = static_cast<std::uint32_t>(m_rng());
        TStatements& statements = m_model[{board, nMoves % 2}];
        const std::optional<bool> known = Ask(statements, nMoves);
        if (known && *known != bValue) {
            ++m_nContradictions;
            ASSERT_THROW(InsertInTree(board, nMoves, bValue, move), ChessException);
            return;
        }
        ASSERT_NO_THROW(InsertInTree(board, nMoves, bValue, move));
        if (!known)
            statements[nMoves] = {bValue, move};
    }

    void InsertInTree(int board, int nMoves, bool bValue, std::uint32_t move) {
        const auto length = static_cast<std::uint16_t>(nMoves);
        if (nMoves % 2 != 0)
            m_tree.Insert(length, CTree::Board(board), bValue, &move, false);
        else
            m_tree.InsertDefence(length, CTree::Board(board), bValue, &move, false);
    }

    void Compare(int board, int nMoves) const {
        const auto length = static_cast<std::uint16_t>(nMoves);
        const auto model = m_model.find({board, nMoves % 2});
        const std::optional<bool> known = model == m_model.end() ? std::nullopt : Ask(model->second, nMoves);
        const int expected = known ? *known : 254;
        if (nMoves % 2 != 0)
            ASSERT_EQ(m_tree.FindMate(length, CTree::Board(board)), expected);
        else
            ASSERT_EQ(m_tree.FindDefence(length, CTree::Board(board), nullptr), expected);
    }

    void SaveAndLoad() {
        ASSERT_TRUE(m_tree.SaveSubproblems());
        ASSERT_TRUE(m_tree.LoadSubproblems());
        CompareAll();
    }

    void Forget() {
        CompareAll();
        m_tree.Clear();
        m_model.clear();
    }

    [[nodiscard]] TStatements HeldOf(int board, int parity) const {
        TStatements held;
        const TChessboardRegisterItem item{CTree::Board(board)};
        for (const auto& [length, boards] : m_tree)
            if (const auto entry = boards.find(item); length % 2 == parity && entry != boards.end())
                held[length] = {entry->second.bValue, entry->second.nMove};
        return held;
    }

    CRegisterFolder m_folder;
    TChessboardRegister<bool> m_tree;
    TModel m_model;
    std::mt19937_64 m_rng;
};

} // namespace

TEST(ChessboardRegister, AgreesWithAPlainModelOverLongRandomPlay) {
    for (const std::uint64_t seed : {41u, 42u, 43u, 44u}) {
        CRandomPlay play(seed);
        for (int step = 0; step < 10000 && !testing::Test::HasFatalFailure(); ++step)
            play.Step();
        play.CompareAll();
        EXPECT_GT(play.m_nContradictions, 100);
        EXPECT_GT(play.m_nEntriesSeen, 100u);
    }
}

} // namespace quillon::test
