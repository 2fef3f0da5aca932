#include "globalregister/browse_max_mates.h"

#include <set>

#include "core/chess_exception.h"
#include "globalregister/max_mates.h"
#include "globalregister/table_position.h"

namespace quillon {

CBrowseMaxMates::CBrowseMaxMates(const TGlobalRegister& data, const std::filesystem::path& installation,
                                 std::size_t nLimit)
    : m_data(data) {
    std::set<std::uint64_t> indexes;
    m_nMoves = GetMaxMoves(data, installation, indexes, nLimit, true);
    for (const std::uint64_t index : indexes)
        if (TChessboard b = EmptyChessboard(); GetTablePosition(data, index, b))
            m_indexes.push_back(index);
    if (m_indexes.empty() && m_nMoves != 0)
        throw ChessException("Error reading data of type " + data.typeName);
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
    if (!GetTablePosition(m_data, m_indexes[m_nShown++], b))
        throw ChessException("Error reading data of type " + m_data.typeName);
    return b;
}

std::string CBrowseMaxMates::Caption() const {
    return "#" + std::to_string(m_nMoves) + " (" + std::to_string(m_nShown) + "/" + std::to_string(m_indexes.size()) +
           ")";
}

} // namespace quillon
