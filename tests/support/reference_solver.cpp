#include "support/reference_solver.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <string_view>
#include <unordered_map>

namespace reference {

namespace {

// ---- the plain search

bool ForcesMatePlainly(const Position& position, int nMoves, std::uint64_t& nodes);

/// Position after a move of the mating side: is it mate, or is every reply met by a mate in at most nMoves - 1?
bool LosesPlainly(const Position& position, int nMoves, std::uint64_t& nodes) {
    ++nodes;
    if (nMoves == 1)
        return IsMate(position);
    const std::vector<Move> replies = LegalMoves(position);
    if (replies.empty())
        return InCheck(position);
    return std::ranges::all_of(replies, [&](Move reply) {
        ++nodes;
        return ForcesMatePlainly(Play(position, reply), nMoves - 1, nodes);
    });
}

bool ForcesMatePlainly(const Position& position, int nMoves, std::uint64_t& nodes) {
    if (nMoves < 1)
        return false;
    return std::ranges::any_of(LegalMoves(position),
                               [&](Move move) { return LosesPlainly(Play(position, move), nMoves, nodes); });
}

void Finish(Answer& answer, std::uint64_t nodes) {
    std::ranges::sort(answer.keys);
    answer.mateExists = !answer.keys.empty();
    answer.nodes = nodes;
}

// ---- the search with a table

/// Everything that the future of a position depends on: four bits a square, then side, castling and en passant.
struct Key {
    std::array<std::uint64_t, 5> words{};

    friend bool operator==(const Key&, const Key&) = default;
};

/// An en passant square counts only if a pawn stands ready to take there; otherwise the positions have one future.
bool PawnReadyToTakeEnPassant(const Position& position) {
    if (position.enPassant == kNoSquare)
        return false;
    const char pawn = position.toMove == Side::White ? 'P' : 'p';
    const int behind = position.enPassant + (position.toMove == Side::White ? -8 : 8);
    const int file = position.enPassant % 8;
    return (file > 0 && position.board[static_cast<std::size_t>(behind - 1)] == pawn) ||
           (file < 7 && position.board[static_cast<std::size_t>(behind + 1)] == pawn);
}

constexpr std::array<std::uint8_t, 128> MakeCodes() {
    std::array<std::uint8_t, 128> codes{};
    std::uint8_t next = 0;
    for (const char letter : std::string_view(".KQRBNPkqrbnp"))
        codes[static_cast<std::size_t>(letter)] = next++;
    return codes;
}

Key KeyOf(const Position& position) {
    static constexpr std::array<std::uint8_t, 128> kCodes = MakeCodes();
    Key key;
    for (std::size_t square = 0; square < 64; ++square) {
        const std::uint64_t code = kCodes[static_cast<std::size_t>(position.board[square])];
        key.words[square / 16] |= code << (square % 16 * 4);
    }
    const unsigned enPassant = PawnReadyToTakeEnPassant(position) ? static_cast<unsigned>(position.enPassant) : 64U;
    key.words[4] = (position.toMove == Side::White ? 0U : 1U) | unsigned{position.castling} << 1U | enPassant << 5U;
    return key;
}

struct KeyHash {
    std::size_t operator()(const Key& key) const {
        std::uint64_t hash = 0;
        for (const std::uint64_t word : key.words)
            hash = std::rotl((hash ^ word) * 0x9E3779B97F4A7C15ULL, 29);
        return static_cast<std::size_t>(hash ^ hash >> 32);
    }
};

/// What is proven of a position with the mating side to move.
struct Proven {
    int noMateIn = 0; // no forced mate in at most this many moves
    int mateIn = 0;   // forced mate in at most this many moves; 0 if none is known
};

struct OutOfNodes {};

class TableSearch {
  public:
    explicit TableSearch(std::uint64_t maxNodes) : m_nMaxNodes(maxNodes) {}

    /// Works up from the shortest length that is still open, so a length that is found is the shortest one.
    bool ForcesMate(const Position& position, int nMoves) {
        if (nMoves < 1)
            return false;
        const Key key = KeyOf(position);
        const Proven known = Known(key);
        if (known.mateIn != 0 && known.mateIn <= nMoves)
            return true;
        for (int length = known.noMateIn + 1; length <= nMoves; ++length) {
            if (ForcesMateIn(position, length)) {
                m_Table[key].mateIn = length;
                return true;
            }
            m_Table[key].noMateIn = length;
        }
        return false;
    }

    /// Position after a move of the mating side, as in the plain search.
    bool Loses(const Position& position, int nMoves) { return Loses(MakeChild(position, nMoves), nMoves); }

    [[nodiscard]] std::uint64_t Nodes() const { return m_nNodes; }

  private:
    struct Child {
        Position position;
        std::vector<Move> replies;
        bool check = false;
        int rank = 0; // tried in rising order
    };

    void CountNode() {
        if (++m_nNodes > m_nMaxNodes)
            throw OutOfNodes{};
    }

    [[nodiscard]] Proven Known(const Key& key) const {
        const auto found = m_Table.find(key);
        return found == m_Table.end() ? Proven{} : found->second;
    }

    Child MakeChild(const Position& position, int nMoves) {
        CountNode();
        Child child{position, {}, InCheck(position), 0};
        if (nMoves > 1)
            child.replies = LegalMoves(position);
        // Moves that leave few replies first, checks before quiet moves that leave as many.
        child.rank = 2 * static_cast<int>(child.replies.size()) - (child.check ? 7 : 0);
        return child;
    }

    bool ForcesMateIn(const Position& position, int nMoves) {
        const std::vector<Move> moves = LegalMoves(position);
        if (nMoves == 1)
            return std::ranges::any_of(moves, [&](Move move) {
                CountNode();
                return IsMate(Play(position, move));
            });
        std::vector<Child> children;
        children.reserve(moves.size());
        for (const Move move : moves)
            children.push_back(MakeChild(Play(position, move), nMoves));
        std::vector<const Child*> order;
        for (const Child& child : children)
            order.push_back(&child);
        std::ranges::stable_sort(order, {}, [](const Child* child) { return child->rank; });
        return std::ranges::any_of(order, [&](const Child* child) { return Loses(*child, nMoves); });
    }

    bool Loses(const Child& child, int nMoves) {
        if (nMoves == 1)
            return IsMate(child.position);
        if (child.replies.empty())
            return child.check;
        std::vector<Position> afterReplies;
        afterReplies.reserve(child.replies.size());
        for (const Move reply : child.replies) {
            CountNode();
            afterReplies.push_back(Play(child.position, reply));
        }
        if (nMoves > 2 && AnyIsKnownToHold(afterReplies, nMoves - 1))
            return false;
        return LosesToEach(child.replies, afterReplies, nMoves);
    }

    [[nodiscard]] bool AnyIsKnownToHold(const std::vector<Position>& afterReplies, int nMoves) const {
        return std::ranges::any_of(afterReplies,
                                   [&](const Position& after) { return Known(KeyOf(after)).noMateIn >= nMoves; });
    }

    /// The reply that refuted last at this length is tried first.
    bool LosesToEach(const std::vector<Move>& replies, const std::vector<Position>& afterReplies, int nMoves) {
        const std::size_t none = replies.size();
        Move& killer = m_aKillers[static_cast<std::size_t>(nMoves) % m_aKillers.size()];
        const auto holds = [&](std::size_t index) {
            if (ForcesMate(afterReplies[index], nMoves - 1))
                return false;
            killer = replies[index];
            return true;
        };
        std::size_t first = none;
        for (std::size_t index = 0; index < none; ++index)
            if (replies[index] == killer)
                first = index;
        if (first != none && holds(first))
            return false;
        for (std::size_t index = 0; index < none; ++index)
            if (index != first && holds(index))
                return false;
        return true;
    }

    std::unordered_map<Key, Proven, KeyHash> m_Table;
    std::array<Move, 64> m_aKillers{};
    std::uint64_t m_nNodes = 0;
    std::uint64_t m_nMaxNodes;
};

} // namespace

Answer SolveAll(const Position& position, int nMoves) {
    Answer answer;
    std::uint64_t nodes = 0;
    if (nMoves > 0)
        for (const Move move : LegalMoves(position))
            if (LosesPlainly(Play(position, move), nMoves, nodes))
                answer.keys.push_back(LongNotation(position, move));
    Finish(answer, nodes);
    return answer;
}

bool ForcesMate(const Position& position, int nMoves) {
    std::uint64_t nodes = 0;
    return ForcesMatePlainly(position, nMoves, nodes);
}

std::optional<Answer> SolveAllWithTable(const Position& position, int nMoves, std::uint64_t maxNodes) {
    TableSearch search(maxNodes);
    try {
        Answer answer;
        if (search.ForcesMate(position, nMoves))
            for (const Move move : LegalMoves(position))
                if (search.Loses(Play(position, move), nMoves))
                    answer.keys.push_back(LongNotation(position, move));
        Finish(answer, search.Nodes());
        return answer;
    } catch (const OutOfNodes&) {
        return std::nullopt;
    }
}

std::optional<int> ShortestMate(const Position& position, int nMoves, std::uint64_t maxNodes) {
    TableSearch search(maxNodes);
    try {
        for (int length = 1; length <= nMoves; ++length)
            if (search.ForcesMate(position, length))
                return length;
        return 0;
    } catch (const OutOfNodes&) {
        return std::nullopt;
    }
}

} // namespace reference
