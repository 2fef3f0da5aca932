// Bit data: lengths of mates one after the other.

#include "globalregister/generator/generate.h"

#include <gtest/gtest.h>

#include "globalregister/generate_fixture.h"
#include "globalregister/precalc_format.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

/// Two bits an index, and lengths beside them. Black's knights need no other table, for nobody mates: what costs time
/// with six men is the levels, and none is run.
class GenerateBitData : public GenerateTables {
  protected:
    GenerateBitData() : m_numbered(kType) {
        EXPECT_TRUE(ApplyFlags(m_numbered, kFlagCombinations));
        m_options.m_existing = EExistingTable::Continue;
        fs::create_directories(Plain(kType).parent_path());
    }
    /// All zeros but for the flags, and no more on the disk than that.
    static void WriteZeros(const fs::path& file, std::uint64_t nBytes) {
        WriteElements(file, {kFlagCombinations});
        fs::resize_file(file, nBytes);
    }
    [[nodiscard]] std::uint64_t BytesOfBits() const { return m_numbered.GetSize() / kPairsOfAByte; }
    [[nodiscard]] fs::path Details() const { return Beside(kType, ".details"); }

    static constexpr const char* kType = "nnnn";
    TPositionIndexing m_numbered;
};

TEST_F(GenerateBitData, LengthsThatCannotBeMadeAreToldAsAFullDisk) {
    ASSERT_TRUE(UsesBitData(m_numbered));
    WriteElements((Details() += ".NEW") / "x", {1}); // a folder that does not go
    const TGenerateReport report = Make(kType);
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_TRUE(report.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: Cannot create file (not enough disk space?)"});
    EXPECT_FALSE(fs::exists(Plain(kType)));
}

TEST_F(GenerateBitData, ARunIsNotTakenUpWithLengthsThatAreNotItsOwn) {
    WriteZeros(Plain(kType), BytesOfBits());
    WriteElements(Beside(kType, ".iter"), {3, 0, 0, 0});
    const auto expectRefused = [this](const char* what) {
        const TGenerateReport report = Make(kType);
        EXPECT_EQ(report.m_status, EGenerateStatus::Failed) << what;
        EXPECT_FALSE(report.m_bSystemFailed) << what;
        EXPECT_EQ(m_host.m_boxes.m_told, TTexts{"Error: Error reading file " + Details().string()}) << what;
    };
    expectRefused("none");
    WriteZeros(Details(), m_numbered.GetSize() - 1);
    expectRefused("of another size");
}

/// What has been packed is looked for where it would be put: LZW of the lengths, LZ4 of the bits.
TEST_F(GenerateBitData, AFinishedTableHasItsPackedFormsUnderTheNameOfTheTable) {
    WriteZeros(Plain(kType), BytesOfBits());
    WriteZeros(Details(), m_numbered.GetSize());
    for (const auto& [form, extension] :
         {std::pair{ETableForm::Lzw, ".packed.lzw"}, std::pair{ETableForm::Lz4, ".lz4"}}) {
        WriteElements(Beside(kType, extension), {1});
        m_options.m_packForm = form;
        const TGenerateReport report = Make(kType);
        EXPECT_EQ(report.m_status, EGenerateStatus::Done) << extension;
        EXPECT_EQ(report.m_file, Plain(kType));
        EXPECT_EQ(report.m_bPacked, true) << extension;
        EXPECT_EQ(ReadWholeFile(Beside(kType, extension)), TElements{1}) << "it was there";
        fs::remove(Beside(kType, extension));
        EXPECT_EQ(std::distance(fs::directory_iterator(Plain(kType).parent_path()), {}), 2) << "nothing else was made";
    }
}

} // namespace
} // namespace quillon
