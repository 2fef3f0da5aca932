#include "library/epd_file.h"

#include <algorithm>
#include <optional>
#include <string>

#include "core/fen.h"
#include "library/ascii.h"
#include "library/one_line.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\r";

/// One operation: its opcode and operands. Quotes around an operand have been taken off.
struct TOperation {
    CTextPosition m_position; // its last lexeme is the opcode
    std::string_view m_opcode;
    std::vector<std::string_view> m_operands;
};

/// Reads one line from left to right into one problem.
class CEpdLine {
  public:
    CEpdLine(ChessProblem& problem, CTextPosition line) : m_problem(problem), m_position(line) {}

    void Read() {
        const CTextPosition placement = ReadFields();
        SkipCounters();
        while (const std::optional<TOperation> operation = NextOperation())
            Apply(*operation);
        if (m_nMoves == 0)
            m_position.Fail("no stipulation (bm #N or dm N)");
        AtLexeme(placement, [&] { SetOriginalPosition(m_problem, m_board); });
    }

  private:
    template <class TRead> static void AtLexeme(const CTextPosition& position, TRead read) {
        try {
            read();
        } catch (const ChessException& failure) {
            position.Fail(failure.what());
        }
    }

    void SkipBlanks() { m_position.Advance(m_position.Rest().find_first_not_of(kBlanks)); }

    std::string_view NextField() {
        SkipBlanks();
        m_position.MarkLexeme();
        const std::string_view word = m_position.Rest().substr(0, m_position.Rest().find_first_of(" \t\r;"));
        m_position.Advance(word.size());
        return word;
    }

    [[noreturn]] void FailAtField(const char* expected, std::string_view found) const {
        m_position.Fail(std::string(expected) + " expected. Found: " + std::string(found));
    }

    /// The four fields of the position. The result is the place of the placement, for what is wrong with it as a whole.
    CTextPosition ReadFields() {
        const std::string_view placement = NextField();
        const CTextPosition placementPosition = m_position;
        AtLexeme(m_position, [&] { static_cast<void>(ReadFEN(m_board, placement)); });
        const std::string_view side = NextField();
        if (side == "b")
            m_position.Fail("Black is to move; a problem starts with White to move.");
        if (side != "w")
            FailAtField("Side to move (w or b)", side);
        const std::string_view castling = NextField();
        if (castling != "-" && (castling.empty() || castling.find_first_not_of("KQkq") != std::string_view::npos))
            FailAtField("Castling field", castling);
        const std::string_view enPassant = NextField();
        if (enPassant != "-" && !IsEnPassantSquare(enPassant))
            FailAtField("En passant field", enPassant);
        return placementPosition;
    }

    static bool IsEnPassantSquare(std::string_view text) {
        return text.size() == 2 && ToUpperAscii(text[0]) >= 'A' && ToUpperAscii(text[0]) <= 'H' &&
               (text[1] == '3' || text[1] == '6');
    }

    /// The counters of a full FEN may stand between position and operations.
    void SkipCounters() {
        for (int nCounters = 0; nCounters < 2; ++nCounters) {
            const CTextPosition before = m_position;
            if (!AreAllDigits(NextField())) {
                m_position = before;
                return;
            }
        }
    }

    /// An operand; none at the end of the operation. A quoted one may hold anything but a quote.
    std::optional<std::string_view> NextOperand() {
        SkipBlanks();
        if (!m_position.Rest().starts_with('"')) {
            const std::string_view word = NextField();
            return word.empty() ? std::nullopt : std::optional(word);
        }
        m_position.MarkLexeme();
        const std::string_view quoted = m_position.Rest().substr(1);
        const auto end = quoted.find('"');
        if (end == std::string_view::npos)
            m_position.Fail("Closing quote expected.");
        m_position.Advance(end + 2);
        return quoted.substr(0, end);
    }

    std::optional<TOperation> NextOperation() {
        std::string_view opcode = NextField();
        while (opcode.empty() && m_position.Rest().starts_with(';')) {
            m_position.Advance(1);
            opcode = NextField();
        }
        if (opcode.empty())
            return std::nullopt;
        TOperation operation{m_position, opcode, {}};
        while (const std::optional<std::string_view> operand = NextOperand())
            operation.m_operands.push_back(*operand);
        return operation;
    }

    void Apply(const TOperation& operation) {
        const auto& operands = operation.m_operands;
        if (operation.m_opcode == "id" && !operands.empty()) {
            m_problem.description = TrimText(DecodeText(operands.front()));
        } else if (operation.m_opcode == "dm") {
            ApplyStipulation(operation, operands.empty() ? "" : operands.front());
        } else if (operation.m_opcode == "bm" && !operands.empty() && operands.front().starts_with('#')) {
            ApplyStipulation(operation, operands.front().substr(1));
        }
    }

    void ApplyStipulation(const TOperation& operation, std::string_view number) {
        const CTextPosition& position = operation.m_position;
        if (!AreAllDigits(number))
            position.Fail("Invalid stipulation: " + std::string(number));
        if (operation.m_operands.size() > 1)
            position.Fail("Semicolon expected after the stipulation. Found: " + std::string(operation.m_operands[1]));
        const int nMoves = LeadingNumber(number);
        if (m_nMoves != 0 && m_nMoves != nMoves)
            position.Fail("Two stipulations: " + std::to_string(m_nMoves) + " and " + std::to_string(nMoves));
        AtLexeme(position, [&] { SetStipulation(m_problem, kDirectMate, nMoves); });
        m_nMoves = nMoves;
    }

    /// The format names no encoding: what is valid UTF-8 is meant to be.
    static std::string DecodeText(std::string_view bytes) {
        return IsValidUtf8(bytes) ? std::string(bytes) : DecodeLegacyText(bytes);
    }

    ChessProblem& m_problem;
    CTextPosition m_position;
    TChessboard m_board = EmptyChessboard();
    int m_nMoves = 0; // 0 until the stipulation has been read
};

bool IsSkipped(std::string_view line) {
    line = Trimmed(line, kBlanks);
    return line.empty() || line.starts_with('#') || line.starts_with("//");
}

/// Reads one line of the file, as the problem of that number; false if it cannot be read.
bool ReadLine(std::string_view line, int nLine, std::int32_t id, const TOnProblem& onProblem, const TOnError& onError) {
    auto problem = std::make_unique<ChessProblem>();
    problem->id = id;
    problem->line = nLine;
    try {
        CEpdLine(*problem, CTextPosition(line, nLine)).Read();
    } catch (ProblemFileError& error) {
        error.SetProblemId(id);
        onError(error);
        return false;
    }
    onProblem(std::move(problem));
    return true;
}

} // namespace

void ReadEpdProblems(std::string_view text, const TOnProblem& onProblem, const TOnError& onError) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size());
    std::int32_t id = 0;
    int nFailures = 0;
    for (int nLine = 1; !text.empty(); ++nLine) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (IsSkipped(line) || ReadLine(line, nLine, ++id, onProblem, onError))
            continue;
        if (++nFailures > kMostFailures)
            return onError(TooManyFailures({nLine + 1, 1}));
    }
}

std::string EpdText(const ChessProblem& problem) {
    const std::string fen = WriteFEN(*problem.originalPosition, true);
    // The four fields of the position; the counters behind them are none of the format.
    std::string text = fen.substr(0, fen.rfind(' ', fen.rfind(' ') - 1));
    text += " bm #" + std::to_string(StipulationMoves(problem)) + ";";
    if (!problem.description.empty()) {
        std::string description = OneLine(problem.description);
        std::replace(description.begin(), description.end(), '"', '\'');
        text += " id \"" + description + "\";";
    }
    return text + " c0 \"" + std::to_string(problem.id) + "\";\n";
}

bool LooksLikeEpd(std::string_view line) {
    line = Trimmed(line, kBlanks);
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    return !word.starts_with('/') && word.find('/') != std::string_view::npos &&
           word.find_first_not_of("KQRBNPkqrbnp12345678/") == std::string_view::npos;
}

} // namespace quillon
