#pragma once
// Where the problems of a solve come from: a file, standard input, the sample library of the program, or --fen.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "library/chess_problem.h"

namespace quillon {

/// A problem to solve, or one that cannot be read, in the order of its text.
struct TSourceItem {
    std::unique_ptr<ChessProblem> m_problem; // null for one that cannot be read
    std::optional<int> m_id;                 // as far as it is known
    int m_nLine = 0;                         // 0: from no file
    std::string m_error;                     // why it cannot be read
    int m_nColumn = 0;                       // of what cannot be read; 0: of nothing
};

struct TProblemSource {
    std::string m_name; // for messages: the path as given, "standard input"; empty for --fen
    std::vector<TSourceItem> m_items;
    std::vector<std::string> m_warnings; // whole lines: what is odd, and loses no problem
    std::vector<std::string> m_missing;  // whole lines: what was asked for and is not there
};

/// The problems of a file, "-" for standard input, nothing for the sample library.
///   ids     what was given to --id; empty for every problem.
///   Errors  ChessException, which names the file.
[[nodiscard]] TProblemSource ReadProblemSource(const std::optional<std::string>& file,
                                               const std::vector<std::string>& ids);

/// The one problem of --fen and --moves; a position that cannot be used is an item without a problem.
[[nodiscard]] TProblemSource MakeFenSource(const std::string& fen, int nMoves);

/// "FILE:LINE:COLUMN: problem ID: " as far as they are known.
[[nodiscard]] std::string PlaceText(const std::string& name, const TSourceItem& item);

} // namespace quillon
