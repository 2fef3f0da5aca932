#include "globalregister/packed/simple_packing.h"

#include <gtest/gtest.h>
#include <random>

#include "packed_samples.h"

namespace quillon {
namespace {

TBytes SimpleTable(std::mt19937_64& rng, std::size_t size) {
    TBytes table = RepetitiveBytes(rng, size);
    for (std::uint8_t& element : table)
        if (element > 127)
            element = static_cast<std::uint8_t>(element % 8 == 0 ? 255 : element % 128);
    return table;
}

TEST(SimplePacking, BytesOfATable) {
    TBytes table{7, 7, 7, 7, 9, 9, 255};
    EXPECT_EQ(PackSimple(table), (TBytes{17, 0, 0, 0, 1, 0, 0, 0, 12, 0, 0, 0, 7, 129, 9, 9, 255}));
    EXPECT_EQ(PackSimple({}), (TBytes{8, 0, 0, 0, 0, 0, 0, 0}));
    // 2048 equal elements: one, fifteen times 128 more, and 127 more; no run goes on into the next block.
    TBytes expected{36, 0, 0, 0, 2, 0, 0, 0, 16, 0, 0, 0, 33, 0, 0, 0, 3};
    expected.insert(expected.end(), 15, 254);
    expected.insert(expected.end(), {253, 3, 128, 4});
    table.assign(2051, 3);
    table.push_back(4);
    EXPECT_EQ(PackSimple(table), expected);
}

TEST(SimplePacking, TablesWithoutRunsTakeMost) {
    for (const std::size_t size : {1, 2, 2047, 2048, 2049, 9000}) {
        TBytes table(size);
        for (std::size_t i = 0; i < size; ++i)
            table[i] = static_cast<std::uint8_t>(i % 2);
        EXPECT_EQ(PackSimple(table).value().size(), MostSimpleBytes(size)) << size;
    }
}

TEST(SimplePacking, EveryElementIsRead) {
    std::mt19937_64 rng(95);
    for (const std::size_t size : {1, 127, 128, 129, 130, 131, 257, 2047, 2048, 2049, 9000}) {
        for (const TBytes& table : {TBytes(size, 5), SimpleTable(rng, size)}) {
            const TBytes packed = PackSimple(table).value();
            for (std::size_t i = 0; i < size; ++i)
                ASSERT_EQ(SimpleElement(packed, i), table[i]) << size << ' ' << i;
            EXPECT_EQ(UnpackSimple(packed, size), table);
            EXPECT_EQ(UnpackSimple(packed, size - 1), std::nullopt);
            EXPECT_EQ(UnpackSimple(packed, size + 1), std::nullopt);
            EXPECT_EQ(SimpleElement(packed, size), std::nullopt);
            EXPECT_EQ(SimpleElement(packed, size + 5000), std::nullopt);
        }
    }
}

TEST(SimplePacking, LargeElementsHaveNoForm) {
    for (const int element : {128, 200, 254})
        EXPECT_EQ(PackSimple(TBytes{1, static_cast<std::uint8_t>(element)}), std::nullopt);
    EXPECT_NE(PackSimple(TBytes{127, 255}), std::nullopt);
}

// One block with an element too many and the next with one too few: each element is there, and half are others.
TEST(SimplePacking, EveryBlockHasItsElements) {
    const TBytes good = PackSimple(TBytes(3 * 2048, 9)).value();
    ASSERT_TRUE(IsWholeSimple(good, 3 * 2048));
    const std::size_t first = SimpleStreamStart(good);
    for (const auto& [byte, change] : {std::pair{first + 16, -1}, {first + 33, -1}, {8, 1}, {4, -1}}) {
        TBytes wrong = good;
        wrong[byte] = static_cast<std::uint8_t>(wrong[byte] + change);
        EXPECT_FALSE(IsWholeSimple(wrong, 3 * 2048)) << byte;
    }
    TBytes shifted = good;
    ++shifted[first + 16];
    EXPECT_FALSE(IsWholeSimple(shifted, 3 * 2048));
    EXPECT_EQ(UnpackSimple(shifted, 3 * 2048), std::nullopt);
}

TEST(SimplePacking, DamageDoesNoHarm) {
    std::mt19937_64 rng(96);
    const TBytes good = PackSimple(SimpleTable(rng, 6000)).value();
    int nRefused = 0;
    for (int i = 0; i < 3000; ++i) {
        TBytes packed = good;
        packed[reference::Draw(rng, 25)] = static_cast<std::uint8_t>(reference::Draw(rng, 256));
        packed.resize(reference::Draw(rng, packed.size() + 1));
        packed.shrink_to_fit();
        nRefused += SimpleElement(packed, reference::Draw(rng, 6000)) == std::nullopt;
        const std::optional<TBytes> table = UnpackSimple(packed, 6000);
        EXPECT_TRUE(!table || table->size() == 6000);
    }
    EXPECT_GT(nRefused, 500);
    EXPECT_LT(nRefused, 3000);
}

} // namespace
} // namespace quillon
