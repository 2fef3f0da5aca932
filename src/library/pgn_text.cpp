#include "library/pgn_text.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "core/chessboard.h"
#include "core/fen.h"
#include "core/notation.h"
#include "library/one_line.h"
#include "library/problem_language.h"

namespace quillon {

namespace {

constexpr std::size_t kWidth = 79; // of a line of moves

// --- short notation

/// What has to stand before the target, so that no other figure of the kind could be meant.
std::string Origin(const CPlayedLine& line, const std::vector<TMove>& legal, const TMove& move) {
    const auto& board = line.Position().m_board;
    bool bOther = false, bSameFile = false, bSameRank = false;
    for (const TMove& other : legal) {
        if (other.m_nTo != move.m_nTo || other.m_nFrom == move.m_nFrom || board[other.m_nFrom] != board[move.m_nFrom])
            continue;
        bOther = true;
        bSameFile = bSameFile || FileOf(other.m_nFrom) == FileOf(move.m_nFrom);
        bSameRank = bSameRank || RankOf(other.m_nFrom) == RankOf(move.m_nFrom);
    }
    const std::string square = SquareText(move.m_nFrom);
    if (!bOther)
        return {};
    return !bSameFile ? square.substr(0, 1) : !bSameRank ? square.substr(1) : square;
}

std::string PawnMove(const TMove& move, bool bCapture) {
    std::string text = bCapture ? SquareText(move.m_nFrom).substr(0, 1) + "x" : "";
    text += SquareText(move.m_nTo);
    if (PromotionKind(move) != kNoFigure)
        text += std::string("=") + KindToLetter(PromotionKind(move));
    return text;
}

std::string WithoutSign(CPlayedLine& line, const TMove& move) {
    const TChessboard& position = line.Position();
    const TFigure kind = KindOf(position.m_board[move.m_nFrom]);
    const int files = FileOf(move.m_nTo) - FileOf(move.m_nFrom);
    if (kind == kPawn)
        return PawnMove(move, files != 0);
    if (kind == kKing && (files > 1 || files < -1))
        return files > 0 ? "O-O" : "O-O-O";
    const bool bCapture = position.m_board[move.m_nTo] != kNoFigure;
    return KindToLetter(kind) + Origin(line, line.LegalMoves(), move) + (bCapture ? "x" : "") + SquareText(move.m_nTo);
}

// --- tree of moves

struct TNode {
    TMove m_move{};
    std::string m_text;
    std::string m_comment;
    bool m_bMate = false;
    std::vector<std::unique_ptr<TNode>> m_next; // the first is the line itself, the others are variations
};

TNode& NextOf(TNode& node, const TMove& move) {
    for (const auto& next : node.m_next)
        if (SameMove(next->m_move, move))
            return *next;
    node.m_next.push_back(std::make_unique<TNode>());
    node.m_next.back()->m_move = move;
    return *node.m_next.back();
}

/// A pawn that reaches the last rank without a figure being told becomes a queen.
TMove WithPromotion(const TChessboard& position, TMove move) {
    const bool bLastRank = RankOf(move.m_nTo) == (IsWhiteToMove(position) ? 7 : 0);
    if (PromotionKind(move) == kNoFigure && bLastRank && KindOf(position.m_board[move.m_nFrom]) == kPawn)
        move.m_nPromotion = kQueen;
    return move;
}

bool IsLegal(CPlayedLine& line, const TMove& move) {
    const std::vector<TMove> legal = line.LegalMoves();
    return std::any_of(legal.begin(), legal.end(), [&](const TMove& other) { return SameMove(other, move); });
}

/// Puts lines into the tree, as far as they are legal.
class CTree {
  public:
    explicit CTree(const TChessboard& start) : m_start(start) {}

    /// Returns the number of legal moves.
    std::size_t Add(const Variant& variant) {
        m_line.Start(m_start);
        TNode* node = &m_root;
        for (std::size_t i = 0; i < variant.moves.size(); ++i) {
            if (variant.moves[i].move.m_nFrom >= kSquares || variant.moves[i].move.m_nTo >= kSquares)
                return i;
            const TMove move = WithPromotion(m_line.Position(), variant.moves[i].move);
            if (!IsLegal(m_line, move))
                return i;
            node = &NextOf(*node, move);
            node->m_text = PlayInShortNotation(m_line, move);
            node->m_bMate = node->m_text.ends_with('#');
            AddComment(*node, variant.moves[i].comment);
        }
        return variant.moves.size();
    }

    [[nodiscard]] const TNode& Root() const { return m_root; }

  private:
    static void AddComment(TNode& node, const std::string& comment) {
        if (!comment.empty())
            node.m_comment += (node.m_comment.empty() ? "" : "; ") + comment;
    }

    const TChessboard& m_start;
    CPlayedLine m_line;
    TNode m_root;
};

Variant OneMove(const TMove& move) { return {{}, {{move, {}, {}}}}; }

void AddVariant(CTree& tree, const Variant& variant, std::vector<std::string>& faults) {
    const std::size_t nLegal = tree.Add(variant);
    if (nLegal < variant.moves.size())
        faults.push_back(InvalidVariantText(variant, nLegal + 1));
}

void AddLines(CTree& tree, const ChessProblem& problem, std::vector<std::string>& faults) {
    Variant played;
    for (const auto& position : problem.playedPositions)
        played.moves.push_back({position->m_lastMove, {}, {}});
    static_cast<void>(tree.Add(played));
    for (const bool bMain : {true, false})
        for (const auto& [name, variant] : problem.variants)
            if (IsMainVariantName(name) == bMain)
                AddVariant(tree, variant, faults);
    for (const TMove& key : problem.answer)
        static_cast<void>(tree.Add(OneMove(key)));
}

// --- text

/// Words of a game, in lines of bounded width.
class CMoveText {
  public:
    void Add(const std::string& word) {
        if (m_text.empty() || m_nColumn + 1 + word.size() > kWidth) {
            m_text += m_text.empty() ? "" : "\n";
            m_nColumn = 0;
        } else if (!m_bOpened) {
            m_text += ' ';
            ++m_nColumn;
        }
        m_text += word;
        m_nColumn += word.size();
        m_bOpened = false;
    }

    /// A bracket that the next word follows without a blank.
    void Open() {
        Add("(");
        m_bOpened = true;
    }

    void Close() {
        m_text += ')';
        ++m_nColumn;
    }

    void AddComment(std::string comment) {
        std::replace(comment.begin(), comment.end(), '}', ')');
        const std::string whole = "{" + OneLine(comment) + "}";
        std::string_view rest = whole;
        for (std::size_t end = rest.find(' '); end != std::string_view::npos; end = rest.find(' ')) {
            if (end > 0)
                Add(std::string(rest.substr(0, end)));
            rest.remove_prefix(end + 1);
        }
        Add(std::string(rest));
    }

    [[nodiscard]] const std::string& Text() const { return m_text; }

  private:
    std::string m_text;
    std::size_t m_nColumn = 0;
    bool m_bOpened = false;
};

/// A move with its number, which Black's moves have only where a line of them begins or goes on.
void WriteMoveOf(CMoveText& text, const TNode& node, int nPly, bool bNumbered) {
    if (nPly % 2 == 0)
        text.Add(std::to_string(nPly / 2 + 1) + ".");
    else if (bNumbered)
        text.Add(std::to_string(nPly / 2 + 1) + "...");
    text.Add(node.m_text);
    if (!node.m_comment.empty())
        text.AddComment(node.m_comment);
}

/// What follows a node, from ply nPly on. Only variations call it again: a line may be long.
void WriteLine(CMoveText& text, const TNode* node, int nPly, bool bNumbered) {
    for (; !node->m_next.empty(); node = node->m_next.front().get(), ++nPly) {
        WriteMoveOf(text, *node->m_next.front(), nPly, bNumbered);
        bNumbered = !node->m_next.front()->m_comment.empty() || node->m_next.size() > 1;
        for (std::size_t i = 1; i < node->m_next.size(); ++i) {
            const TNode& variation = *node->m_next[i];
            text.Open();
            WriteMoveOf(text, variation, nPly, true);
            WriteLine(text, &variation, nPly + 1, !variation.m_comment.empty());
            text.Close();
        }
    }
}

std::string TagPair(const char* name, std::string_view value) {
    std::string text = std::string("[") + name + " \"";
    for (const char c : OneLine(value)) {
        if (c == '"' || c == '\\')
            text += '\\';
        text += c;
    }
    return text + "\"]\n";
}

bool EndsInMate(const TNode& root) {
    const TNode* node = &root;
    while (!node->m_next.empty())
        node = node->m_next.front().get();
    return node->m_bMate;
}

std::string ResultText(const ChessProblem& problem, const TNode& root) {
    if (!EndsInMate(root))
        return "*";
    return problem.kind == kSelfmate ? "0-1" : "1-0";
}

std::string TagsText(const ChessProblem& problem, const std::string& result) {
    std::string themes;
    for (const std::string& tag : problem.tags)
        themes += (themes.empty() ? "" : ", ") + tag;
    std::string text = TagPair("Event", problem.description.empty() ? "?" : problem.description);
    text += TagPair("Site", "?") + TagPair("Date", "????.??.??") + TagPair("Round", std::to_string(problem.id)) +
            TagPair("White", "?") + TagPair("Black", "?") + TagPair("Result", result) + TagPair("SetUp", "1") +
            TagPair("FEN", WriteFEN(*problem.originalPosition, true));
    if (StipulationMoves(problem) != 0)
        text += TagPair("Stipulation", StipulationText(problem));
    return themes.empty() ? text : text + TagPair("Themes", themes);
}

} // namespace

std::string PlayInShortNotation(CPlayedLine& line, const TMove& move) {
    std::string text = WithoutSign(line, move);
    static_cast<void>(line.Play(move));
    if (line.IsInCheck())
        text += line.LegalMoves().empty() ? '#' : '+';
    return text;
}

std::size_t PlayVariant(CPlayedLine& line, const TChessboard& start, const Variant& variant) {
    line.Start(start);
    const auto end = std::find_if(variant.moves.begin(), variant.moves.end(),
                                  [&](const VariantMove& move) { return !line.Play(move.move); });
    return static_cast<std::size_t>(end - variant.moves.begin());
}

std::string InvalidVariantText(const Variant& variant, std::size_t nMove) {
    return "Move " + std::to_string(nMove) + " in the stored variant is invalid: \"" + variant.name + "\"";
}

std::string PgnText(const ChessProblem& problem, std::vector<std::string>& faults) {
    CTree tree(*problem.originalPosition);
    AddLines(tree, problem, faults);
    const std::string result = ResultText(problem, tree.Root());
    CMoveText moves;
    WriteLine(moves, &tree.Root(), 0, true);
    moves.Add(result);
    return TagsText(problem, result) + "\n" + moves.Text() + "\n";
}

} // namespace quillon
