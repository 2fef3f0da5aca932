#include "support/proof_verifier.h"

#include <optional>
#include <stdexcept>
#include <unordered_map>

namespace reference {

namespace {

std::optional<Move> LegalMove(const Position& position, std::string_view text) {
    try {
        return MoveFromNotation(position, text);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

/// All that the future of a position depends on, White to move. The square passed over counts even if nobody can take
/// there: that only costs a transposition.
std::string KeyOf(const Position& position) {
    std::string key(position.board.begin(), position.board.end());
    key += static_cast<char>(position.castling);
    key += static_cast<char>(position.enPassant);
    return key;
}

class Verifier {
  public:
    Verifier(const MoveOracle& oracle, std::uint64_t maxPositions) : m_oracle(oracle), m_maxPositions(maxPositions) {}

    ProofReport Verify(const Position& root, int nMoves, std::string_view key) {
        (void)WhiteMoves(root, nMoves, std::string(key));
        return std::move(m_report);
    }

  private:
    /// White plays `move` with nMoves left, that move included. False: the proof has ended.
    bool WhiteMoves(const Position& position, int nMoves, const std::string& move) {
        if (nMoves < 1)
            return Fail("no move is left");
        if (move.empty())
            return Fail("no mate is known with " + std::to_string(nMoves) + " moves left");
        const auto legal = LegalMove(position, move);
        if (!legal)
            return Fail("no legal move: " + move);
        m_line.push_back(move);
        const bool bProved = EveryReplyLoses(Play(position, *legal), nMoves - 1);
        m_line.pop_back();
        return bProved;
    }

    bool EveryReplyLoses(const Position& position, int nMoves) {
        const std::vector<Move> replies = LegalMoves(position);
        if (replies.empty())
            return InCheck(position) || Fail("stalemate");
        if (nMoves == 0)
            return Fail("no mate in time");
        for (const Move reply : replies) {
            m_line.push_back(LongNotation(position, reply));
            const bool bProved = WhiteMates(Play(position, reply), nMoves);
            m_line.pop_back();
            if (!bProved)
                return false;
        }
        return true;
    }

    bool WhiteMates(const Position& position, int nMoves) {
        const std::string key = KeyOf(position);
        if (const auto known = m_proved.find(key); known != m_proved.end() && known->second <= nMoves)
            return true;
        if (m_report.positions >= m_maxPositions)
            return Fail("more positions than " + std::to_string(m_maxPositions), ProofVerdict::TooLarge);
        ++m_report.positions;
        if (!WhiteMoves(position, nMoves, m_oracle({position, nMoves, m_line})))
            return false;
        m_proved[key] = nMoves;
        return true;
    }

    /// Always false. The first fault is the one told.
    bool Fail(const std::string& why, ProofVerdict verdict = ProofVerdict::Failed) {
        m_report.verdict = verdict;
        m_report.fault = why + ", after";
        for (const std::string& move : m_line)
            m_report.fault += ' ' + move;
        return false;
    }

    const MoveOracle& m_oracle;
    const std::uint64_t m_maxPositions;
    ProofReport m_report;
    std::vector<std::string> m_line;
    std::unordered_map<std::string, int> m_proved; // the moves within which White mates there
};

} // namespace

ProofReport VerifyMate(const Position& root, int nMoves, std::string_view key, const MoveOracle& oracle,
                       std::uint64_t maxPositions) {
    return Verifier(oracle, maxPositions).Verify(root, nMoves, key);
}

std::string FaultOfMatingLine(const Position& root, int nMoves, const std::vector<std::string>& line) {
    if (line.size() % 2 == 0 || line.size() > 2 * static_cast<std::size_t>(nMoves))
        return "a line of " + std::to_string(line.size()) + " plies for #" + std::to_string(nMoves);
    Position position = root;
    for (const std::string& text : line) {
        const auto move = LegalMove(position, text);
        if (!move)
            return "no legal move: " + text;
        position = Play(position, *move);
    }
    return IsMate(position) ? "" : "no mate at the end";
}

} // namespace reference
