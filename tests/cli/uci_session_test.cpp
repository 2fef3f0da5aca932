// A session in this process, where the system has no threads to give, the input breaks off, or memory is looked at.

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <mutex>
#include <new>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "cli/uci_client.h"
#include "cli/uci_position.h"
#include "cli/uci_session.h"
#include "core/search_context.h"
#include "heuristics/solving_driver.h"
#include "tempregister/failing_allocation.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using namespace std::chrono_literals;
using TLines = std::vector<std::string>;

constexpr const char* kThreeMover = "8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1";
constexpr const char* kInOne = "7k/5K2/6Q1/8/8/8/8/8 w - - 0 1"; // Qg7 mates, and is not the first move

/// What is written to standard output while it lives. Threads: any.
class CWritten : private std::streambuf {
  public:
    CWritten() : m_before(std::cout.rdbuf(this)) {}
    ~CWritten() override { std::cout.rdbuf(m_before); }
    CWritten(const CWritten&) = delete;
    CWritten& operator=(const CWritten&) = delete;

    [[nodiscard]] TLines Lines() const {
        const std::lock_guard lock(m_mutex);
        TLines lines;
        std::istringstream text(m_text);
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

    /// Waits for a line that begins so: false if none comes.
    [[nodiscard]] bool WaitFor(const std::string& beginning, std::chrono::seconds atMost) const {
        const auto end = std::chrono::steady_clock::now() + atMost;
        while (Count(Lines(), beginning) == 0) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        const std::lock_guard lock(m_mutex);
        m_text.append(text, static_cast<std::size_t>(size));
        return size;
    }
    int_type overflow(int_type c) override {
        const char text = traits_type::to_char_type(c);
        return xsputn(&text, 1) == 1 ? c : traits_type::eof();
    }

  private:
    mutable std::mutex m_mutex;
    std::string m_text;
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
        CWritten written;
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
    CWritten written;
    CUciOutput output;
    CUciSearch search({ReadGameFen(kInOne).m_position, {}, {}}, output);
    RefuseThreads(1);
    search.Run();
    EXPECT_EQ(Count(written.Lines(), "info string start of a thread: "), 1);
    EXPECT_EQ(Count(written.Lines(), "bestmove "), 1);
    EXPECT_EQ(JudgeMove(kInOne, WordBehind(written.Lines().back(), "bestmove")), "legal");
}

TEST_F(UciSession, WithoutAThreadForTheSolverAnInfiniteSearchWaitsForStop) {
    CWritten written;
    CUciOutput output;
    TUciGo go;
    go.m_bInfinite = true;
    CUciSearch search({ReadGameFen(kInOne).m_position, go, {}}, output);
    std::thread watching([&search] {
        RefuseThreads(1);
        search.Run();
    });
    EXPECT_TRUE(written.WaitFor("info string start of a thread: ", 60s));
    std::this_thread::sleep_for(50ms); // in which no answer comes
    EXPECT_FALSE(search.IsEnding());
    EXPECT_EQ(Count(written.Lines(), "bestmove "), 0);
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
    CUciSearch({ReadGameFen(kThreeMover).m_position, go, {}}, output).Run();
    std::cout.rdbuf(before);
    EXPECT_NE(counted.str().find("score mate 5"), std::string::npos);
    EXPECT_NE(counted.str().find("score mate 3"), std::string::npos);
    EXPECT_EQ(counted.m_solves, std::vector<int>(counted.m_solves.size(), 1));
}

/// A solve is given back before the next, for the next length or to improve a mate. However long that takes, a stop is
/// obeyed meanwhile.
TEST_F(UciSession, AStopIsObeyedWhileMemoryIsGivenBack) {
    for (const bool bMate : {false, true}) {
        CWritten written;
        CUciOutput output;
        TUciGo go;
        if (bMate)
            go.m_mate = 5;
        CUciSearch search({ReadGameFen(kThreeMover).m_position, go, {}}, output);
        std::atomic<bool> bReleased{false}, bTold{false};
        {
            const test::CBeforeDelete delaying(sizeof(CSolve), [&] {
                if (bReleased.exchange(true))
                    return;
                search.Stop();
                bTold = written.WaitFor("bestmove ", 20s);
            });
            search.Run();
        }
        if (!bReleased)
            GTEST_SKIP() << "the compiler does not tell what is deleted";
        EXPECT_TRUE(bTold);
        const TLines lines = written.Lines();
        EXPECT_EQ(Count(lines, "info depth 9 score mate 5 "), bMate ? 1 : 0);
        EXPECT_EQ(Count(lines, "bestmove "), 1);
        EXPECT_EQ(lines.back(), Last(lines, "bestmove ")); // and nothing behind it
        if (bMate) {
            EXPECT_EQ(WordBehind(lines.back(), "bestmove"), WordBehind(Last(lines, "info depth 9 "), "pv"));
        }
    }
}

/// Memory is out when a line is written.
class CNoRoom : public std::streambuf {
  protected:
    std::streamsize xsputn(const char*, std::streamsize) override { throw std::bad_alloc(); }
};

/// Without a word of it the session and the search go on to their best move.
TEST_F(UciSession, AFailureThatThereIsNoMemoryToTellOfIsNotTold) {
    CNoRoom nowhere;
    std::streambuf* const before = std::cout.rdbuf(&nowhere);
    std::cout.exceptions(std::ios::badbit);
    CUciOutput output;
    EXPECT_THROW(output.Line("told"), std::bad_alloc);
    std::cout.clear();
    EXPECT_NO_THROW(output.Failure(std::runtime_error("untold"))); // or the program ends
    std::cout.exceptions(std::ios::goodbit);
    std::cout.clear();
    std::cout.rdbuf(before);
    EXPECT_FALSE(output.IsBroken());
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
