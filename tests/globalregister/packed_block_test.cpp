#include "globalregister/packed/packed_block.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <sstream>
#include <string_view>

#include "packed_samples.h"
#include "reference_packer.h"
#include "reference_unpacker.h"

namespace quillon {
namespace {

using reference_packer::CUnpacker;

bool Pack(bool bLong, const TBytes& source, TBytes& packed, int nProcessors = 1) {
    return bLong ? PackBlockLong(source, packed, nProcessors) : PackBlock(source, packed, nProcessors);
}

std::string_view MagicOf(const TBytes& packed) { return {reinterpret_cast<const char*>(packed.data()), 4}; }

std::size_t Word(const TBytes& bytes, std::size_t at) {
    return bytes[at] | std::size_t{bytes[at + 1]} << 8 | std::size_t{bytes[at + 2]} << 16 |
           std::size_t{bytes[at + 3]} << 24;
}

// Packs as one block in both forms; the product and the strict reader unpack it.
void CheckRoundTrip(const TBytes& source) {
    for (const bool bLong : {false, true}) {
        TBytes packed, unpacked;
        ASSERT_TRUE(Pack(bLong, source, packed));
        ASSERT_EQ(MagicOf(packed), bLong ? "LZ4e" : "LZ4 ");
        ASSERT_EQ(Word(packed, 4), source.size());
        ASSERT_EQ(Word(packed, 8), packed.size());
        ASSERT_EQ(Word(packed, 12), 0u);
        ASSERT_TRUE(UnpackBlock(packed, unpacked)) << source.size() << bLong;
        ASSERT_TRUE(unpacked == source) << source.size() << bLong;
        const auto read = CUnpacker(std::span(packed).subspan(16), bLong).Unpack();
        ASSERT_TRUE(read.has_value() && *read == source) << source.size() << bLong;
    }
}

void Append(TBytes& bytes, const TBytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

TBytes Block(std::string_view magic, std::size_t size, const TBytes& body, std::size_t fourth = 0) {
    TBytes block(magic.begin(), magic.end());
    for (const std::size_t word : {size, 16 + body.size(), fourth})
        for (int shift = 0; shift < 32; shift += 8)
            block.push_back(static_cast<std::uint8_t>(word >> shift));
    Append(block, body);
    return block;
}

TEST(PackedBlock, BytesOfABlock) {
    TBytes packed;
    ASSERT_TRUE(PackBlock(TBytes{'a', 'b', 'c', 'd', 'e', 'f', 'a', 'b', 'c', 'd', 'e', 'f', 'g'}, packed, 1));
    EXPECT_EQ(packed, Block("LZ4 ", 13, {0x62, 'a', 'b', 'c', 'd', 'e', 'f', 6, 0, 0x10, 'g'}));
    ASSERT_TRUE(PackBlock({}, packed, 1));
    EXPECT_EQ(packed, Block("LZ4 ", 0, {0}));
}

TEST(PackedBlock, LengthsOfALongMatch) {
    std::mt19937_64 rng(71);
    const TBytes start = RandomBytes(rng, 300);
    for (const std::size_t length : {4, 18, 19, 20, 145, 146, 147, 400, 401}) {
        TBytes source = start, packed;
        for (std::size_t i = 0; i < length; ++i)
            source.push_back(source[source.size() - 300]);
        Append(source, {static_cast<std::uint8_t>(~source[source.size() - 300]), 1});
        ASSERT_TRUE(PackBlockLong(source, packed, 1));
        // Token, one byte more of the literals' length, the literals, then the match and two literals.
        const std::size_t token = 16, match = token + 3 + 300;
        TBytes expected;
        if (length >= 19)
            expected.push_back(static_cast<std::uint8_t>(std::min<std::size_t>(length - 19, 127)));
        if (length >= 146)
            expected.push_back(static_cast<std::uint8_t>((length - 146) % 255));
        if (length >= 401)
            expected.insert(expected.end() - 1, 255);
        Append(expected, {300 % 256, 300 / 256, 0x20});
        ASSERT_EQ(packed[token], 0xf0 + std::min<std::size_t>(length - 4, 15)) << length;
        ASSERT_EQ(TBytes(packed.begin() + match - 0, packed.end() - 2), expected) << length;
    }
}

TEST(PackedBlock, FarMatchHasThreeBytesAndAMark) {
    std::mt19937_64 rng(72);
    for (const std::size_t length : {18, 19, 200}) {
        const TBytes piece = RandomBytes(rng, length);
        TBytes source = piece, packed, unpacked;
        source.resize(0x12345, 0);
        Append(source, piece);
        ASSERT_TRUE(PackBlockLong(source, packed, 1));
        const TBytes far{0x45, 0x23, 0x01, 0x00};
        const bool bFar = packed.size() > 4 && TBytes(packed.end() - 4, packed.end()) == far;
        EXPECT_EQ(bFar, length >= 19) << "too short a match is not worth three bytes";
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(source));
    }
}

TEST(PackedBlock, ReadsHandMadeBlocks) {
    TBytes unpacked;
    const TBytes body{0x44, 'a', 'b', 'c', 'd', 4, 0, 0x10, 'e'};
    EXPECT_FALSE(UnpackBlock(Block("LZ4 ", 13, body), unpacked)) << "eight from an offset of four";
    const TBytes good{0x40, 'a', 'b', 'c', 'd', 4, 0, 0x10, 'e'};
    ASSERT_TRUE(UnpackBlock(Block("LZ4 ", 9, good), unpacked));
    EXPECT_EQ(unpacked, TBytes({'a', 'b', 'c', 'd', 'a', 'b', 'c', 'd', 'e'}));
    ASSERT_TRUE(UnpackBlock(Block("LZ42", 77, good, 9), unpacked)) << "the size is in the fourth word";
    EXPECT_EQ(unpacked.size(), 9u);
    EXPECT_FALSE(UnpackBlock(Block("LZ42", 9, good, 77), unpacked));
    EXPECT_TRUE(unpacked.empty());
    EXPECT_FALSE(UnpackBlock(Block("LZ4 ", 8, good), unpacked));
    EXPECT_FALSE(UnpackBlock(Block("LZ4 ", 10, good), unpacked));
    EXPECT_FALSE(UnpackBlock(Block("LZ43", 9, good), unpacked));
    TBytes longer = Block("LZ4 ", 9, good);
    longer.push_back(0);
    EXPECT_FALSE(UnpackBlock(longer, unpacked)) << "bytes behind the block";
    EXPECT_FALSE(UnpackBlock(Block("LZ4 ", 0xffffffff, good), unpacked)) << "more than these bytes can make";
}

TEST(PackedBlock, ReadsHandMadeContainers) {
    TBytes unpacked;
    TBytes container{'l', 'z', '4', 'e', 21, 0, 0, 0, 9, 9, 9, 9, 2, 0, 0, 0};
    container.resize(32, 7); // what is reserved may be anything
    Append(container, Block("LZ4e", 16, {0xf0, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    Append(container, Block("LZ4e", 5, {0x50, 20, 21, 22, 23, 24}));
    ASSERT_TRUE(UnpackBlock(container, unpacked));
    EXPECT_EQ(unpacked, TBytes({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 20, 21, 22, 23, 24}));
    for (const std::size_t at : {4, 12}) { // total and count
        TBytes wrong = container;
        ++wrong[at];
        EXPECT_FALSE(UnpackBlock(wrong, unpacked)) << at;
        wrong[at] -= 2;
        EXPECT_FALSE(UnpackBlock(wrong, unpacked)) << at;
    }
}

TEST(PackedBlock, KnowsItsMagics) {
    for (const std::string_view magic : {"LZ4 ", "LZ4e", "lz4 ", "lz4e"})
        EXPECT_TRUE(IsPackedBlock(TBytes(magic.begin(), magic.end()))) << magic;
    for (const std::string_view magic : {"LZ43", "lz4", "", "\xff\xff\xff\xff"})
        EXPECT_FALSE(IsPackedBlock(TBytes(magic.begin(), magic.end()))) << magic;
}

// However many literals a block begins with.
TEST(PackedBlock, TellsItsFirstByteWithoutBeingUnpacked) {
    std::mt19937_64 rng(97);
    const auto firstOf = [](const TBytes& packed) {
        std::istringstream stream(std::string(packed.begin(), packed.end()));
        return FirstUnpackedByte(stream);
    };
    const auto check = [&](bool bLong, const TBytes& source, int nProcessors) {
        TBytes packed;
        ASSERT_TRUE(Pack(bLong, source, packed, nProcessors));
        EXPECT_EQ(firstOf(packed), source[0]) << source.size();
        packed.resize(kBlockHeaderBytes + 1);
        EXPECT_EQ(firstOf(packed), std::nullopt) << source.size();
    };
    for (const std::size_t size : {1, 14, 15, 16, 269, 270, 271, 5000})
        for (const bool bLong : {false, true}) {
            check(bLong, RandomBytes(rng, size), 1);
            check(bLong, TBytes(size, 0), 1);
        }
    check(true, TBytes(kParallelPackBytes, 3), 2);
    TBytes empty;
    ASSERT_TRUE(PackBlock({}, empty, 1));
    EXPECT_EQ(firstOf(empty), std::nullopt);
    EXPECT_EQ(firstOf(TBytes(40, 1)), std::nullopt);
}

TEST(PackedBlock, RoundTripsOfAllSmallSizes) {
    std::mt19937_64 rng(73);
    for (std::size_t size = 0; size < 600; ++size) {
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(TBytes(size, 9)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(RandomBytes(rng, size)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(RandomBytes(rng, size, 2)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(RepetitiveBytes(rng, size)));
    }
}

TEST(PackedBlock, RoundTripsAroundTheLimitsOfLengthsAndOffsets) {
    std::mt19937_64 rng(74);
    for (const std::size_t literals : {1, 4, 14, 15, 16, 17, 18, 19, 254, 255, 256, 269, 270, 271, 524, 525, 526})
        for (const std::size_t length : {3, 4, 5, 15, 16, 17, 18, 19, 20, 145, 146, 147, 254, 255, 256, 273, 274, 275})
            for (const std::size_t offset : {1, 2, 3, 4, 5, 8, 15, 16, 17, 31, 255, 256, 526}) {
                TBytes source = RandomBytes(rng, literals);
                for (std::size_t i = 0; i < length && offset <= literals; ++i)
                    source.push_back(source[source.size() - offset]);
                Append(source, RandomBytes(rng, reference::Draw(rng, 3)));
                ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(source)) << literals << ' ' << length << ' ' << offset;
            }
}

// A piece, filling, and the piece again, whose distance is around a window.
TBytes PieceTwice(std::mt19937_64& rng, std::size_t distance) {
    const TBytes piece = RandomBytes(rng, 40);
    TBytes source = piece;
    source.resize(distance, 5);
    Append(source, piece);
    return source;
}

TEST(PackedBlock, RoundTripsAroundTheShortWindow) {
    std::mt19937_64 rng(75);
    for (const std::size_t distance : {0xfffe, 0xffff, 0x10000, 0x10001})
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(PieceTwice(rng, distance)));
}

TEST(PackedBlock, RoundTripAroundTheLongWindow) {
    std::mt19937_64 rng(75);
    const TBytes beyond = RandomBytes(rng, 40);
    TBytes source = PieceTwice(rng, 0xffffff), packed, unpacked;
    std::ranges::copy(beyond, source.begin() + 40);
    Append(source, {77}); // now `beyond` is as far away as no offset tells
    Append(source, beyond);
    ASSERT_TRUE(PackBlockLong(source, packed, 1) && UnpackBlock(packed, unpacked));
    ASSERT_TRUE(unpacked == source);
    TBytes end{0xff, 0xff, 0xff, 0xf0, 41 - 15, 77}; // the offset of the first piece, then literals
    Append(end, beyond);
    EXPECT_EQ(TBytes(packed.end() - static_cast<std::ptrdiff_t>(end.size()), packed.end()), end);
}

TEST(PackedBlock, RoundTripsOfLargerData) {
    std::mt19937_64 rng(76);
    for (const std::size_t size : {0xffff, 0x10000, 0x10001, 200000}) {
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(RandomBytes(rng, size)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(RepetitiveBytes(rng, size)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(TableBytes(size)));
        ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(TBytes(size, 0)));
    }
}

// Counters in all lengths: places that hash alike but differ, in every table of the coder.
TEST(PackedBlock, RoundTripsOfDataThatLooksAlike) {
    TBytes source;
    for (std::uint32_t i = 0; i < 60000; ++i)
        Append(source, {static_cast<std::uint8_t>(i >> 8), 0, 0, static_cast<std::uint8_t>(i)});
    ASSERT_NO_FATAL_FAILURE(CheckRoundTrip(source));
}

TEST(PackedBlock, IsNoLargerThanAnExhaustiveSearchLeavesIt) {
    std::mt19937_64 rng(77);
    for (const TBytes& source : {TableBytes(100000), RepetitiveBytes(rng, 50000), RandomBytes(rng, 30000, 100)})
        for (const bool bLong : {false, true}) {
            TBytes packed;
            ASSERT_TRUE(Pack(bLong, source, packed));
            const std::size_t measure =
                reference_packer::PackedSize(source, bLong ? reference_packer::kLong : reference_packer::kShort);
            EXPECT_LE(static_cast<double>(packed.size() - 16), 1.03 * static_cast<double>(measure)) << source.size();
        }
}

TEST(PackedBlock, LargeSourcesArePackedInParallel) {
    TBytes source = TableBytes(kParallelPackBytes + 5), packed, unpacked;
    for (const bool bLong : {false, true}) {
        ASSERT_TRUE(Pack(bLong, source, packed, 3));
        ASSERT_EQ(MagicOf(packed), bLong ? "lz4e" : "lz4 ");
        EXPECT_EQ(Word(packed, 4), source.size());
        EXPECT_EQ(Word(packed, 12), 3u);
        const std::size_t part = Word(packed, 32 + 4);
        EXPECT_EQ(part % 16, 0u);
        EXPECT_EQ(part, (source.size() / 3 + 16) / 16 * 16);
        ASSERT_TRUE(UnpackBlock(packed, unpacked));
        EXPECT_TRUE(unpacked == source);
    }
    ASSERT_TRUE(PackBlock(source, packed, 1));
    EXPECT_EQ(MagicOf(packed), "LZ4 ") << "one processor makes one block";
    source.resize(kParallelPackBytes - 1);
    ASSERT_TRUE(PackBlock(source, packed, 3));
    EXPECT_EQ(MagicOf(packed), "LZ4 ") << "too small to share";
}

// Damage is refused or unpacks to something; the sanitizers watch that nothing else happens. Buffers are as large as
// told.
TEST(PackedBlock, DamagedBlocksDoNoHarm) {
    std::mt19937_64 rng(78);
    int nRefused = 0, nRead = 0;
    for (int i = 0; i < 1500; ++i) {
        TBytes packed, unpacked;
        const TBytes source = RepetitiveBytes(rng, reference::Draw(rng, 2000));
        ASSERT_TRUE(Pack(reference::Draw(rng, 2) == 0, source, packed));
        for (std::uint64_t change = reference::Draw(rng, 3); change < 3; ++change)
            packed[(reference::Draw(rng, 4) == 0 ? 0 : 16) + reference::Draw(rng, packed.size() - 16)] =
                static_cast<std::uint8_t>(reference::Draw(rng, 256));
        if (reference::Draw(rng, 4) == 0)
            packed.resize(reference::Draw(rng, packed.size()));
        packed.shrink_to_fit();
        const bool bRead = UnpackBlock(packed, unpacked);
        (bRead ? nRead : nRefused) += 1;
        if (bRead) {
            const auto read = CUnpacker(std::span(packed).subspan(16), packed[3] == 'e').Unpack();
            ASSERT_TRUE(!read.has_value() || *read == unpacked);
        } else {
            ASSERT_TRUE(unpacked.empty());
        }
    }
    EXPECT_GT(nRefused, 400);
    EXPECT_GT(nRead, 40) << "literals were changed";
}

TEST(PackedBlock, CutBlocksAreRefused) {
    std::mt19937_64 rng(79);
    const TBytes source = RepetitiveBytes(rng, 700);
    for (const bool bLong : {false, true}) {
        TBytes packed, unpacked;
        ASSERT_TRUE(Pack(bLong, source, packed));
        while (!packed.empty()) {
            packed.pop_back();
            packed.shrink_to_fit();
            ASSERT_FALSE(UnpackBlock(packed, unpacked)) << packed.size();
        }
    }
}

} // namespace
} // namespace quillon
