// Coder and decoder of table blocks against the slow reference.

#include <gtest/gtest.h>
#include <random>

#include "globalregister/packed/lzw_coder.h"
#include "globalregister/packed/lzw_decoder.h"
#include "packed_samples.h"
#include "reference_lzw.h"

namespace quillon {
namespace {

// Sorts of tables: all alike, long runs, like a true one, few values, and any values that can be packed.
constexpr int kSorts = 6;
template <class T> std::vector<T> Sample(std::mt19937_64& rng, int sort, std::size_t size) {
    const TBytes table = TableBytes(size + 50000);
    std::vector<T> elements(size);
    T run = 0;
    for (std::size_t i = 0; i < size; ++i) {
        if (reference::Draw(rng, 700) == 0)
            run = static_cast<T>(reference::Draw(rng, 12));
        const T values[kSorts] = {T{3},
                                  run,
                                  static_cast<T>(table[i + 40000]),
                                  static_cast<T>(reference::Draw(rng, 2)),
                                  static_cast<T>(reference::Draw(rng, 20)),
                                  static_cast<T>(reference::Draw(rng, sizeof(T) == 1 ? 256 : 1024))};
        elements[i] = values[sort];
    }
    return elements;
}

template <class T>
void CheckDecoder(const std::vector<T>& block, TBytes packed, std::size_t nBlockElements, bool bPlain) {
    CLzwDecoder<T> decoder(nBlockElements, bPlain);
    const std::size_t size = packed.size();
    packed.resize(size + kLzwReadAhead, 0xff);
    for (const std::size_t limit : {block.size(), block.size() / 2 + 1, std::size_t{1}}) {
        const std::size_t decoded = decoder.Decode({packed.data(), size}, limit);
        ASSERT_GE(decoded, limit);
        ASSERT_TRUE(std::equal(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(limit), decoder.Elements()));
    }
    ASSERT_EQ(decoder.Decode({packed.data(), size - 1}, block.size()), 0u) << "a byte is missing";
}

template <class T> void CheckBlock(const std::vector<T>& block, std::size_t nBlockElements) {
    TBytes packed;
    ASSERT_TRUE(CLzwCoder<T>(nBlockElements).Code(block, packed));
    ASSERT_EQ(packed, reference_lzw::Code(block, nBlockElements, true)) << block.size();
    ASSERT_NO_FATAL_FAILURE(CheckDecoder(block, packed, nBlockElements, true));
}

template <class T> class LzwTest : public testing::Test {};
using TElementTypes = testing::Types<std::uint8_t, std::uint16_t>;
TYPED_TEST_SUITE(LzwTest, TElementTypes);

TYPED_TEST(LzwTest, SmallBlocks) {
    std::mt19937_64 rng(81);
    for (const std::size_t size : {1, 2, 3, 4, 17, 39})
        for (int sort = 0; sort < kSorts; ++sort)
            ASSERT_NO_FATAL_FAILURE(CheckBlock(Sample<TypeParam>(rng, sort, size), 8192));
}

TYPED_TEST(LzwTest, WholeBlocks) {
    std::mt19937_64 rng(82);
    for (const std::size_t size : {8192, 16384})
        for (int sort = 0; sort < kSorts; ++sort)
            ASSERT_NO_FATAL_FAILURE(CheckBlock(Sample<TypeParam>(rng, sort, size), size)) << sort;
}

TYPED_TEST(LzwTest, RichDictionaryOfOldFiles) {
    std::mt19937_64 rng(83);
    const auto greatest = static_cast<TypeParam>(-1);
    for (const std::size_t size : {8192, 16384})
        for (int sort = 0; sort < kSorts; ++sort) {
            std::vector<TypeParam> block = Sample<TypeParam>(rng, sort, size);
            for (std::size_t i = 0; i < size;
                 i += reference::Draw(rng, 40)) // singles, pairs and long runs of the greatest
                for (std::size_t end = i + reference::Draw(rng, i % 3 == 0 ? 300 : 3); i <= end && i < size; ++i)
                    block[i] = greatest;
            ASSERT_NO_FATAL_FAILURE(CheckDecoder(block, reference_lzw::Code(block, size, false), size, false)) << sort;
        }
}

// A run makes strings that grow by one each time, up to the longest, which grows no more: also where the width of the
// codes is about to change, which the number of other strings before it decides.
TYPED_TEST(LzwTest, LongestStringsAtAllPlaces) {
    std::mt19937_64 rng(84);
    for (std::size_t nOthers = 0; nOthers < 1100; nOthers += 1 + reference::Draw(rng, 12)) {
        std::vector<TypeParam> block;
        for (std::size_t i = 0; i < nOthers; ++i)
            block.push_back(static_cast<TypeParam>(i * 7 % 251));
        block.resize(16384, TypeParam{254});
        TBytes packed;
        ASSERT_TRUE(CLzwCoder<TypeParam>(16384).Code(block, packed));
        ASSERT_NO_FATAL_FAILURE(CheckDecoder(block, packed, 16384, true)) << nOthers;
    }
}

TYPED_TEST(LzwTest, RefusesCodesThatNoCoderWrites) {
    CLzwDecoder<TypeParam> decoder(8192, true);
    const TBytes ones(64, 0xff); // the greatest code of its width, before any string was added
    EXPECT_EQ(decoder.Decode(std::span(ones).first(40), 10), 0u);
    EXPECT_EQ(decoder.Decode(std::span(ones).first(0), 1), 0u) << "no code at all";
}

TEST(Lzw, BytesOfABlock) {
    TBytes packed;
    ASSERT_TRUE(CLzwCoder<std::uint8_t>(16384).Code(std::vector<std::uint8_t>{5, 5, 5}, packed));
    EXPECT_EQ(packed, TBytes({0x05, 0x00, 0x02})) << "codes 5 and 256 of nine bits";
    packed.clear();
    ASSERT_TRUE(CLzwCoder<std::uint16_t>(16384).Code(std::vector<std::uint16_t>{5, 5, 5}, packed));
    EXPECT_EQ(packed, TBytes({0x05, 0x00, 0x20})) << "codes 5 and 1024 of eleven bits";
}

TEST(Lzw, ElementsAboveTheDictionaryCannotBePacked) {
    TBytes packed;
    EXPECT_TRUE(CLzwCoder<std::uint16_t>(8192).Code(std::vector<std::uint16_t>{0, 1023}, packed));
    EXPECT_FALSE(CLzwCoder<std::uint16_t>(8192).Code(std::vector<std::uint16_t>{0, 1024}, packed));
    EXPECT_FALSE(CLzwCoder<std::uint16_t>(8192).Code(std::vector<std::uint16_t>{65535}, packed));
}

} // namespace
} // namespace quillon
