#include "cli/mate_finder.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/notation.h"

namespace quillon {

namespace {

constexpr int kMostPlayedMoves = 2; // the longest mate that is played through without a solve: a second at most

constexpr int kFileFlip = 7; // square ^ 7 is the square of the same rank with the files reversed

TMove Turned(TMove move) {
    move.m_nFrom ^= kFileFlip;
    move.m_nTo ^= kFileFlip;
    return move;
}

/// The board alone, as a problem; turned over from left to right if asked.
TChessboard ProblemOf(const TGamePosition& position, bool bTurned) {
    TGamePosition problem = position;
    if (bTurned)
        for (std::size_t square = 0; square < kSquares; ++square)
            problem.m_board[square ^ kFileFlip] = position.m_board[square];
    return RecordOf(problem);
}

/// How the castlings that a problem allows compare with those of the game.
struct TRights {
    bool m_bMore = false; // some that the game has not
    bool m_bLess = false; // not all that the game has
};

/// On a turned board the castlings are others altogether: a king that castles in the game stands on d1 there.
TRights Compare(int problem, int game, bool bTurned) {
    const int common = bTurned ? 0 : problem & game;
    return {problem != common, game != common};
}

/// What a solve of a board proves of the game.
struct TProofs {
    bool m_bMate = true;
    bool m_bNoMate = true;
};

/// A side that may castle where it should not has more moves and no move less, and is never spared a zugzwang or a
/// stalemate by it: who can castle can also step to the square that the king passes over.
TProofs ProofsOf(const TGamePosition& position, bool bTurned) {
    const TChessboard problem = ProblemOf(position, bTurned);
    const TRights white = Compare(WhiteCastlingsOnBoard(problem), position.m_nCastlingWhite, bTurned);
    const TRights black = Compare(BlackCastlingsOnBoard(problem), position.m_nCastlingBlack, bTurned);
    return {!white.m_bMore && !black.m_bLess, !white.m_bLess && !black.m_bMore};
}

bool IsProved(const TMateAnswer& answer, const TProofs& proofs) {
    return (answer.m_verdict == EVerdict::Mate && proofs.m_bMate) ||
           (answer.m_verdict == EVerdict::NoMate && proofs.m_bNoMate);
}

const TGameMove* Find(const std::vector<TGameMove>& moves, const TMove& wanted) {
    const auto found = std::ranges::find_if(moves, [&](const TGameMove& m) { return SameMove(m.m_move, wanted); });
    return found != moves.end() ? &*found : nullptr;
}

/// As much of the line as is legal and ends with a move of the side that begins, and whether that is mate.
TMateAnswer Checked(const TGamePosition& position, const std::vector<TMove>& line) {
    TMateAnswer checked{EVerdict::Mate, {}, false};
    TGamePosition at = position;
    for (const TMove& move : line) {
        const std::vector<TGameMove> moves = LegalMoves(at);
        const TGameMove* const played = Find(moves, move);
        if (played == nullptr)
            break;
        checked.m_line.push_back(played->m_move);
        at = TGamePosition(played->m_after);
    }
    checked.m_bToMate = checked.m_line.size() % 2 == 1 && LegalMoves(at).empty() && IsInCheck(at);
    if (checked.m_line.size() % 2 == 0 && !checked.m_line.empty())
        checked.m_line.pop_back();
    return checked;
}

/// The moves of a result, as the board has them that was solved.
std::vector<TMove> LineOf(const TSolvingResult& result) {
    std::vector<TMove> line;
    bool bWhite = true;
    for (const std::string& text : result.m_variant) {
        line.push_back(ParseMove(text, bWhite));
        bWhite = !bWhite;
    }
    if (line.empty() && !result.m_solutions.empty())
        line.push_back(result.m_solutions.front().m_move);
    return line;
}

void SwapLine(std::vector<TMove>& line) {
    std::ranges::transform(line, line.begin(), [](const TMove& move) { return WithColoursSwapped(move); });
}

TGamePosition After(TGamePosition position, const std::vector<TMove>& line) {
    for (const TMove& move : line) {
        const std::vector<TGameMove> moves = LegalMoves(position);
        if (const TGameMove* const played = Find(moves, move))
            position = TGamePosition(played->m_after);
    }
    return position;
}

} // namespace

/// A solve that others can see and stop as long as this lives.
class CMateFinder::CRunning {
  public:
    CRunning(CMateFinder& finder, CSolve& solve) : m_finder(finder), m_solve(solve) {
        const std::lock_guard lock(finder.m_mutex);
        finder.m_pRunning = &solve;
        if (finder.IsStopping())
            solve.RequestStop();
    }
    ~CRunning() {
        const std::lock_guard lock(m_finder.m_mutex);
        m_finder.m_pRunning = nullptr;
        m_finder.m_nFinished += NodesOf(m_solve);
    }
    CRunning(const CRunning&) = delete;
    CRunning& operator=(const CRunning&) = delete;

    [[nodiscard]] static std::uint64_t NodesOf(const CSolve& solve) {
        return solve.Analysis().m_nPositions.load(std::memory_order_relaxed) +
               solve.Analysis().m_nTrialPositions.load(std::memory_order_relaxed);
    }

  private:
    CMateFinder& m_finder;
    const CSolve& m_solve;
};

void CMateFinder::RequestStop() {
    const std::lock_guard lock(m_mutex);
    m_bStop.store(true, std::memory_order_relaxed);
    if (m_pRunning != nullptr)
        m_pRunning->RequestStop();
}

std::uint64_t CMateFinder::Nodes() const {
    const std::lock_guard lock(m_mutex);
    return m_nFinished + (m_pRunning != nullptr ? CRunning::NodesOf(*m_pRunning) : 0);
}

TMateAnswer CMateFinder::FindMate(const TGamePosition& position, int nMoves) {
    if (position.m_bWhiteToMove)
        return FindWhiteMate(position, nMoves);
    TMateAnswer answer = FindWhiteMate(WithColoursSwapped(position), nMoves);
    SwapLine(answer.m_line);
    return answer;
}

/// Captures en passant come first: they cost little, and a key among them is found before the long search.
TMateAnswer CMateFinder::FindWhiteMate(const TGamePosition& position, int nMoves) {
    if (!HasMatingMaterial(position))
        return {EVerdict::NoMate, {}, false};
    const TMateAnswer passing = position.m_nDoubleStep != kNoSquare ? TryKeys(position, nMoves, EKeys::EnPassant)
                                                                    : TMateAnswer{EVerdict::NoMate, {}, false};
    if (passing.m_verdict == EVerdict::Mate)
        return passing;
    const TMateAnswer others = ByProblem(position, nMoves);
    return others.m_verdict == EVerdict::NoMate ? passing : others;
}

/// The first key that mates; without one the weakest verdict.
TMateAnswer CMateFinder::TryKeys(const TGamePosition& position, int nMoves, EKeys keys) {
    TMateAnswer weakest{EVerdict::NoMate, {}, false};
    for (const TGameMove& key : LegalMoves(position)) {
        if (keys == EKeys::EnPassant && key.m_move.m_nEnPassant == 0)
            continue;
        TMateAnswer answer = IsStopping() ? TMateAnswer{EVerdict::Stopped, {}, false} : BehindKey(key, nMoves);
        if (answer.m_verdict == EVerdict::Mate || answer.m_verdict == EVerdict::Stopped)
            return answer;
        if (answer.m_verdict != EVerdict::NoMate)
            weakest = std::move(answer);
    }
    return weakest;
}

/// Does the key mate in nMoves, itself counted? Every reply is solved; the line is the longest of theirs.
TMateAnswer CMateFinder::BehindKey(const TGameMove& key, int nMoves) {
    const std::vector<TGameMove> replies = LegalMoves(key.m_after);
    const bool bMate = replies.empty() && IsInCheck(key.m_after);
    if (bMate || replies.empty() || nMoves == 1)
        return bMate ? TMateAnswer{EVerdict::Mate, {key.m_move}, true} : TMateAnswer{EVerdict::NoMate, {}, false};
    TMateAnswer longest{EVerdict::Mate, {}, true};
    for (const TGameMove& reply : replies) {
        TMateAnswer answer = FindWhiteMate(reply.m_after, nMoves - 1);
        if (answer.m_verdict != EVerdict::Mate)
            return {answer.m_verdict, {}, false};
        answer.m_line.insert(answer.m_line.begin(), {key.m_move, reply.m_move});
        // Of a line that stops short of the mate it is not known how long it would be.
        if (longest.m_line.empty() || (answer.m_bToMate && !longest.m_bToMate) ||
            (answer.m_bToMate && answer.m_line.size() > longest.m_line.size()))
            longest = std::move(answer);
    }
    return longest;
}

TMateAnswer CMateFinder::ByProblem(const TGamePosition& position, int nMoves) {
    const TProofs plain = ProofsOf(position, false), turned = ProofsOf(position, true);
    const bool bTurnedFirst = !(plain.m_bMate && plain.m_bNoMate) && turned.m_bMate && turned.m_bNoMate;
    for (const bool bTurned : {bTurnedFirst, !bTurnedFirst}) {
        const TProofs& proofs = bTurned ? turned : plain;
        if (!proofs.m_bMate && !proofs.m_bNoMate)
            continue;
        TMateAnswer answer = SolveProblem(position, nMoves, bTurned);
        const bool bAll = proofs.m_bMate && proofs.m_bNoMate; // whatever it says, another solve would say no more
        if (bAll || answer.m_verdict == EVerdict::Stopped || IsProved(answer, proofs))
            return answer;
    }
    if (nMoves > kMostPlayedMoves)
        return {EVerdict::Doubtful, {}, false};
    return TryKeys(position, nMoves, EKeys::All);
}

TMateAnswer CMateFinder::SolveProblem(const TGamePosition& position, int nMoves, bool bTurned) {
    const TSolvingResult result = Solve(ProblemOf(position, bTurned), nMoves);
    if (result.m_verdict != EVerdict::Mate)
        return {result.m_verdict, {}, false};
    std::vector<TMove> line = LineOf(result);
    if (bTurned)
        std::ranges::transform(line, line.begin(), Turned);
    return Checked(position, line);
}

TSolvingResult CMateFinder::Solve(const TChessboard& board, int nMoves) {
    TSolvingResult result;
    result.m_verdict = EVerdict::Stopped;
    if (IsStopping())
        return result;
    m_request.m_board = board;
    m_request.m_nStipulation = nMoves;
    m_solve.reset(); // before the next one takes as much
    m_solve = std::make_unique<CSolve>(m_request);
    const CRunning running(*this, *m_solve);
    return m_solve->StartSolving(m_notifier);
}

void CMateFinder::CompleteLine(const TGamePosition& position, int nMoves, TMateAnswer& answer) {
    while (answer.m_verdict == EVerdict::Mate && !answer.m_bToMate && !answer.m_line.empty()) {
        const int nLeft = nMoves - MovesOf(answer.m_line);
        const std::vector<TGameMove> replies = LegalMoves(After(position, answer.m_line));
        if (replies.empty() || nLeft < 1)
            return;
        const TMateAnswer rest = FindMate(replies.front().m_after, nLeft);
        if (rest.m_verdict != EVerdict::Mate)
            return;
        answer.m_line.push_back(replies.front().m_move);
        answer.m_line.insert(answer.m_line.end(), rest.m_line.begin(), rest.m_line.end());
        answer.m_bToMate = rest.m_bToMate;
    }
}

} // namespace quillon
