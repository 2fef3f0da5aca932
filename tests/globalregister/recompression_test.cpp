#include "globalregister/recompression.h"

#include "globalregister/table_conversion.h"
#include "globalregister/table_files.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

class Recompression : public testing::Test {
  protected:
    Recompression() {
        m_data.data.assign(5000, 7);
        m_home.Write("QRr_.precalc.lz4", "x");
        m_home.Write("QRr_.precalc", "x");
    }
    fs::path Name(const char* extension) const { return m_home.Path() / ("QRr_.precalc" + std::string(extension)); }
    void Offer(int nLevel, EPrecalcKind kind, std::vector<bool> answers) {
        m_options.m_nAskForGlobalRegisterRecompression = nLevel;
        m_boxes = CHeardBoxes();
        m_boxes.m_answers = std::move(answers);
        RecompressOffer(m_data, Name(kind == EPrecalcKind::Lz4 ? ".lz4" : ""), kind, m_options, m_boxes);
    }

    CTemporaryFolder m_home;
    TPrecalcOptions m_options;
    CHeardBoxes m_boxes;
    TGlobalRegister m_data{"QRr"};
};

using TTexts = std::vector<std::string>;

TEST_F(Recompression, OffersByLevelKindAndType) {
    const std::string simple = "Should prepare a compressed version (simple for random access) of file ";
    const std::string lzw = "Should prepare a compressed version (LZW for random access) of file ";
    Offer(0, EPrecalcKind::Lz4, {});
    EXPECT_EQ(m_boxes.m_asked, TTexts{});
    Offer(1, EPrecalcKind::Lz4, {});
    EXPECT_EQ(m_boxes.m_asked, TTexts{simple + Name(".lz4").string()});
    Offer(2, EPrecalcKind::Lz4, {});
    EXPECT_EQ(m_boxes.m_asked, (TTexts{simple + Name(".lz4").string(), lzw + Name(".lz4").string()}));
    Offer(2, EPrecalcKind::Plain, {});
    EXPECT_EQ(m_boxes.m_asked, TTexts{lzw + Name("").string()});
    m_home.Write("QRr_.precalc.packed.lzw", "x");
    Offer(2, EPrecalcKind::Plain, {});
    EXPECT_EQ(m_boxes.m_asked, TTexts{}) << "there is one";
    TGlobalRegister two("QR");
    two.data.assign(100, 7);
    CHeardBoxes boxes;
    RecompressOffer(two, m_home.Path() / "QR.precalc.lz4", EPrecalcKind::Lz4, m_options, boxes);
    EXPECT_EQ(boxes.m_asked, TTexts{}) << "small tables stay as they are";
    EXPECT_EQ(boxes.m_told, TTexts{});
}

TEST_F(Recompression, SimpleFormIsWrittenAfterItsSavingWasShown) {
    Offer(1, EPrecalcKind::Lz4, {true, false});
    EXPECT_EQ(m_boxes.m_asked.back(), "Possible mem.save ratio = 0.00%. Continue?");
    EXPECT_FALSE(fs::exists(Name(".packed.lz4")));
    Offer(1, EPrecalcKind::Lz4, {true, true});
    EXPECT_EQ(m_boxes.m_told, TTexts{"Information: Done"});
    EXPECT_EQ(FormOf(Name(".packed.lz4")), ETableForm::Simple);
    EXPECT_EQ(SavingQuestion(1234, 10'000), "Possible mem.save ratio = 12.34%. Continue?");
}

TEST_F(Recompression, AnArchiveIsWrittenWithItsLog) {
    const fs::path table = m_home.Path() / "R.precalc", archive = m_home.Path() / "R.precalc.packed.lz4";
    const TElements elements = ThreeMenElements("R");
    WriteElements(table, elements);
    TGlobalRegister rook("R");
    rook.diskStream.open(table, std::ios::binary);
    m_options.m_nAskForGlobalRegisterRecompression = 3;
    m_boxes.m_answers = {true};
    RecompressOffer(rook, table, EPrecalcKind::Plain, m_options, m_boxes);
    EXPECT_EQ(m_boxes.m_asked,
              TTexts{"Should prepare a compressed version (LZ4e for random access) of file " + table.string()});
    EXPECT_EQ(m_boxes.m_told, TTexts{"Information: Done"});
    const TElements log = ReadWholeFile(archive.string() + ".log").value();
    EXPECT_EQ(std::string(log.begin(), log.end())
                  .find("Compressed bucket 0. Packed 40960 of 40960 (100%). Compression ratio "),
              0u);
    ASSERT_EQ(FormOf(archive), ETableForm::Archive);
    fs::remove(table);
    UnpackTableFile(archive, table);
    EXPECT_EQ(ReadWholeFile(table), elements);
}

TEST_F(Recompression, FailuresAreTold) {
    m_data.data[9] = 200; // has no simple form
    Offer(1, EPrecalcKind::Lz4, {true, true});
    EXPECT_EQ(m_boxes.m_told, TTexts{"Error: An error occurred."});
    Offer(2, EPrecalcKind::Plain, {true}); // far fewer elements than the type has
    EXPECT_EQ(m_boxes.m_told, TTexts{"Error: An error occurred."});
    EXPECT_FALSE(fs::exists(Name(".packed.lzw")));
    m_data.data.clear();
    m_data.diskStream.open(Name(""), std::ios::binary);
    Offer(3, EPrecalcKind::Plain, {false, true});
    EXPECT_EQ(m_boxes.m_asked.back(),
              "Should prepare a compressed version (LZ4e for random access) of file " + Name("").string());
    EXPECT_EQ(m_boxes.m_told, TTexts{"Error: An error occurred."});
    EXPECT_FALSE(fs::exists(Name(".packed.lz4")));
}

} // namespace
} // namespace quillon
