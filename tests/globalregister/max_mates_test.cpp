#include "globalregister/max_mates.h"

#include <chrono>

#include "globalregister/active_tables.h"
#include "globalregister/system_failure.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

TEST(MaxMates, LongestMatesAndTheirPositions) {
    CActiveTables tables(true, {"R"});
    const CTemporaryFolder home;
    const CRegisterUse rook(tables.Registers().GetRegisterForTool(TPositionIndexing("R").nPositionType));
    const TElements elements = ThreeMenElements("R");
    std::set<std::uint64_t> expected, found, few;
    for (std::uint64_t i = 1; i < elements.size(); ++i)
        if (elements[i] == 16)
            expected.insert(i);
    ASSERT_GT(expected.size(), 10u);
    EXPECT_EQ(GetMaxMoves(*rook, home.Path(), found, 10'000, false), 16u);
    EXPECT_EQ(found, expected);
    EXPECT_EQ(GetMaxMoves(*rook, home.Path(), few, 3, false), 16u);
    EXPECT_EQ(few, std::set<std::uint64_t>(expected.begin(), std::next(expected.begin(), 3)));
    EXPECT_FALSE(std::filesystem::exists(home.Path() / "MaxMateIndexesCache"));
}

TEST(MaxMates, EveryFormHasTheSame) {
    const CTemporaryFolder home;
    TGlobalRegister packed("R"), simple("R"), disk("R"), marked("R");
    TElements elements = ThreeMenElements("R");
    elements[0] = 99; // flags
    WriteLzw(home.Path() / "R.precalc.packed.lzw", elements);
    packed.packed = RandomAccessLZWBuffer::MakePackedReader(1, 16384);
    ASSERT_TRUE(packed.packed->Load(home.Path() / "R.precalc.packed.lzw", true));
    packed.nRandomAccessKind = kPackedAccess;
    simple.data = PackSimple(elements).value();
    simple.nRandomAccessKind = kSimpleAccess;
    WriteElements(home.Path() / "R.precalc", elements);
    disk.diskStream.open(home.Path() / "R.precalc", std::ios::binary);
    marked.data = elements;
    marked.data[5] = 200;
    std::set<std::uint64_t> first, found;
    EXPECT_EQ(GetMaxMoves(packed, home.Path(), first, 50, false), 16u);
    for (const TGlobalRegister* const data : {&simple, &disk, &marked}) {
        EXPECT_EQ(GetMaxMoves(*data, home.Path(), found, 50, false), 16u);
        EXPECT_EQ(found, first);
    }
}

TEST(MaxMates, AFileThatCannotBeReadIsAFailureOfTheSystem) {
    const CTemporaryFolder home;
    TGlobalRegister disk("R");
    disk.diskStream.open(home.Path(), std::ios::binary); // a folder
    std::set<std::uint64_t> indexes;
    EXPECT_THROW((void)GetMaxMoves(disk, home.Path(), indexes, 1, false), CSystemFailure);
}

TEST(MaxMates, CacheIsWrittenReadAndChecked) {
    const CTemporaryFolder home;
    TGlobalRegister data("R");
    data.data = ThreeMenElements("R");
    std::set<std::uint64_t> first, again;
    EXPECT_EQ(GetMaxMoves(data, home.Path(), first, 20, true), 16u);
    const std::filesystem::path cache = home.Path() / "MaxMateIndexesCache/R.idx";
    TElements bytes = ReadWholeFile(cache).value();
    EXPECT_GE(bytes.size(), 8 * 21u);
    EXPECT_EQ(bytes[0], 16);
    bytes[0] = 17;
    WriteElements(cache, bytes);
    EXPECT_EQ(GetMaxMoves(data, home.Path(), again, 20, true), 17u) << "from the file";
    EXPECT_EQ(again, first);
    EXPECT_EQ(GetMaxMoves(data, home.Path(), again, 20, false), 16u);
    for (const TElements& wrong : {TElements{}, TElements(12, 1), TElements(8, 0xff), TElements(16, 0xff)}) {
        WriteElements(cache, wrong);
        EXPECT_EQ(GetMaxMoves(data, home.Path(), again, 20, true), 16u) << "a damaged cache is none";
        EXPECT_EQ(again, first);
    }
}

TEST(MaxMates, UnknownElementsAreNoMates) {
    TGlobalRegister simple("R");
    TElements elements = ThreeMenElements("R");
    elements[100] = kUnknownElement;
    simple.data = PackSimple(elements).value();
    simple.nRandomAccessKind = kSimpleAccess;
    std::set<std::uint64_t> indexes;
    EXPECT_EQ(GetMaxMoves(simple, {}, indexes, 5, false), 16u);
}

TEST(MaxMates, CacheIsOfThisTableAsItIs) {
    const CTemporaryFolder home;
    const std::filesystem::path cache = home.Path() / "MaxMateIndexesCache/R.idx", table = home.Path() / "R.precalc";
    TGlobalRegister data("R");
    data.data = ThreeMenElements("R");
    data.bCompactUnfinished = true;
    std::set<std::uint64_t> one, all;
    EXPECT_EQ(GetMaxMoves(data, home.Path(), one, 1, true), 16u);
    EXPECT_FALSE(std::filesystem::exists(cache)) << "a table in the making has no longest mate yet";
    data.bCompactUnfinished = false;
    EXPECT_EQ(GetMaxMoves(data, home.Path(), one, 1, true), 16u);
    EXPECT_EQ(one.size(), 1u);
    EXPECT_EQ(GetMaxMoves(data, home.Path(), all, 1000, true), 16u);
    EXPECT_GT(all.size(), 10u) << "few were wanted first, more later";
    WriteElements(table, data.data);
    data.loadedFrom = table;
    for (const std::size_t index : all)
        data.data[index] = 0;
    std::filesystem::last_write_time(table, std::filesystem::last_write_time(cache) + std::chrono::seconds(5));
    EXPECT_EQ(GetMaxMoves(data, home.Path(), one, 1, true), 15u) << "the table is newer";
}

TEST(MaxMates, SubTypesByPromotionAndCapture) {
    using TTypes = std::vector<std::string>;
    EXPECT_EQ(SubTypesOf("P"), (TTypes{"B", "R", "Q", "N"}));
    EXPECT_EQ(SubTypesOf("QR"), (TTypes{"R", "Q"}));
    EXPECT_EQ(SubTypesOf("RPp"), (TTypes{"RBp", "RRp", "QRp", "RNp", "RPb", "RPr", "RPq", "RPn", "Pp", "Rp", "RP"}));
    EXPECT_EQ(SubTypesOf("QQQ"), (TTypes{"QQ"}));
    EXPECT_EQ(SubTypesOf("Q"), TTypes{});
}

TEST(MaxMates, OfSubMaterial) {
    CActiveTables tables(false, {"Q", "R"});
    const TSubMaterialMaximum both = MaxMovesOfSubTypes("QR", tables.Registers());
    EXPECT_EQ(both.m_nMoves, 16u);
    EXPECT_TRUE(both.m_missingTypes.empty());
    const TSubMaterialMaximum one = MaxMovesOfSubTypes("QB", tables.Registers());
    EXPECT_EQ(one.m_nMoves, 10u);
    EXPECT_EQ(one.m_missingTypes, std::vector<std::string>{"B"});
}

} // namespace
} // namespace quillon
