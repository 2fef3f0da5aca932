#include "globalregister/browse_max_mates.h"

#include <set>

#include "core/chess_exception.h"
#include "globalregister/max_mates.h"

namespace quillon {

CBrowseMaxMates::CBrowseMaxMates(const TGlobalRegister& data, const std::filesystem::path& installation,
                                 std::size_t nLimit)
    : m_data(data) {
    std::set<std::uint64_t> indexes;
    m_nMoves = GetMaxMoves(data, installation, indexes, nLimit, true);
    m_indexes.assign(indexes.begin(), indexes.end());
}

std::optional<TChessboard> CBrowseMaxMates::Next(INotifier& notifier) {
    if (m_indexes.empty())
        return std::nullopt;
    if (m_nShown == m_indexes.size()) {
        if (!notifier.AskYesNo(kRestartBrowsingQuestion, "Question"))
            return std::nullopt;
        m_nShown = 0;
    }
    TChessboard b = EmptyChessboard();
    if (!m_data.GetPositionByIndex(m_indexes[m_nShown++], b) || !TryRecountFigures(b, true))
        throw ChessException("Error reading data of type " + m_data.typeName);
    return b;
}

std::string CBrowseMaxMates::Caption() const {
    return "#" + std::to_string(m_nMoves) + " (" + std::to_string(m_nShown) + "/" + std::to_string(m_indexes.size()) +
           ")";
}

} // namespace quillon
