#include "globalregister/packed/random_access_packed_buffer.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "core/chess_exception.h"
#include "globalregister/packed/lzw_table_packer.h"
#include "globalregister/packed/packed_image.h"
#include "packed_samples.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

using RandomAccessLZWBuffer::MakePackedReader;
using RandomAccessLZWBuffer::MakePackedWriter;
using TBuffer = std::unique_ptr<RandomAccessLZWBuffer::CRandomAccessPackedBufferBase>;

class CHeardNotifier final : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view title) override {
        m_heard += std::string(title) + ": " + std::string(text);
    }
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
    std::string m_heard;
};

// A table of nElements as bytes; of two bytes the values go up to 600.
TBytes Table(std::size_t nElementSize, std::size_t nElements) {
    TBytes bytes = TableBytes(nElements);
    if (nElementSize == 1)
        return bytes;
    TBytes wide(2 * nElements);
    for (std::size_t i = 0; i < nElements; ++i) {
        const std::size_t value = bytes[i] * std::size_t{19} + i % 2;
        wide[2 * i] = static_cast<std::uint8_t>(value);
        wide[2 * i + 1] = static_cast<std::uint8_t>(value >> 8);
    }
    return wide;
}

std::uint32_t ElementOf(const TBytes& table, std::size_t nElementSize, std::size_t index) {
    return nElementSize == 1 ? table[index] : table[2 * index] + table[2 * index + 1] * 256u;
}

TBytes FileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return TBytes(std::istreambuf_iterator<char>(file), {});
}

// Writes a file with blocks of either size.
void WriteTable(const std::filesystem::path& path, const TBytes& table, std::size_t nElementSize,
                std::uint32_t nBlockElements) {
    CPackedImage image(nBlockElements);
    const auto pack = [&](auto packer) {
        ASSERT_EQ(packer.Pack(table, table.size() / nElementSize), EPackEnd::Packed);
        image.Take(table.size() / nElementSize, packer.Starts(), packer.Blocks(), 0);
    };
    if (nElementSize == 1)
        pack(CLzwTablePacker<std::uint8_t>(nBlockElements, 0));
    else
        pack(CLzwTablePacker<std::uint16_t>(nBlockElements, 0));
    ASSERT_TRUE(image.Save(path, 0));
}

void CheckContents(TBuffer& buffer, const TBytes& table, std::size_t nElementSize) {
    const std::size_t nElements = table.size() / nElementSize;
    ASSERT_EQ(buffer->GetElements(), nElements);
    std::mt19937_64 rng(91);
    for (int i = 0; i < 60; ++i) {
        const std::size_t index = i == 0 ? 0 : i == 1 ? nElements - 1 : reference::Draw(rng, nElements);
        ASSERT_EQ(buffer->Get(index, i % 3 == 0), ElementOf(table, nElementSize, index)) << index;
    }
    EXPECT_THROW(static_cast<void>(buffer->Get(nElements, false)), ChessException);
    CHeardNotifier notifier;
    ASSERT_TRUE(buffer->Unpack(notifier) == table);
    EXPECT_EQ(notifier.m_heard, "");
    std::ostringstream stream;
    ASSERT_TRUE(buffer->UnpackTo(stream));
    ASSERT_TRUE(std::move(stream).str() == std::string(table.begin(), table.end()));
    stream.setstate(std::ios::badbit);
    EXPECT_FALSE(buffer->UnpackTo(stream));
}

TEST(PackedBuffer, BytesOfAFile) {
    const CTemporaryFolder folder;
    const TBuffer writer = MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(3, TBytes{5, 5, 5}, true, 0, 0, 1));
    writer->SetUserWord(0x0a0b0c0d);
    ASSERT_TRUE(writer->Save(folder.Path() / "t", 0x0102));
    const TBytes expected{43,   0,    0,   0, 0,    0,    0,    0x80, // size, plain dictionary
                          3,    0,    0,   0, 0,    0,    0,    0,    // elements
                          0,    0x40, 0,   0, 0x0d, 0x0c, 0x0b, 0x0a, // of a block; user word
                          0x02, 0x01, 0,   0, 0,    0,    0,    0,    // flags
                          40,   0,    0,   0, 0,    0,    0,    0,    // where the block starts
                          0x05, 0x00, 0x02};                          // codes 5 and 256
    EXPECT_EQ(FileBytes(folder.Path() / "t"), expected);
    EXPECT_EQ(writer->GetPackedSize(), 43u + 8);

    const TBuffer reader = MakePackedReader(1, 16384);
    ASSERT_TRUE(reader->Load(folder.Path() / "t", false));
    EXPECT_EQ(reader->GetUserWord(), 0x0a0b0c0du);
    EXPECT_EQ(reader->GetFlags(), 0x0102);
    EXPECT_EQ(reader->GetMemorySize(), 51u);
}

TEST(PackedBuffer, AllInstancesReadFromMemoryAndDisk) {
    const CTemporaryFolder folder;
    const auto path = folder.Path() / "table";
    for (const std::size_t nElementSize : {1, 2})
        for (const std::uint32_t nBlockElements : {8192, 16384})
            for (const std::size_t nElements : {1u, nBlockElements - 1, nBlockElements, nBlockElements + 1, 50000u}) {
                const TBytes table = Table(nElementSize, nElements);
                ASSERT_NO_FATAL_FAILURE(WriteTable(path, table, nElementSize, nBlockElements));
                for (const bool bStream : {false, true}) {
                    TBuffer reader = MakePackedReader(nElementSize, nBlockElements);
                    ASSERT_TRUE(reader->Load(path, bStream));
                    EXPECT_EQ(reader->IsStreaming(), bStream);
                    EXPECT_EQ(reader->GetBlockSize(), nBlockElements);
                    EXPECT_EQ(reader->GetElementSize(), nElementSize);
                    const std::uint64_t size = std::filesystem::file_size(path);
                    const std::size_t nBlocks = (nElements + nBlockElements - 1) / nBlockElements;
                    EXPECT_EQ(reader->GetPackedSize(), size + 8);
                    EXPECT_EQ(reader->GetMemorySize(), bStream ? 8 * nBlocks + 40 : size + 8);
                    ASSERT_NO_FATAL_FAILURE(CheckContents(reader, table, nElementSize));
                    reader->Clear();
                    ASSERT_NO_FATAL_FAILURE(CheckContents(reader, table, nElementSize));
                }
            }
}

TEST(PackedBuffer, WritersPackInMemoryAndFromAStreamAlike) {
    const CTemporaryFolder folder;
    for (const std::size_t nElementSize : {1, 2}) {
        const TBytes table = Table(nElementSize, 100001);
        TBuffer writer = MakePackedWriter(nElementSize);
        ASSERT_TRUE(writer->Compress(100001, table, false, 0, 0, 1));
        ASSERT_NO_FATAL_FAILURE(CheckContents(writer, table, nElementSize));
        ASSERT_TRUE(writer->Save(folder.Path() / "memory", 3));
        std::istringstream source(std::string(table.begin(), table.end()));
        ASSERT_EQ(writer->CompressStream(folder.Path() / "stream", source, 100001, 3), EPackEnd::Packed);
        EXPECT_EQ(FileBytes(folder.Path() / "memory"), FileBytes(folder.Path() / "stream"));
        EXPECT_EQ(writer->GetPackedSize(), 8u) << "empty after a stream";
        EXPECT_EQ(writer->CompressStream(folder.Path() / "stream", source, 1, 3), EPackEnd::StreamFailed)
            << "the source has ended";
        EXPECT_FALSE(std::filesystem::exists(folder.Path() / "stream"));
    }
}

TEST(PackedBuffer, PatternRepeatsItself) {
    for (const std::size_t nPattern : {16384, 32768, 20000, 100}) {
        const TBytes pattern = TableBytes(nPattern);
        TBytes table;
        for (int i = 0; i < 5; ++i)
            table.insert(table.end(), pattern.begin(), pattern.end());
        TBuffer writer = MakePackedWriter(1);
        ASSERT_TRUE(writer->Compress(nPattern, pattern, true, 0, 0, 5));
        ASSERT_NO_FATAL_FAILURE(CheckContents(writer, table, 1));
        const std::uint64_t size = writer->GetPackedSize();
        ASSERT_TRUE(writer->Compress(table.size(), table, true, 0, 0, 1));
        EXPECT_EQ(writer->GetPackedSize(), size) << "repeated or not, the blocks are the same";
    }
}

TEST(PackedBuffer, RoomOfBlocksAndBehindThem) {
    const TBytes table(40000, 7); // a few hundred bytes a block
    TBuffer writer = MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(table.size(), table, true, 5000, 77, 1));
    EXPECT_EQ(writer->GetPackedSize(), 32u + 3 * 8 + 3 * 5000 + 77 + 8);
    ASSERT_NO_FATAL_FAILURE(CheckContents(writer, table, 1));
}

TEST(PackedBuffer, WhatDoesNotBecomeSmallerIsNotPacked) {
    std::mt19937_64 rng(92);
    TBuffer writer = MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(9, TBytes(9, 1), true, 0, 0, 1));
    EXPECT_FALSE(writer->Compress(50000, RandomBytes(rng, 50000), true, 0, 0, 1));
    EXPECT_EQ(writer->GetPackedSize(), 8u);
    EXPECT_EQ(writer->GetElements(), 0u);
    EXPECT_FALSE(MakePackedWriter(2)->Compress(2, TBytes{0, 0, 0, 4}, true, 0, 0, 1)) << "1024 has no code";
}

TEST(PackedBuffer, AStreamTellsWhyItIsNotPacked) {
    const CTemporaryFolder folder;
    const auto pack = [&](const TBytes& table, std::size_t nElementSize) {
        std::istringstream source(std::string(table.begin(), table.end()));
        return MakePackedWriter(nElementSize)
            ->CompressStream(folder.Path() / "table", source, table.size() / nElementSize, 0);
    };
    std::mt19937_64 rng(94);
    TBytes table = RandomBytes(rng, 0x100000 + 10);
    EXPECT_EQ(pack(table, 1), EPackEnd::NotSmaller);
    EXPECT_EQ(pack({0, 0, 0, 4}, 2), EPackEnd::ElementTooLarge);
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "table"));
    table.resize(0x300000);
    EXPECT_EQ(pack(table, 1), EPackEnd::Packed) << "what is left over makes up for the beginning";
    const TBuffer reader = MakePackedReader(1, 16384);
    ASSERT_TRUE(reader->Load(folder.Path() / "table", true));
    std::ostringstream unpacked;
    ASSERT_TRUE(reader->UnpackTo(unpacked));
    EXPECT_TRUE(std::move(unpacked).str() == std::string(table.begin(), table.end()));
}

TEST(PackedBuffer, GreatestElementAndItsIndices) {
    TBytes table = TableBytes(40000);
    table[0] = 200; // flags
    table[20000] = 255;
    for (const std::size_t index : {30000, 5, 17000})
        table[index] = 90;
    TBuffer writer = MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(table.size(), table, true, 0, 0, 1));
    std::set<std::uint64_t> indexes{1};
    EXPECT_EQ(writer->FindMaxAndIndexes(indexes, 10), 90u);
    EXPECT_EQ(indexes, (std::set<std::uint64_t>{5, 17000, 30000}));
    EXPECT_EQ(writer->FindMaxAndIndexes(indexes, 2), 90u);
    EXPECT_EQ(indexes, (std::set<std::uint64_t>{5, 17000}));
    EXPECT_EQ(writer->Get(0, false), 200u) << "the flags are stored like elements";
}

TEST(PackedBuffer, WithoutMatesNoIndexHasTheGreatestElement) {
    TBytes table(20000, 0);
    table[0] = 3; // flags
    table[77] = 255;
    TBuffer writer = MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(table.size(), table, true, 0, 0, 1));
    std::set<std::uint64_t> indexes{1};
    EXPECT_EQ(writer->FindMaxAndIndexes(indexes, 10), 0u);
    EXPECT_TRUE(indexes.empty());
}

TEST(PackedBuffer, CannotBeUpdated) {
    const TBuffer reader = MakePackedReader(1, 16384);
    try {
        reader->Update(0, 0);
        ADD_FAILURE() << "no exception";
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Call to Update for non-update'able instance of CRandomAccessLZWBuffer.");
    }
    EXPECT_EQ(reader->GetPackedSize(), 8u);
    EXPECT_THROW(static_cast<void>(reader->Get(0, false)), ChessException);
}

TEST(PackedBuffer, RefusesFilesOfAnotherForm) {
    const CTemporaryFolder folder;
    const auto path = folder.Path() / "table";
    ASSERT_NO_FATAL_FAILURE(WriteTable(path, TableBytes(30000), 1, 16384));
    const TBytes good = FileBytes(path);
    const auto loads = [&](TBytes bytes, std::uint32_t nBlockElements = 16384) {
        folder.Write("damaged", std::string(bytes.begin(), bytes.end()));
        const TBuffer memory = MakePackedReader(1, nBlockElements), stream = MakePackedReader(1, nBlockElements);
        const bool bLoads = memory->Load(folder.Path() / "damaged", false);
        EXPECT_EQ(stream->Load(folder.Path() / "damaged", true), bLoads);
        EXPECT_EQ(memory->GetElements(), bLoads ? 30000u : 0u);
        return bLoads;
    };
    const auto changed = [&](std::size_t at, std::uint8_t byte) {
        TBytes bytes = good;
        bytes[at] = byte;
        return bytes;
    };
    EXPECT_TRUE(loads(good));
    EXPECT_FALSE(loads(good, 8192)) << "the other instance";
    EXPECT_FALSE(loads({good.begin(), good.end() - 1})) << "cut";
    EXPECT_FALSE(loads({good.begin(), good.begin() + 31}));
    EXPECT_FALSE(loads({}));
    EXPECT_FALSE(loads(changed(1, static_cast<std::uint8_t>(good[1] + 1)))) << "size";
    EXPECT_FALSE(loads(changed(14, 1))) << "more elements than blocks fit";
    EXPECT_FALSE(loads(changed(33, 0xff))) << "first block behind the second";
    EXPECT_FALSE(loads(changed(32, 0))) << "first block in the header";
    EXPECT_FALSE(loads(changed(46, 1))) << "second block behind the end";
    EXPECT_FALSE(MakePackedReader(1, 16384)->Load(folder.Path() / "missing", false));
    EXPECT_FALSE(MakePackedReader(1, 16384)->Load(folder.Path(), false)) << "a folder";
}

TEST(PackedBuffer, DamagedBlocksAreToldOrReadAsSomething) {
    const CTemporaryFolder folder;
    const auto path = folder.Path() / "table";
    ASSERT_NO_FATAL_FAILURE(WriteTable(path, Table(2, 40000), 2, 16384));
    const TBytes good = FileBytes(path);
    std::mt19937_64 rng(93);
    int nTold = 0, nRead = 0;
    for (int i = 0; i < 80; ++i) {
        TBytes bytes = good;
        const std::size_t at = bytes.size() - 1 - reference::Draw(rng, (bytes.size() - 56) / (1 + i % 40));
        bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ 1u << reference::Draw(rng, 8));
        folder.Write("damaged", std::string(bytes.begin(), bytes.end()));
        const TBuffer reader = MakePackedReader(2, 16384);
        ASSERT_TRUE(reader->Load(folder.Path() / "damaged", i % 2 == 0));
        CHeardNotifier notifier;
        const bool bRead = reader->Unpack(notifier).has_value();
        EXPECT_EQ(notifier.m_heard, bRead ? "" : "Error: Error unpacking LZW data");
        (bRead ? nRead : nTold) += 1;
        if (!bRead) {
            std::set<std::uint64_t> indexes;
            EXPECT_THROW(static_cast<void>(reader->FindMaxAndIndexes(indexes, 1)), ChessException);
            std::ostringstream stream;
            EXPECT_THROW(static_cast<void>(reader->UnpackTo(stream)), ChessException);
        }
    }
    EXPECT_GT(nTold, 20);
    EXPECT_GT(nRead, 2);
}

// More threads than slots, each with its own places, in memory and on disk.
TEST(PackedBuffer, ManyThreadsReadAtOnce) {
    const CTemporaryFolder folder;
    const auto path = folder.Path() / "table";
    const TBytes table = TableBytes(100000);
    ASSERT_NO_FATAL_FAILURE(WriteTable(path, table, 1, 16384));
    for (const bool bStream : {false, true}) {
        const TBuffer reader = MakePackedReader(1, 16384);
        ASSERT_TRUE(reader->Load(path, bStream));
        std::atomic<int> nWrong{0};
        std::vector<std::thread> threads;
        for (std::uint64_t seed = 0; seed < 12; ++seed)
            threads.emplace_back([&, seed] {
                std::mt19937_64 rng(seed);
                for (int i = 0; i < 100; ++i) {
                    const std::size_t index = reference::Draw(rng, table.size());
                    if (reader->Get(index, false) != table[index])
                        ++nWrong;
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(nWrong, 0);
    }
}

} // namespace
} // namespace quillon
