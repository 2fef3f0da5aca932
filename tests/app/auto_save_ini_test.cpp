#include "app/auto_save_ini.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "core/fen.h"
#include "library/problem_file.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

constexpr const char* kPlacement = "8/8/8/8/8/1K5Q/1p6/kn6";

TAutoSaveIni Example() {
    TAutoSaveIni ini;
    ini.m_FEN = "8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1";
    ini.m_nStipulation = 12;
    ini.m_description = "A. Composer, 1900";
    ini.m_bAllSolutions = true;
    ini.m_nMaxMemRatioForPrecalculatedData = 30;
    ini.m_nMaxMemRatioPerProblem = 45;
    ini.m_processId = 4711;
    ini.m_processFileName = "/usr/bin/quillon-workbench";
    return ini;
}

class AutoSaveIni : public ::testing::Test {
  protected:
    [[nodiscard]] std::filesystem::path Path() const { return m_folder.Path() / "AutoSave.tmpReg.ini"; }

    [[nodiscard]] std::string Written(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(m_folder.Path() / name, std::ios::binary).rdbuf();
        return text.str();
    }

    CTemporaryFolder m_folder;
};

TEST_F(AutoSaveIni, StandsBesideTheRegister) {
    EXPECT_EQ(AutoSaveIniPath("Saved/AutoSave.tmpReg"), "Saved/AutoSave.tmpReg.ini");
    EXPECT_EQ(AutoSaveProblemPath("Saved/AutoSave.tmpReg"), "Saved/AutoSave.cp");
}

TEST_F(AutoSaveIni, IsWrittenInItsOrder) {
    m_folder.Write("AutoSave.tmpReg.ini", "[AutoSave]\nProcessId=1\nFEN=old\n[x]\n");
    ASSERT_FALSE(WriteAutoSaveIni(Path(), Example()));
    EXPECT_EQ(Written("AutoSave.tmpReg.ini"), "[AutoSave]\n"
                                              "FEN=8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1\n"
                                              "Stipulation=12\n"
                                              "Description=A. Composer, 1900\n"
                                              "HybridBruteForce=0\n"
                                              "AllSolutions=1\n"
                                              "MaxMemRatioForPrecalculatedData=30\n"
                                              "MaxMemRatioPerProblem=45\n"
                                              "ProcessId=4711\n"
                                              "ProcessFileName=/usr/bin/quillon-workbench\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.Path()), {}), 1) << "nothing else is left";
}

TEST_F(AutoSaveIni, IsReadBack) {
    TAutoSaveIni ini = Example();
    for (const char* const description : {"", "\"quoted\"", " blanks ", "a=b ; c [d]", "\xC5\xBB\xC3\xB3\xC5\x82w"}) {
        ini.m_description = description;
        ini.m_bHybridBruteForce = !ini.m_bHybridBruteForce;
        ASSERT_FALSE(WriteAutoSaveIni(Path(), ini));
        EXPECT_EQ(ReadAutoSaveIni(Path()), ini) << description;
    }
    ini.m_description = "two\nlines";
    ASSERT_FALSE(WriteAutoSaveIni(Path(), ini));
    EXPECT_EQ(ReadAutoSaveIni(Path()).m_description, "two lines");
}

TEST_F(AutoSaveIni, WithoutAFileNobodyHasSigned) {
    EXPECT_EQ(ReadAutoSaveIni(Path()), TAutoSaveIni());
    EXPECT_EQ(ReadAutoSaveIni(Path()).m_processId, std::nullopt);
    for (const char* const text : {"", "[AutoSave]", "[AutoSave]\nProcessId=", "[other]\nProcessId=5\n"}) {
        m_folder.Write("AutoSave.tmpReg.ini", text);
        EXPECT_EQ(ReadAutoSaveIni(Path()), TAutoSaveIni()) << text;
    }
}

TEST_F(AutoSaveIni, OddRatiosAreHeldWithinTheMemory) {
    m_folder.Write("AutoSave.tmpReg.ini",
                   "[autosave]\nMaxMemRatioPerProblem=900\nMaxMemRatioForPrecalculatedData=-1\n");
    EXPECT_EQ(ReadAutoSaveIni(Path()).m_nMaxMemRatioPerProblem, 100);
    EXPECT_EQ(ReadAutoSaveIni(Path()).m_nMaxMemRatioForPrecalculatedData, 0);
}

TEST_F(AutoSaveIni, IsSignedAnewByWhoGoesOn) {
    ASSERT_FALSE(WriteAutoSaveIni(Path(), Example()));
    ASSERT_FALSE(SignAutoSaveIni(Path(), 99, "other"));
    TAutoSaveIni expected = Example();
    expected.m_processId = 99;
    expected.m_processFileName = "other";
    EXPECT_EQ(ReadAutoSaveIni(Path()), expected);
}

TEST_F(AutoSaveIni, ThatCannotBeWrittenIsReported) {
    EXPECT_TRUE(WriteAutoSaveIni(m_folder.Path() / "missing" / "AutoSave.tmpReg.ini", Example()));
    EXPECT_TRUE(WriteAutoSaveProblem(m_folder.Path() / "missing" / "AutoSave.cp", Example()));
}

TEST_F(AutoSaveIni, TheProblemIsAFileOfOneProblem) {
    TAutoSaveIni ini = Example();
    EXPECT_EQ(AutoSaveProblemText(ini), "1 #12 AllSolutions\n{\n  FEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n");
    ini.m_bHybridBruteForce = true;
    EXPECT_EQ(AutoSaveProblemText(ini), "1 #12 HybridBruteForce\n{\n  FEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n");
    ini.m_bHybridBruteForce = ini.m_bAllSolutions = false;
    EXPECT_EQ(AutoSaveProblemText(ini), "1 #12 \n{\n  FEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n");
}

TEST_F(AutoSaveIni, TheProblemIsReadAsEveryLibrary) {
    const struct {
        bool m_bHybrid;
        bool m_bAll;
        ProblemFlags m_flags;
    } rows[] = {{false, false, 0}, {false, true, kFlagAllSolutions}, {true, false, kFlagHybridBruteForce}};
    for (const auto& row : rows) {
        TAutoSaveIni ini = Example();
        ini.m_bHybridBruteForce = row.m_bHybrid;
        ini.m_bAllSolutions = row.m_bAll;
        const std::filesystem::path path = m_folder.Path() / "AutoSave.cp";
        ASSERT_FALSE(WriteAutoSaveProblem(path, ini));
        TProblemMap library;
        ReadProblemFile(path, library, [](const ProblemFileError& error) { ADD_FAILURE() << error.what(); });
        ASSERT_EQ(library.size(), 1u);
        const ChessProblem& problem = *library.at(1);
        EXPECT_EQ(StipulationMoves(problem), 12);
        EXPECT_EQ(problem.flags & (kFlagAllSolutions | kFlagHybridBruteForce), row.m_flags);
        EXPECT_EQ(WriteFEN(*problem.originalPosition, false), kPlacement);
    }
}

} // namespace
} // namespace quillon
