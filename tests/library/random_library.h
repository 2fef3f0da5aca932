#pragma once
// Seeded libraries with everything in them that survives being written, and a description of a problem that leaves no
// field out.

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "core/fen.h"
#include "core/notation.h"
#include "library/chess_problem.h"
#include "library/played_line.h"
#include "support/random_positions.h"

namespace quillon::testing {

inline std::string MovesText(const std::vector<TMove>& moves) {
    std::ostringstream text;
    for (const TMove& move : moves)
        text << int{move.m_nFrom} << '>' << int{move.m_nTo} << '=' << int{move.m_nPromotion} << ' ';
    return text.str();
}

/// Every field of a problem but its line.
inline std::string Description(const ChessProblem& p) {
    std::ostringstream text;
    text << "id " << p.id << " kind " << p.kind << " plies " << p.plies << " flags " << p.flags << "\nanswer "
         << MovesText(p.answer) << "\nexpected " << MovesText(p.expectedWhiteMoves) << "\noptions " << int{p.threads}
         << ' ' << int{p.levels} << ' ' << p.schedulerLevels << ' ' << p.lichessLevels << ' ' << p.globRegMB << ' '
         << p.stopRelaxHeuristicsOnFirstSolution << ' ' << p.useMainVariantAsSortIndications << ' ' << p.guiCheckCount
         << "\ndescription [" << p.description << "]\nposition " << WriteFEN(*p.originalPosition, false) << ' '
         << p.originalPosition->m_nMoves << "\nplayed";
    for (const auto& played : p.playedPositions)
        text << ' ' << WriteFEN(*played, false) << ' ' << played->m_nMoves;
    text << "\nmaterials";
    for (const std::string& material : p.requiredMaterials)
        text << ' ' << material;
    text << " |";
    for (const std::string& material : p.allSolutionsRequiredMaterials)
        text << ' ' << material;
    text << "\nclauses";
    for (const auto& [bit, argument] : p.heuristicClauses)
        text << ' ' << bit << '(' << argument << ')';
    for (const auto& [name, variant] : p.variants) {
        text << "\nvariant [" << name << "] [" << variant.name << ']';
        for (const VariantMove& move : variant.moves)
            text << ' ' << MovesText({move.move}) << move.text << " [" << move.comment << ']';
    }
    for (const std::string& tag : p.tags)
        text << "\ntag [" << tag << ']';
    for (const SortIndication& i : p.sortIndications)
        text << "\nindication " << i.m_nMove << ' ' << int{i.m_figure} << ' ' << int{i.m_nFrom} << ' ' << int{i.m_nTo}
             << ' ' << int{i.m_nPromotion} << ' ' << int{i.m_nCapture} << ' ' << int{i.m_nCheck} << ' '
             << i.m_bOnlyIfNotCapturable << ' ' << i.m_bWorst;
    return text.str();
}

inline std::string Description(const TProblemMap& library) {
    std::string text;
    for (const auto& [id, problem] : library)
        text += Description(*problem) + "\n";
    return text;
}

class CRandomLibrary {
  public:
    explicit CRandomLibrary(std::uint64_t seed) : m_rng(seed) {}

    TProblemMap Make(int nProblems) {
        TProblemMap library;
        for (int i = 0; i < nProblems; ++i) {
            auto problem = MakeProblem();
            const std::int32_t id = problem->id;
            library.insert_or_assign(id, std::move(problem));
        }
        return library;
    }

    int Below(int bound) { return reference::DrawInt(m_rng, bound); }

    std::unique_ptr<ChessProblem> MakeProblem() {
        auto problem = std::make_unique<ChessProblem>();
        problem->id = Below(2) == 0 ? Below(30) : Below(2'147'483'647);
        switch (Below(4)) {
        case 0:
            problem->kind = kNoStipulation;
            problem->plies = kNoPlies;
            break;
        case 1:
            SetStipulation(*problem, kSelfmate, 1 + Below(20));
            break;
        default:
            SetStipulation(*problem, kDirectMate, 1 + Below(299));
        }
        TChessboard board = EmptyChessboard();
        static_cast<void>(ReadFEN(board, reference::RandomAnyPlacement(m_rng)));
        SetOriginalPosition(*problem, board);
        AddOptions(*problem);
        AddTexts(*problem);
        if (Below(2) == 0)
            AddAnswer(*problem);
        else if (problem->kind == kNoStipulation)
            AddMoves(*problem);
        return problem;
    }

  private:
    /// Words that mean something to the reader, and letters of more than one byte.
    std::string Text(std::string_view without) {
        static const std::vector<std::string> kWords{
            "mate", "{", "}",        "[",  "]",  "//", "/*", "*/", "ł",   "Ж",   "#TAGS",          "1 #2", ":",
            ",",    "!", "VARIANTS", "2.", "\"", "\\", "\t", "é",  "FEN", "0-0", "//!ENDVARIANTS", "x"};
        std::string text = "a";
        for (int i = Below(6); i > 0; --i) {
            const std::string& word = kWords[static_cast<std::size_t>(Below(static_cast<int>(kWords.size())))];
            if (word.find_first_of(without) == std::string::npos)
                text += (Below(2) == 0 ? " " : "") + word;
        }
        return text + "z";
    }

    TSquare Square() { return static_cast<TSquare>(Below(kSquares)); }

    void AddOptions(ChessProblem& p) {
        constexpr ProblemFlags kWritten = 0x1 | 0x2 | 0x8 | 0x10 | 0x20 | 0x80 | 0x100 | 0x800 | 0x1000 | 0x2000 |
                                          0x4000 | 0x8000 | 0x10000 | 0x20000;
        for (ProblemFlags bit = 1; bit <= kFlagBruteForce; bit <<= 1)
            p.flags |= Below(4) == 0 ? bit & kWritten : 0;
        p.useMainVariantAsSortIndications = (p.flags & kFlagUseMainVariantAsSortIndications) != 0 ? 1 : 0;
        if ((p.flags & (kFlagGuiCheck | kFlagGuiCheckBestDefence)) != 0)
            p.guiCheckCount = static_cast<unsigned>(1 + Below(4));
        if (Below(3) == 0)
            p.threads = static_cast<std::int8_t>(Below(128));
        for (int i = Below(4) - 1; i > 0; --i)
            p.requiredMaterials.insert(Below(2) == 0 ? "RRk" : "Qp");
    }

    void AddTexts(ChessProblem& p) {
        if (Below(3) > 0)
            p.description = Text("");
        for (int i = Below(3); i > 0; --i)
            p.tags.insert(Text(""));
        for (int i = Below(3); i > 0; --i)
            AddVariant(p);
        for (int i = Below(4); i > 0; --i)
            p.sortIndications.insert(Indication());
    }

    void AddVariant(ChessProblem& p) {
        Variant variant;
        variant.name = Below(2) == 0 ? "Main variant" : Below(5) == 0 ? "" : Text("}");
        for (int i = Below(6); i > 0; --i) {
            const bool bWhite = variant.moves.size() % 2 == 0;
            const TMove move{Square(), Square(), 0, 0};
            std::string text = Below(6) == 0 ? "0-0-0"
                               : IsNullMove(move)
                                   ? "Ke1-e2"
                                   : WriteMove(move, Below(2) == 0 ? kWhiteQueen : kWhitePawn, Below(2) == 0);
            const TMove read = ParseMove(text, bWhite);
            text += Below(3) == 0 ? "+" : "";
            variant.moves.push_back({read, text, Below(3) == 0 ? Text("]") : ""});
        }
        std::string name = variant.name;
        p.variants.insert_or_assign(std::move(name), std::move(variant));
    }

    SortIndication Indication() {
        static constexpr TFigure kKinds[] = {kKing, kPawn, kBishop, kRook, kQueen, kKnight};
        SortIndication i;
        i.m_nMove = Below(2) == 0 ? 0 : Below(40);
        i.m_figure = Below(2) == 0 ? kNoFigure : static_cast<TFigure>(kWhite | kKinds[Below(6)]);
        i.m_nFrom = Below(2) == 0 ? kNoSquare : Square();
        i.m_nTo = Square();
        if (Below(4) == 0) {
            i.m_nFrom = kE1;
            i.m_nTo = Below(2) == 0 ? kG1 : kC1;
        }
        i.m_nPromotion = Below(4) == 0 ? kKinds[Below(6)] : kNoFigure;
        constexpr std::uint8_t kCaptures[] = {kMustNotCapture, kMustCapture, kMayCapture};
        i.m_nCapture = kCaptures[Below(3)];
        i.m_nCheck = static_cast<std::uint8_t>(Below(3));
        i.m_bOnlyIfNotCapturable = Below(3) == 0;
        i.m_bWorst = Below(3) == 0;
        return i;
    }

    void AddAnswer(ChessProblem& p) {
        static constexpr TFigure kPromotions[] = {kQueen, kRook, kBishop, kKnight, kKing, kPawn};
        p.flags |= kFlagAnswer;
        for (int i = Below(4); i > 0; --i) {
            TMove move{Square(), Square(), 0, 0};
            if (Below(5) == 0)
                move = {kE1, Below(2) == 0 ? kG1 : kC1, 0, 0};
            if (Below(5) == 0)
                move = {WhiteKingSquare(*p.originalPosition), Square(), 0, 0}; // not every such move is a castling
            if (Below(8) == 0)
                move.m_nTo = static_cast<TSquare>(64 + Below(26));
            if (Below(4) == 0)
                move.m_nPromotion = kPromotions[Below(6)];
            p.answer.push_back(move);
        }
    }

    void AddMoves(ChessProblem& p) {
        CPlayedLine line;
        line.Start(*p.originalPosition);
        for (int i = Below(12); i > 0; --i) {
            const std::vector<TMove> moves = line.LegalMoves();
            if (moves.empty())
                return;
            static_cast<void>(PlayOn(p, line, moves[static_cast<std::size_t>(Below(static_cast<int>(moves.size())))]));
        }
    }

    std::mt19937_64 m_rng;
};

} // namespace quillon::testing
