#include "globalregister/browse_max_mates.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "core/fen.h"
#include "globalregister/missing_types.h"
#include "globalregister/precalc_format.h"
#include "globalregister/verified_tables.h"

namespace quillon {
namespace {

TEST(BrowseMaxMates, WalksThroughThePositionsAndBeginsAnewIfThatIsWanted) {
    CVerifiedTables tables;
    TElements elements(TPositionIndexing("R").GetSize(), 0);
    const TPositionIndexing indexing("R");
    std::set<std::uint64_t> longest;
    for (const int blackKing : {20, 40, 60})
        longest.insert(indexing.GetIndex(ThreeMenBoard("R", 0, 7, blackKing)));
    for (const std::uint64_t index : longest)
        elements[index] = 16;
    tables.Write("R", elements);
    const CRegisterUse data = tables.Use("R");
    CBrowseMaxMates mates(*data, tables.Folder(), 10);
    CHeardBoxes user;
    user.m_answers = {true, false};
    for (int round = 0; round < 2; ++round)
        for (std::size_t i = 1; i <= 3; ++i) {
            const std::optional<TChessboard> b = mates.Next(user);
            ASSERT_TRUE(b);
            EXPECT_EQ(indexing.GetIndex(*b), *std::next(longest.begin(), static_cast<std::ptrdiff_t>(i - 1)));
            EXPECT_EQ(mates.Caption(), "#16 (" + std::to_string(i) + "/3)");
        }
    EXPECT_FALSE(mates.Next(user));
    EXPECT_EQ(user.m_asked, std::vector<std::string>(2, "No more such positions. Restart search from beginning?"));
}

TEST(BrowseMaxMates, TableWithoutMatesHasNoPositions) {
    CVerifiedTables tables;
    tables.Write("N", TElements(TPositionIndexing("N").GetSize(), 0));
    const CRegisterUse data = tables.Use("N");
    CBrowseMaxMates mates(*data, tables.Folder(), 10);
    CHeardBoxes user;
    EXPECT_EQ(mates.Count(), 0u);
    EXPECT_FALSE(mates.Next(user));
    EXPECT_TRUE(user.m_asked.empty());
}

TEST(BrowseMaxMates, PackedTableWithoutMatesHasNoPositionsEither) {
    CVerifiedTables tables;
    WriteLzw(tables.Folder() / "Precalc/N.precalc.packed.lzw", TElements(TPositionIndexing("N").GetSize(), 0));
    const CRegisterUse data = tables.Use("N");
    ASSERT_EQ(data->nRandomAccessKind, kPackedAccess);
    for (int round = 0; round < 2; ++round) { // the second from the list that the first has left
        CBrowseMaxMates mates(*data, tables.Folder(), 10);
        EXPECT_EQ(mates.Count(), 0u);
    }
}

/// Without combinations an index is of one order of equal men, so each board has two here.
TEST(BrowseMaxMates, ShowsABoardOnce) {
    CVerifiedTables tables;
    const TPositionIndexing indexing("RR");
    TElements elements(indexing.GetSize(), 0);
    const auto index = [](std::uint64_t first, std::uint64_t second, std::uint64_t blackKing) {
        return ((first * 64 + second) * 64 + blackKing) * 10; // the white king on a1
    };
    for (const std::uint64_t blackKing : {36u, 44u})
        for (const auto& [first, second] : {std::pair{9u, 50u}, std::pair{50u, 9u}})
            elements[index(first, second, blackKing)] = 7;
    tables.Write("RR", elements);
    const CRegisterUse data = tables.Use("RR");
    CHeardBoxes user;
    for (const std::size_t nLimit : {1u, 2u, 10u}) {
        CBrowseMaxMates mates(*data, tables.Folder(), nLimit);
        std::set<std::string> boards;
        while (const std::optional<TChessboard> b = mates.Next(user))
            EXPECT_TRUE(boards.insert(WriteFEN(*b, false)).second);
        EXPECT_EQ(boards.size(), std::min<std::size_t>(nLimit, 2));
        EXPECT_EQ(mates.Count(), boards.size());
        EXPECT_EQ(mates.Moves(), 7u);
    }
}

TEST(MissingTypes, AreListedUntilTheUserHasSeenEnough) {
    CVerifiedTables tables;
    for (const char* const type : {"Q", "R", "P"})
        tables.Write(type, TElements(TPositionIndexing(type).GetSize(),
                                     static_cast<std::uint8_t>(*type == 'P' ? kFlagPawnRanks48 : 0)));
    CHeardBoxes user;
    user.m_answers = {true, false};
    ListMissing(3, tables.Registers(), user);
    ASSERT_EQ(user.m_asked.size(), 2u);
    EXPECT_EQ(user.m_asked[0],
              "List of missing precalculated data for positions with 3 pieces :\n\n\nShould program look "
              "for missing precalculated data for positions with more pieces?");
    EXPECT_EQ(user.m_asked[1].find("List of missing precalculated data for positions with 4 pieces :\nQQ\nQR\n"), 0u);
    EXPECT_EQ(MissingTypes(7, tables.Registers()).size(), 2002u - 126u) << "all but those of black men alone";
    ListMissing(7, tables.Registers(), user);
    EXPECT_EQ(user.m_asked.size(), 2u) << "there are no more men";
    EXPECT_EQ(user.m_told.size(), 1u);
    WriteElements(tables.Path("R", ".iter"), {4, 0, 0, 0});
    EXPECT_EQ(MissingTypes(3, tables.Registers()), std::vector<std::string>{"R"}) << "not finished";
}

} // namespace
} // namespace quillon
