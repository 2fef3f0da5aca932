// A session in this process, where the system has no threads to give, the input breaks off, or memory is looked at.

#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "cli/uci_client.h"
#include "cli/uci_position.h"
#include "cli/uci_session.h"
#include "core/search_context.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TLines = std::vector<std::string>;

constexpr const char* kInOne = "7k/5K2/6Q1/8/8/8/8/8 w - - 0 1"; // Qg7 mates, and is not the first move

/// What is written to standard output while it lives.
class CWritten {
  public:
    CWritten() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~CWritten() { std::cout.rdbuf(m_before); }
    CWritten(const CWritten&) = delete;
    CWritten& operator=(const CWritten&) = delete;

    [[nodiscard]] TLines Lines() const {
        TLines lines;
        std::istringstream text(m_text.str());
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

  private:
    std::ostringstream m_text;
    std::streambuf* const m_before;
};

/// No thread outlives a test, and none is refused behind it.
class UciSession : public ::testing::Test {
  protected:
    ~UciSession() override {
        RefuseThreads(0);
        EXPECT_EQ(LiveThreads(), m_threads);
    }

    TLines Answers(std::istream& input) {
        const CWritten written;
        CUciOutput output;
        CUciPrecalc precalc(TSettings(), TPrecalcChoice(), output);
        EXPECT_EQ(CUciSession(input, output, precalc).Run(), EExitStatus::Answered);
        return written.Lines();
    }
    TLines Answers(const std::string& commands) {
        std::istringstream input(commands);
        return Answers(input);
    }

    static std::string Position() { return std::string("position fen ") + kInOne + "\n"; }

  private:
    const int m_threads = LiveThreads();
};

TEST_F(UciSession, WithoutAThreadToWatchTheAnswerIsAnyMove) {
    RefuseThreads(1);
    const TLines lines = Answers(Position() + "go mate 1\nisready\n");
    EXPECT_EQ(Count(lines, "info string start of a thread: "), 1);
    EXPECT_EQ(Count(lines, "bestmove "), 1);
    EXPECT_EQ(JudgeMove(kInOne, WordBehind(Last(lines, "bestmove "), "bestmove")), "legal");
    EXPECT_EQ(lines.back(), "readyok");
}

TEST_F(UciSession, ASystemThatHasThreadsAgainIsAskedForThemAgain) {
    RefuseThreads(2);
    TLines lines = Answers(Position() + "go infinite\ngo mate 1\n");
    EXPECT_EQ(Count(lines, "info string start of a thread: "), 2);
    EXPECT_EQ(Count(lines, "bestmove "), 2);
    lines = Answers(Position() + "go mate 1\n");
    EXPECT_EQ(Count(lines, "bestmove "), 1);
    EXPECT_EQ(Count(lines, "info string start of a thread: "), 0);
}

/// The one that is refused here is the second of a session.
TEST_F(UciSession, WithoutAThreadForTheSolverTheAnswerIsAnyMove) {
    const CWritten written;
    CUciOutput output;
    CUciSearch search({ReadGameFen(kInOne).m_position, {}, {}}, output);
    RefuseThreads(1);
    search.Run();
    EXPECT_EQ(Count(written.Lines(), "info string start of a thread: "), 1);
    EXPECT_EQ(Count(written.Lines(), "bestmove "), 1);
    EXPECT_EQ(JudgeMove(kInOne, WordBehind(written.Lines().back(), "bestmove")), "legal");
}

TEST_F(UciSession, WithoutAThreadForTheSolverAnInfiniteSearchWaitsForStop) {
    const CWritten written;
    CUciOutput output;
    TUciGo go;
    go.m_bInfinite = true;
    CUciSearch search({ReadGameFen(kInOne).m_position, go, {}}, output);
    std::thread watching([&search] {
        RefuseThreads(1);
        search.Run();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(search.IsEnding());
    search.Stop();
    watching.join();
    EXPECT_EQ(Count(written.Lines(), "bestmove "), 1);
}

/// How many solves exist whenever a line is handed on.
class CCountingOutput : public std::stringbuf {
  public:
    std::vector<int> m_solves;

  protected:
    int sync() override {
        m_solves.push_back(LiveSearchContexts());
        return 0;
    }
};

TEST_F(UciSession, TheProofOfTheShortestMateTakesThePlaceOfTheFirst) {
    CCountingOutput counted;
    std::streambuf* const before = std::cout.rdbuf(&counted);
    CUciOutput output;
    TUciGo go;
    go.m_mate = 5; // there is one in three
    CUciSearch({ReadGameFen("8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1").m_position, go, {}}, output).Run();
    std::cout.rdbuf(before);
    EXPECT_NE(counted.str().find("score mate 5"), std::string::npos);
    EXPECT_NE(counted.str().find("score mate 3"), std::string::npos);
    EXPECT_EQ(counted.m_solves, std::vector<int>(counted.m_solves.size(), 1));
}

/// The commands, and behind them a failure in place of an end.
class CBreakingInput : public std::stringbuf {
  public:
    using std::stringbuf::stringbuf;

  protected:
    int_type underflow() override {
        const int_type next = std::stringbuf::underflow();
        if (next == traits_type::eof())
            throw std::runtime_error("broken input");
        return next;
    }
};

TEST_F(UciSession, AFailureEndsTheSearchThatRuns) {
    CBreakingInput commands("position startpos\ngo infinite\n");
    std::istream input(&commands);
    input.exceptions(std::ios::badbit);
    EXPECT_THROW((void)Answers(input), std::runtime_error);
}

} // namespace
} // namespace quillon
