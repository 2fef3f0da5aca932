#include "globalregister/precalc_file_name.h"

#include <gtest/gtest.h>

#include "platform/temporary_folder.h"

namespace quillon {
namespace {

std::string NameOf(const char* type, const TPrecalcFolders& folders, const TPrecalcFile& file,
                   const std::filesystem::path& explicitPath = {}) {
    return GetFileName(TPositionIndexing(type), folders, file, explicitPath).generic_string();
}

TEST(PrecalcFileName, LowerCaseLettersAreMarked) {
    EXPECT_EQ(PrecalcBaseName("QRr"), "QRr_");
    EXPECT_EQ(PrecalcBaseName("Pp"), "Pp_");
    EXPECT_EQ(PrecalcBaseName("qrb"), "q_r_b_");
    EXPECT_EQ(PrecalcBaseName(""), "");
    EXPECT_EQ(PrecalcBaseName("KQkp(b3)+Pa2b3+pg4"), "KQk_p_(b3)+Pa2b3+p_g4");
    EXPECT_EQ(PrecalcBaseName("Kk+ra2+bc3"), "Kk_+r_a2+b_c3");
}

TEST(PrecalcFileName, KindsAndDetails) {
    const TPrecalcFolders folders{"home", ""};
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::Plain}), "home/Precalc/QRr_.precalc");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::Lz4}), "home/Precalc/QRr_.precalc.lz4");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::PackedLzw}), "home/Precalc/QRr_.precalc.packed.lzw");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::PackedLz4}), "home/Precalc/QRr_.precalc.packed.lz4");
    EXPECT_EQ(NameOf("QRrb", folders, {EPrecalcKind::Plain, true}), "home/Precalc/QRr_b_.precalc.details");
    EXPECT_EQ(NameOf("Q", folders, {EPrecalcKind::Plain, false, true}), "") << "no second root";
}

TEST(PrecalcFileName, SubFoldersAreTakenWhereTheyExist) {
    const CTemporaryFolder home, second;
    const TPrecalcFolders folders{home.Path(), second.Path()};
    home.Write("Precalc/4pieces-pawns/x", "");
    second.Write("5pieces+pawns/x", "");
    const auto root = home.Path().generic_string(), other = second.Path().generic_string();
    EXPECT_EQ(NameOf("Qr", folders, {}), root + "/Precalc/4pieces-pawns/Qr_.precalc");
    EXPECT_EQ(NameOf("Qp", folders, {}), root + "/Precalc/Qp_.precalc");
    EXPECT_EQ(NameOf("QRp", folders, {EPrecalcKind::Plain, false, true}), other + "/5pieces+pawns/QRp_.precalc");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::Plain, false, true}), other + "/QRr_.precalc");
}

TEST(PrecalcFileName, CustomTypesHaveAFolderOfTheirOwn) {
    const CTemporaryFolder home;
    const TPrecalcFolders folders{home.Path(), "second"};
    home.Write("CustomPrecalc/4pieces-pawns/x", "");
    EXPECT_EQ(NameOf("KQk+Pa2", folders, {EPrecalcKind::PackedLzw}),
              home.Path().generic_string() + "/CustomPrecalc/KQk_+Pa2.precalc.packed.lzw");
    EXPECT_EQ(NameOf("KQk+Pa2", folders, {EPrecalcKind::Plain, false, true}), "");
}

TEST(PrecalcFileName, ChosenFileIsOfOneKind) {
    const TPrecalcFolders folders{"home", "second"};
    const char* const chosen = "data/x.precalc.packed.lzw";
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::PackedLzw}, chosen), chosen);
    for (const EPrecalcKind kind : {EPrecalcKind::Plain, EPrecalcKind::Lz4, EPrecalcKind::PackedLz4})
        EXPECT_EQ(NameOf("QRr", folders, {kind}, chosen), std::string(chosen) + "_SKIPTHIS");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::PackedLzw, false, true}, chosen), "") << "it is in one place";
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::Plain}, "data/x.precalc"), "data/x.precalc");
    EXPECT_EQ(NameOf("QRrb", folders, {EPrecalcKind::Plain, true}, "data/x.precalc"), "data/x.precalc.details");
    EXPECT_EQ(NameOf("QRr", folders, {EPrecalcKind::Lz4}, "data/x.precalc.packed.lz4"),
              "data/x.precalc.packed.lz4_SKIPTHIS")
        << "the longer extension counts";
}

TEST(PrecalcFileName, KindAndTypeOfAFile) {
    EXPECT_EQ(KindOfFile("a/Q.precalc"), EPrecalcKind::Plain);
    EXPECT_EQ(KindOfFile("a/Q.precalc.lz4"), EPrecalcKind::Lz4);
    EXPECT_EQ(KindOfFile("a/Q.precalc.packed.lzw"), EPrecalcKind::PackedLzw);
    EXPECT_EQ(KindOfFile("a/Q.precalc.packed.lz4"), EPrecalcKind::PackedLz4);
    for (const char* type : {"QRr", "q", "PPp", "KQkp(b3)+Pa2b3+pg4", ""})
        for (const EPrecalcKind kind : kPrecalcKinds)
            for (const bool bDetails : {false, true})
                EXPECT_EQ(TypeOfFile(NameOf(type, {"home", ""}, {kind, bDetails})), type);
    for (const char* name : {"QRr.precalc", "Q_R.precalc", "RQ.precalc", "Q", "readme.txt", "Q.precalc.iter"})
        EXPECT_EQ(TypeOfFile(name), std::nullopt) << name;
}

} // namespace
} // namespace quillon
