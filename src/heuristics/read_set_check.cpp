#include "heuristics/read_set_check.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "core/chess_exception.h"
#include "core/search_context.h"
#include "heuristics/heuristics_dialog.h"
#include "search/analysis.h"

namespace quillon {

namespace {

/// Keeps the message that has stopped the checks: the last one.
class CLastMessage final : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view) override {
        m_text = text;
        std::ranges::replace(m_text, '\n', ' ');
    }
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return false; }

    std::string m_text;
};

} // namespace

void CheckReadHeuristics(const TReadHeuristics& read, const TChessboard& board) {
    const std::unique_ptr<TSearchContext> context = NewSearchContext();
    TAnalysis analysis;
    TChessboard root = board;
    root.m_pContext = context.get();
    context->m_pRoot = &root; // watched figures are counted on it
    root.m_pAnalysis = &analysis;
    root.m_nHeuristics = read.m_nHeuristics;
    StoreReadHeuristics(read, root, *context, analysis);
    THeuristicsDialog dialog = ReadHeuristicsDialog(root);
    dialog.m_bFindForcedMate = (read.m_nHeuristics & SH_FINDFORCEDMATE) != 0; // it opens without, beside the sea snake
    CLastMessage message;
    if (!ApplyHeuristicsDialog(root, dialog, message))
        throw ChessException("Heuristics: " + message.m_text);
}

} // namespace quillon
