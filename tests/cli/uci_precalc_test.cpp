// Precalculated data behind `quillon uci`.

#include <gtest/gtest.h>

#include "cli/uci_client.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TLines = std::vector<std::string>;

// Rook against king, mate in fourteen.
constexpr const char* kFarMate = "fen 8/8/8/3k4/8/8/8/K3R3 w - - 0 1";
constexpr const char* kFarMateByBlack = "fen k3r3/8/8/8/3K4/8/8/8 b - - 0 1";
constexpr const char* kMateInTwo = "fen 8/8/8/8/8/2K5/7R/k7 w - - 0 1"; // in one the data are not asked
constexpr const char* kDeepEnough = "go mate 11";                       // for the data to be loaded

class UciPrecalc : public ::testing::Test {
  protected:
    UciPrecalc() {
        WriteElements(m_true.Path() / "Precalc/R.precalc", ThreeMenElements("R"));
        // Where these answer, nothing is a mate.
        WriteElements(m_silent.Path() / "Precalc/R.precalc", TElements(TPositionIndexing("R").GetSize(), 0));
    }

    [[nodiscard]] std::string TrueData() const { return m_true.Path().string(); }
    [[nodiscard]] std::string DataWithoutMates() const { return m_silent.Path().string(); }

    CTemporaryFolder m_true, m_silent;
};

bool Mates(CUciClient& client) { return !MateLine(client.Ask(kMateInTwo, kDeepEnough)).empty(); }

TEST_F(UciPrecalc, AnswerEitherSideWithoutASearch) {
    CUciClient client({"--precalc", TrueData()});
    for (const char* position : {kFarMate, kFarMateByBlack}) {
        const TLines mate = client.Ask(position, "go mate 14");
        EXPECT_EQ(WordBehind(MateLine(mate), "mate"), "14");
        EXPECT_EQ(WordBehind(MateLine(mate), "nodes"), "0");
        EXPECT_EQ(MovesOfLine(MateLine(mate)).size(), 27u);
        EXPECT_EQ(Judge(std::string(position).substr(4), MovesOfLine(MateLine(mate))), "mate");
        EXPECT_EQ(Count(client.Ask(position, "go mate 13"), "info string no mate in 13"), 1);
    }
}

TEST_F(UciPrecalc, OptionsTellWhatTheCommandLineSays) {
    CUciClient named({"--precalc", TrueData(), "--precalc-memory", "17"});
    named.Send("uci");
    const TLines options = named.Until("uciok");
    EXPECT_EQ(First(options, "option name PrecalcPath "), "option name PrecalcPath type string default " + TrueData());
    EXPECT_EQ(First(options, "option name PrecalcMemory "),
              "option name PrecalcMemory type spin default 17 min 0 max 1048576");
    CUciClient plain;
    plain.Send("uci");
    EXPECT_EQ(First(plain.Until("uciok"), "option name PrecalcPath "),
              "option name PrecalcPath type string default <empty>");
}

/// An interface goes back to what it was told first.
TEST_F(UciPrecalc, DefaultsStayThoseOfTheCommandLine) {
    CUciClient client({"--precalc", TrueData(), "--precalc-memory", "17"});
    client.Send("uci");
    const TLines before = client.Until("uciok");
    client.Send("setoption name PrecalcPath value " + DataWithoutMates());
    client.Send("setoption name PrecalcMemory value 3");
    client.Send("uci");
    EXPECT_EQ(client.Until("uciok"), before);
}

TEST_F(UciPrecalc, TheSameFolderAgainIsNotReadAgain) {
    CUciClient client({"--precalc", DataWithoutMates()});
    EXPECT_FALSE(Mates(client));
    std::filesystem::remove(m_silent.Path() / "Precalc/R.precalc");
    client.Send("setoption name PrecalcPath value " + DataWithoutMates());
    EXPECT_FALSE(Mates(client)) << "what is loaded stays";
    client.Send("setoption name PrecalcPath value " + TrueData());
    client.Send("setoption name PrecalcPath value " + DataWithoutMates());
    EXPECT_FALSE(Mates(client)) << "nothing was searched in between";
    client.Send("setoption name PrecalcPath value " + TrueData());
    EXPECT_TRUE(Mates(client));
    client.Send("setoption name PrecalcPath value " + DataWithoutMates());
    EXPECT_TRUE(Mates(client)) << "now the folder is read, and nothing is left there";
}

TEST_F(UciPrecalc, AFolderMayHaveSeveralBlanks) {
    const std::string folder = (m_silent.Path() / "My  Tables").string();
    WriteElements(folder + "/Precalc/R.precalc", TElements(TPositionIndexing("R").GetSize(), 0));
    CUciClient client;
    client.Send("setoption name PrecalcPath value " + folder + " ");
    EXPECT_FALSE(Mates(client));
}

TEST_F(UciPrecalc, OptionsHoldFromTheNextSearchOn) {
    CUciClient client;
    EXPECT_TRUE(Mates(client)) << "no data";
    client.Send("setoption name PrecalcPath value " + DataWithoutMates());
    EXPECT_FALSE(Mates(client));
    client.Send("setoption name precalcmemory value 0");
    EXPECT_TRUE(Mates(client)) << "no memory for them";
    client.Send("setoption name PrecalcMemory value 5");
    EXPECT_FALSE(Mates(client));
    client.Send("setoption name PrecalcPath value " + TrueData());
    EXPECT_TRUE(Mates(client));
    client.Send("setoption name PrecalcPath value <empty>");
    EXPECT_EQ(Count(client.Ask(kFarMate, "go mate 13 movetime 50"), "info string no mate"), 0) << "no data again";
}

TEST_F(UciPrecalc, AFolderThatIsNoneChangesNothing) {
    CUciClient client({"--precalc", DataWithoutMates()});
    client.Send("setoption name PrecalcPath value /no/such/folder");
    EXPECT_EQ(client.Until("info string ").back(), "info string no folder with precalculated data: /no/such/folder");
    EXPECT_FALSE(Mates(client));
    const TProgramResult refused = RunQuillon({"uci", "--precalc", "/no/such/folder"}, {"uci\n", ""});
    EXPECT_EQ(refused.m_nStatus, 2);
    EXPECT_EQ(refused.m_out, "");
    EXPECT_EQ(refused.m_err, "quillon: no folder with precalculated data: /no/such/folder\n");
}

TEST_F(UciPrecalc, DataStayPackedWhereMemoryIsShort) {
    m_silent.Write("options.ini", "[chess]\nUseDataPackedForRandomAccess=0\n");
    WriteLzw(m_silent.Path() / "Precalc/RR.precalc.packed.lzw", TElements(TPositionIndexing("RR").GetSize(), 0));
    CUciClient client({"--work-dir", DataWithoutMates(), "--precalc-memory", "1"});
    const TLines lines = client.Ask("fen 8/8/8/3k4/8/8/8/KRR5 w - - 0 1", kDeepEnough); // in truth a short mate
    EXPECT_EQ(Count(lines, "info string no mate in 11"), 1);
}

TEST_F(UciPrecalc, DamagedFilesAreToldOf) {
    TElements cut = ThreeMenElements("R");
    cut.pop_back();
    WriteElements(m_true.Path() / "Precalc/R.precalc", cut);
    CUciClient client({"--precalc", TrueData()});
    const TLines lines = client.Ask(kMateInTwo, kDeepEnough);
    EXPECT_GE(Count(lines, "info string Data file size"), 1);
    EXPECT_EQ(Count(lines, "bestmove "), 1);
    EXPECT_FALSE(MateLine(lines).empty());
}

} // namespace
} // namespace quillon
