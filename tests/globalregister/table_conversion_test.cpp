#include "globalregister/table_conversion.h"

#include "globalregister/disk_access.h"
#include "globalregister/table_files.h"
#include "platform/lowered_limit.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

class TableConversion : public testing::Test {
  protected:
    TableConversion() { WriteElements(Table(), m_elements); }

    [[nodiscard]] fs::path Table(const std::string& extension = "") const {
        return m_folder.Path() / ("R.precalc" + extension);
    }
    [[nodiscard]] std::size_t Files() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(m_folder.Path()), {}));
    }

    CTemporaryFolder m_folder;
    const TElements m_elements = ThreeMenElements("R");
};

constexpr ETableForm kPackedForms[] = {ETableForm::Lz4, ETableForm::Lzw, ETableForm::Archive, ETableForm::Simple};

TEST_F(TableConversion, ThereAndBack) {
    for (const ETableForm form : kPackedForms) {
        const fs::path packed = NameInForm(Table(), form);
        PackTableFile(Table(), form, packed, 2);
        fs::remove(Table());
        UnpackTableFile(packed, Table());
        EXPECT_EQ(ReadWholeFile(Table()), m_elements) << packed;
        fs::remove(packed);
    }
    EXPECT_TRUE(fs::exists(Table(".packed.lz4.log")));
    EXPECT_EQ(Files(), 2u) << "table and log";
}

TEST_F(TableConversion, AFullDiskLeavesEverythingAsItWas) {
    for (const ETableForm form : kPackedForms) {
        const fs::path packed = NameInForm(Table(), form);
        PackTableFile(Table(), form, packed, 2);
        const auto before = ReadWholeFile(packed);
        const std::size_t nFiles = Files();
        {
            const CSmallDisk small;
            EXPECT_THROW(PackTableFile(Table(), form, packed, 2), CDiskFailure) << packed;
            EXPECT_THROW(UnpackTableFile(packed, Table()), CDiskFailure) << packed;
        }
        EXPECT_EQ(ReadWholeFile(packed), before) << packed;
        EXPECT_EQ(ReadWholeFile(Table()), m_elements) << packed;
        EXPECT_EQ(Files(), nFiles) << packed;
        fs::remove(packed);
    }
}

TEST_F(TableConversion, DamagedFilesLeaveNothingBehind) {
    for (const ETableForm form : kPackedForms) {
        const fs::path packed = NameInForm(Table(), form);
        PackTableFile(Table(), form, packed, 2);
        TElements bytes = ReadWholeFile(packed).value();
        std::fill(bytes.begin() + 100, bytes.end(), std::uint8_t{255});
        WriteElements(packed, bytes);
        const std::size_t nFiles = Files();
        try {
            UnpackTableFile(packed, Table());
            ADD_FAILURE() << packed;
        } catch (const CDiskFailure& failure) {
            ADD_FAILURE() << failure.what();
        } catch (const ChessException&) { // the content is to blame
        }
        EXPECT_EQ(ReadWholeFile(Table()), m_elements) << packed;
        EXPECT_EQ(Files(), nFiles) << packed;
        fs::remove(packed);
    }
}

// ".NEW" is that of the next state while a table is made; the others a user may have given.
TEST_F(TableConversion, NamesOfOthersAreLeftAlone) {
    const TElements foreign{1, 2, 3};
    for (const ETableForm form : kPackedForms) {
        const fs::path packed = NameInForm(Table(), form);
        for (const char* const extension : {".NEW", ".unpacked"})
            for (const fs::path& path : {Table(), packed})
                WriteElements(path.string() + extension, foreign);
        PackTableFile(Table(), form, packed, 1);
        UnpackTableFile(packed, Table());
        for (const char* const extension : {".NEW", ".unpacked"})
            for (const fs::path& path : {Table(), packed})
                EXPECT_EQ(ReadWholeFile(path.string() + extension), foreign) << path << extension;
    }
}

} // namespace
} // namespace quillon
