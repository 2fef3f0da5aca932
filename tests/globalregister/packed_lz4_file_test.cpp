#include "globalregister/packed/packed_lz4_file.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <sstream>

#include "packed_samples.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

class PackedLz4File : public testing::Test {
  protected:
    bool Save(const TBytes& table, std::uint16_t wFlags, int nProcessors) {
        std::istringstream source(std::string(table.begin(), table.end()));
        m_log.clear();
        return SavePackedLz4(
            Path(), source, table.size(), wFlags, [&](std::string_view line) { m_log += line; }, nProcessors);
    }

    std::optional<TBytes> Unpacked() const {
        std::ostringstream table;
        if (!UnpackPackedLz4(Path(), table))
            return std::nullopt;
        const std::string bytes = table.str();
        return TBytes(bytes.begin(), bytes.end());
    }

    std::filesystem::path Path() const { return m_folder.Path() / "table"; }

    TBytes FileBytes() const {
        std::ifstream file(Path(), std::ios::binary);
        return TBytes(std::istreambuf_iterator<char>(file), {});
    }

    CTemporaryFolder m_folder;
    std::string m_log;
};

TEST_F(PackedLz4File, BytesOfAFile) {
    ASSERT_TRUE(Save({3, 9, 9, 9, 1, 3, 9, 9, 9}, 3, 1));
    const TBytes expected{48,   0, 0, 0, 0,   0,   0,   0,   // size
                          9,    0, 0, 0, 0,   0,   0,   0,   // elements
                          0,    0, 0, 1, 0,   0,   0,   0,   // of a bucket
                          3,    0, 0, 0, 'L', 'Z', '4', 'e', // flags
                          40,   0, 0, 0, 0,   0,   0,   0,   // where the bucket starts
                          0x50, 3, 9, 9, 9,   1,   5,   0};  // five literals, then four from five before
    TBytes whole = expected;
    whole.push_back(0); // the last sequence has literals only: none
    whole[0] = 49;
    EXPECT_EQ(FileBytes(), whole);
    EXPECT_EQ(m_log, "Compressed bucket 0. Packed 9 of 9 (100%). Compression ratio 100.0%\n");
    EXPECT_EQ(Unpacked(), (TBytes{3, 9, 9, 9, 1, 3, 9, 9, 9}));
}

TEST_F(PackedLz4File, EmptyTable) {
    ASSERT_TRUE(Save({}, 0, 1));
    EXPECT_EQ(FileBytes().size(), 32u);
    EXPECT_EQ(Unpacked(), TBytes{});
}

TEST_F(PackedLz4File, SeveralBuckets) {
    TBytes table(kBucketBytes + 1000, 0);
    const TBytes end = TableBytes(3000);
    std::ranges::copy(end, table.end() - 3000);
    ASSERT_TRUE(Save(table, 0, 2));
    EXPECT_NE(m_log.find("Compressed bucket 0. Packed 16777216 of 16778216 (99%)."), std::string::npos) << m_log;
    EXPECT_NE(m_log.find("Compressed bucket 1. Packed 16778216 of 16778216 (100%)."), std::string::npos) << m_log;
    EXPECT_TRUE(Unpacked() == table);
}

TEST_F(PackedLz4File, SourceThatEndsEarlyLeavesNoFile) {
    std::istringstream source("abc");
    EXPECT_FALSE(SavePackedLz4(
        Path(), source, 4, 0, [](std::string_view) {}, 1));
    EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(PackedLz4File, DamageIsRefused) {
    std::mt19937_64 rng(97);
    const TBytes table = TableBytes(5000);
    ASSERT_TRUE(Save(table, 0, 1));
    const TBytes good = FileBytes();
    const auto reads = [&](const TBytes& bytes) {
        m_folder.Write("table", std::string(bytes.begin(), bytes.end()));
        return Unpacked().has_value();
    };
    EXPECT_TRUE(reads(good));
    EXPECT_FALSE(reads({good.begin(), good.end() - 1}));
    EXPECT_FALSE(reads({}));
    for (const std::size_t at : {0, 8, 14, 16, 28, 32, 36}) {
        TBytes changed = good;
        changed[at] ^= 0x55;
        EXPECT_FALSE(reads(changed)) << at;
    }
    std::filesystem::remove(Path());
    EXPECT_EQ(Unpacked(), std::nullopt);
}

} // namespace
} // namespace quillon
