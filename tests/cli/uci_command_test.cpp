// `quillon uci` as an interface meets it.

#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <thread>

#include "app/version.h"
#include "cli/uci_client.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using namespace std::chrono_literals;
using TLines = std::vector<std::string>;
using TClock = std::chrono::steady_clock;

constexpr const char* kInThree = "8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1";
constexpr const char* kInThreeByBlack = "KN6/1P6/1k5q/8/8/8/8/8 b - - 0 1";
constexpr const char* kMated = "R5k1/5ppp/8/8/8/8/8/4K3 b - - 0 1";
constexpr const char* kStalemate = "k7/2Q5/8/8/8/8/8/4K3 b - - 0 1";

// What the searches stand against: load, sanitizers. The program itself answers within a tenth of a second.
constexpr auto kPromptly = 2s;

template <class TAction> TClock::duration TimeOf(TAction action) {
    const TClock::time_point start = TClock::now();
    action();
    return TClock::now() - start;
}

std::string BestMove(const TLines& lines) { return WordBehind(Last(lines, "bestmove "), "bestmove"); }

TEST(UciHandshake, TellsNameOptionsAndReadiness) {
    CUciClient client;
    client.Send("uci");
    const TLines lines = client.Until("uciok");
    EXPECT_EQ(First(lines, "id name "), "id name Quillon " + std::string(kVersion));
    EXPECT_EQ(Count(lines, "id author "), 1);
    for (const char* name : {"Threads type spin", "Hash type spin", "MultiPV type spin", "Ponder type check"})
        EXPECT_EQ(Count(lines, std::string("option name ") + name), 1) << name;
    client.Send("isready");
    EXPECT_EQ(client.Until("readyok"), TLines{"readyok"});
    client.Send("quit");
    EXPECT_EQ(client.Finish().m_nStatus, 0);
}

TEST(UciHandshake, CaseBlanksAndLineEndsDoNotMatter) {
    CUciClient client;
    client.SendRaw("\r\n\n   UCI \t \r\n");
    EXPECT_EQ(client.Until("uciok").back(), "uciok");
    client.SendRaw("\tIsReady\r\n");
    EXPECT_EQ(client.Until("readyok"), TLines{"readyok"});
    client.SendRaw(std::string("  position   FEN  ") + kInThree + "\r\n go   MATE  3 \r\n");
    EXPECT_EQ(BestMove(client.Until("bestmove")), "b3c2");
}

TEST(UciHandshake, EndOfInputEndsTheProgram) {
    for (const char* input :
         {"", "uci\n", "uci", "position startpos\ngo infinite\n", "position startpos\ngo infinite"}) {
        const TProgramResult result = RunQuillon({"uci"}, {input, ""});
        EXPECT_EQ(result.m_nStatus, 0) << input;
        EXPECT_EQ(result.m_err, "") << input;
    }
}

TEST(UciHandshake, UnknownCommandsAreAnsweredByAText) {
    CUciClient client;
    client.Send("xyzzy 12");
    EXPECT_EQ(client.Until("info string "), TLines{"info string unknown command: xyzzy"});
    client.Send("setoption name Contempt value 7");
    EXPECT_EQ(client.Until("info string "), TLines{"info string unknown option: contempt"});
    client.Send("setoption name Hash value much");
    EXPECT_EQ(Count(client.Until("info string "), "info string Hash wants a number"), 1);
}

TEST(UciHandshake, HelpNamesTheCommand) {
    EXPECT_NE(RunQuillon({"--help"}).m_out.find("uci"), std::string::npos);
    EXPECT_NE(RunQuillon({"uci", "--help"}).m_out.find("go mate N"), std::string::npos);
}

struct TMateCase {
    const char* m_fen;
    int m_nGiven; // moves asked for
    int m_nScore; // moves of the shortest mate
};

constexpr TMateCase kMates[] = {
    {"7k/5K2/6Q1/8/8/8/8/8 w - - 0 1", 1, 1},
    {kInThree, 3, 3},
    {kInThreeByBlack, 3, 3},
    {kInThree, 5, 3},
    {kInThreeByBlack, 6, 3},
    {"kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1", 2, 2},
    {"8/8/8/8/r7/1p6/PP6/KBk5 b - - 0 1", 4, 2},
    {"n1rb4/1p3p1p/1p6/1R5K/8/p3p1PN/1PP1R3/N6k w - - 0 1", 5, 5},
    {"4rkr1/4p1p1/8/8/8/8/8/4K2R w K - 0 1", 1, 1},
    {"4k2r/8/8/8/8/8/4P1P1/4RKR1 b k - 0 1", 1, 1},
};

TEST(UciGoMate, TheLineIsLegalToTheMateAndAsLongAsTheScoreSays) {
    CUciClient client;
    for (const TMateCase& mate : kMates) {
        const TLines lines = client.Ask(std::string("fen ") + mate.m_fen, "go mate " + std::to_string(mate.m_nGiven));
        const std::string line = MateLine(lines);
        const TLines moves = MovesOfLine(line);
        EXPECT_EQ(Judge(mate.m_fen, moves), "mate") << mate.m_fen << "\n" << line;
        EXPECT_EQ(WordBehind(line, "mate"), std::to_string(mate.m_nScore)) << mate.m_fen << "\n" << line;
        EXPECT_EQ(moves.size(), static_cast<std::size_t>(2 * mate.m_nScore - 1)) << line;
        EXPECT_EQ(WordBehind(line, "depth"), std::to_string(2 * mate.m_nScore - 1)) << line;
        for (const char* word : {"nodes", "nps", "time"})
            EXPECT_NE(WordBehind(line, word), "") << line;
        EXPECT_EQ(BestMove(lines), moves.empty() ? "" : moves.front());
        EXPECT_EQ(Count(lines, "bestmove"), 1);
    }
}

TEST(UciGoMate, NoMateIsToldAndAnsweredByALegalMove) {
    CUciClient client;
    for (const auto& [fen, nMoves] : {std::pair{kInThree, 2}, {kInThreeByBlack, 2}, {kInThree, 1}}) {
        const TLines lines = client.Ask(std::string("fen ") + fen, "go mate " + std::to_string(nMoves));
        EXPECT_EQ(Count(lines, "info string no mate in " + std::to_string(nMoves)), 1);
        EXPECT_EQ(MateLine(lines), "");
        EXPECT_EQ(JudgeMove(fen, BestMove(lines)), "legal");
    }
}

TEST(UciGoMate, NumbersThatMakeNoSenseAreBroughtIntoRange) {
    CUciClient client;
    for (const char* number : {"0", "-3", "1", "99999999999999999999"}) {
        const TLines lines =
            client.Ask("fen 7k/5K2/6Q1/8/8/8/8/8 w - - 0 1", "go mate " + std::string(number) + " movetime 20000");
        EXPECT_EQ(BestMove(lines), "g6g7") << number;
    }
}

TEST(UciGo, WithoutAMoveTheAnswerIsNone) {
    CUciClient client;
    for (const char* order : {"go mate 2", "go", "go depth 3"})
        for (const char* fen : {kMated, kStalemate})
            EXPECT_EQ(BestMove(client.Ask(std::string("fen ") + fen, order)), "0000") << fen;
    EXPECT_EQ(Count(client.Ask(std::string("fen ") + kMated, "go"), "info depth 0 score mate 0"), 1);
}

TEST(UciGo, TooLittleMaterialIsKnownAtOnce) {
    CUciClient client;
    for (const char* fen :
         {"8/8/4k3/8/8/4K3/8/8 w - - 0 1", "8/8/4k3/8/8/4K3/7N/8 w - - 0 1", "8/8/4k3/8/8/4K1Q1/8/8 b - - 0 1"}) {
        const TLines lines = client.Ask(std::string("fen ") + fen, "go");
        EXPECT_EQ(Count(lines, "info string no mate in 299"), 1) << fen;
        EXPECT_EQ(JudgeMove(fen, BestMove(lines)), "legal");
    }
}

TEST(UciGo, ABadPositionIsNotSearched) {
    CUciClient client;
    for (const char* position : {"fen nonsense", "fen 8/8/8/8/8/8/8/8 w - - 0 1", "startpos moves e2e5", "", "fen"}) {
        const TLines lines = client.Ask(position, "go mate 2");
        EXPECT_EQ(BestMove(lines), "0000") << position;
        EXPECT_GE(Count(lines, "info string "), 2) << position;
    }
    EXPECT_EQ(BestMove(client.Ask(std::string("fen ") + kInThree, "go mate 3")), "b3c2");
}

TEST(UciGo, SearchesUpwardsToTheShortestMate) {
    CUciClient client;
    for (const char* order :
         {"go", "go depth 5", "go wtime 600000 btime 600000", "go movetime 60000", "go nodes 1000000000"})
        for (const char* fen : {kInThree, kInThreeByBlack}) {
            const TLines lines = client.Ask(std::string("fen ") + fen, order);
            EXPECT_EQ(Count(lines, "info string no mate in "), 2) << order;
            EXPECT_EQ(WordBehind(MateLine(lines), "mate"), "3") << order;
            EXPECT_EQ(Judge(fen, MovesOfLine(MateLine(lines))), "mate");
        }
}

TEST(UciGo, DepthCountsHalfMoves) {
    CUciClient client;
    for (const auto& [depth, nSearched] : {std::pair{"1", 1}, {"2", 1}, {"3", 2}, {"4", 2}, {"-5", 1}}) {
        const TLines lines = client.Ask(std::string("fen ") + kInThree, std::string("go depth ") + depth);
        EXPECT_EQ(Count(lines, "info string no mate in "), nSearched) << depth;
        EXPECT_EQ(JudgeMove(kInThree, BestMove(lines)), "legal");
    }
}

TEST(UciGo, MovesOfTheCommandCount) {
    CUciClient client;
    // The fool's mate, whose last move is open to Black.
    EXPECT_EQ(BestMove(client.Ask("startpos moves f2f3 e7e5 g2g4", "go mate 1")), "d8h4");
    // The double step has just been made: taking it in passing mates. Two moves later that is over.
    const std::string start = "fen 8/N5p1/7R/7P/7k/5K2/8/2B5 b - - 0 1 moves ";
    EXPECT_EQ(MovesOfLine(MateLine(client.Ask(start + "g7g5", "go mate 1"))), TLines{"h5g6"});
    EXPECT_EQ(Count(client.Ask(start + "g7g5 c1d2 h4h3 d2c1 h3h4", "go mate 1"), "info string no mate in 1"), 1);
    // A promotion to a knight mates, one to a queen does not; a king that has moved cannot castle.
    const std::string promotion = "fen 7b/5P1k/7p/8/8/8/K7/6R1 w - - 0 1";
    EXPECT_EQ(BestMove(client.Ask(promotion, "go mate 1")), "f7f8n");
    EXPECT_EQ(BestMove(client.Ask(promotion + " moves f7f8n", "go mate 1")), "0000");
    EXPECT_NE(BestMove(client.Ask(promotion + " moves f7f8q", "go mate 1")), "0000");
    const std::string castling = "fen 4rkr1/4p1p1/8/8/8/8/8/4K2R w K - 0 1";
    EXPECT_EQ(BestMove(client.Ask(castling, "go mate 1")), "e1g1");
    EXPECT_EQ(MateLine(client.Ask(castling + " moves e1e2 g7g6 e2e1 g6g5", "go mate 1")), "");
}

TEST(UciGo, LimitsAreKept) {
    CUciClient client;
    for (const char* order : {"go movetime 200", "go nodes 20000", "go infinite movetime 50",
                              "go wtime 6000 btime 6000", "go mate 20 movetime 200", "go mate 20 nodes 1"}) {
        const bool bInfinite = std::string(order).find("infinite") != std::string::npos;
        TLines lines;
        client.Send("position startpos");
        const TClock::duration time = TimeOf([&] {
            client.Send(order);
            if (bInfinite) {
                std::this_thread::sleep_for(100ms);
                client.Send("stop");
            }
            lines = client.Until("bestmove");
        });
        EXPECT_EQ(JudgeMove("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", BestMove(lines)), "legal");
        EXPECT_LT(time, kPromptly) << order;
        if (std::string(order).find("movetime 200") != std::string::npos) {
            EXPECT_GE(time, 190ms) << order;
        }
    }
}

TEST(UciStop, IsObeyedAtOnceWhateverTheSearchIsAt) {
    CUciClient client;
    for (const char* order : {"go infinite", "go mate 20", "go mate 299", "go", "go mate 6"})
        for (const auto delay : {0ms, 30ms, 400ms}) {
            client.Send("position startpos");
            client.Send(order);
            std::this_thread::sleep_for(delay);
            TLines lines;
            const TClock::duration time = TimeOf([&] {
                client.Send("stop");
                lines = client.Until("bestmove");
            });
            EXPECT_LT(time, kPromptly) << order << " " << delay.count();
            EXPECT_EQ(Count(lines, "bestmove"), 1);
            RecordProperty(std::string(order) + " " + std::to_string(delay.count()),
                           static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()));
        }
    client.Send("stop"); // nothing runs: nothing is said
    client.Send("isready");
    EXPECT_EQ(client.Until("readyok"), TLines{"readyok"});
}

TEST(UciInfinite, TheBestMoveWaitsForStop) {
    CUciClient client;
    client.Send(std::string("position fen ") + kInThree);
    client.Send("go infinite");
    EXPECT_EQ(Judge(kInThree, MovesOfLine(MateLine(client.Until("info depth 5 score mate 3")))), "mate");
    std::this_thread::sleep_for(200ms);
    client.Send("isready");
    EXPECT_EQ(Count(client.Until("readyok"), "bestmove"), 0);
    client.Send("stop");
    EXPECT_EQ(BestMove(client.Until("bestmove")), "b3c2");
}

TEST(UciPonder, TheBestMoveWaitsForTheHit) {
    CUciClient client;
    client.Send(std::string("position fen ") + kInThree);
    client.Send("go ponder mate 3");
    (void)client.Until("info depth 5 score mate 3");
    client.Send("isready");
    EXPECT_EQ(Count(client.Until("readyok"), "bestmove"), 0);
    client.Send("ponderhit");
    EXPECT_EQ(BestMove(client.Until("bestmove")), "b3c2");
    client.Send("position startpos");
    client.Send("go ponder movetime 100");
    std::this_thread::sleep_for(300ms);
    client.Send("ponderhit");
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(client.Until("bestmove").back().substr(0, 9), "bestmove "); }), kPromptly);
}

TEST(UciSearch, TheProgramListensMeanwhile) {
    CUciClient client;
    client.Send("position startpos");
    client.Send("go infinite");
    for (int i = 0; i < 5; ++i) {
        client.Send("isready");
        EXPECT_LT(TimeOf([&] { EXPECT_EQ(Count(client.Until("readyok"), "bestmove"), 0); }), kPromptly);
    }
    client.Send("go mate 3");
    EXPECT_EQ(client.Until("info string a search is running").back(), "info string a search is running: stop it first");
    client.Send(std::string("position fen ") + kInThree);
    client.Send("stop");
    (void)client.Until("bestmove");
    client.Send("go mate 3");
    EXPECT_EQ(BestMove(client.Until("bestmove")), "b3c2");
}

TEST(UciSearch, TellsItsProgress) {
    CUciClient client;
    client.Send("position startpos");
    client.Send("go mate 20");
    std::this_thread::sleep_for(2500ms);
    client.Send("stop");
    const TLines lines = client.Until("bestmove");
    EXPECT_GE(Count(lines, "info depth 39 nodes "), 1);
    EXPECT_LE(Count(lines, "info depth 39 nodes "), 4);
}

TEST(UciSearch, QuitEndsItCleanly) {
    for (const char* order : {"go infinite", "go mate 30"}) {
        CUciClient client;
        client.Send("position startpos");
        client.Send(order);
        std::this_thread::sleep_for(100ms);
        client.Send("quit");
        TProgramResult result;
        EXPECT_LT(TimeOf([&] { result = client.Finish(); }), kPromptly);
        EXPECT_EQ(result.m_nStatus, 0);
        EXPECT_EQ(result.m_err, "");
    }
}

TEST(UciOptions, ThreadsAndHashAreTaken) {
    CUciClient client;
    for (const char* option :
         {"Threads value 2", "Hash value 16", "MultiPV value 1", "Ponder value true", "hash value 0"})
        client.Send(std::string("setoption name ") + option);
    client.Send("setoption name Threads value 100000");
    EXPECT_EQ(client.Until("info string "), TLines{"info string Threads is 255"});
    client.Send("setoption name Threads value 2");
    const TLines lines = client.Ask(std::string("fen ") + kInThree, "go mate 6");
    EXPECT_EQ(Judge(kInThree, MovesOfLine(MateLine(lines))), "mate");
}

std::string RandomLine(std::mt19937& random) {
    static const TLines kWords = {
        "uci",
        "isready",
        "ucinewgame",
        "position",
        "go",
        "stop",
        "setoption",
        "debug",
        "ponderhit",
        "register",
        "mate",
        "infinite",
        "movetime",
        "nodes",
        "depth",
        "wtime",
        "ponder",
        "searchmoves",
        "moves",
        "fen",
        "startpos",
        "name",
        "value",
        "Hash",
        "Threads",
        "e2e4",
        "e7e5",
        "-1",
        "0",
        "1",
        "7",
        "100",
        "99999999999999999999",
        "on",
        "KQkq",
        kInThree,
        kMated,
        "8/8/8/8/8/8/8/8",
        "////////",
        "w",
        "b",
        "-",
        "e3",
    };
    std::string line;
    for (auto nWords = random() % 9; nWords > 0; --nWords) {
        line += (random() % 8 == 0 ? "\t " : " ") + kWords[random() % kWords.size()];
        if (random() % 20 == 0)
            for (auto nBytes = random() % 40; nBytes > 0; --nBytes)
                line += static_cast<char>(random() % 256);
    }
    std::erase(line, '\n');
    return line;
}

TEST(UciGarbage, NeverEndsTheProgramAndEverySearchIsAnsweredOnce) {
    for (const unsigned nSeed : {1u, 2u, 3u}) {
        std::mt19937 random(nSeed);
        CUciClient client;
        std::string sent;
        for (int i = 0; i < 300; ++i) {
            const std::string line = RandomLine(random);
            sent += line + "\n";
            if (random() % 10 == 0)
                sent += "position startpos\ngo infinite\nstop\n";
        }
        client.SendRaw(sent + std::string(200000, 'x') + "\nstop\nisready now\n");
        client.Send("uci");
        TLines lines = client.Until("uciok");
        for (TLines more = lines; Count(more, "info string unknown command: xxxxxxxx") == 0;) {
            more = client.Until("uciok");
            ASSERT_NE(more.back(), "(nothing)");
            lines.insert(lines.end(), more.begin(), more.end());
        }
        client.Send("quit");
        const TProgramResult result = client.Finish();
        EXPECT_EQ(result.m_nStatus, 0) << nSeed;
        EXPECT_EQ(result.m_err, "") << nSeed;
        EXPECT_GE(Count(lines, "readyok"), 1);
        EXPECT_GE(Count(lines, "bestmove "), 20);
    }
}

} // namespace
} // namespace quillon
