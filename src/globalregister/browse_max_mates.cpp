#include "globalregister/browse_max_mates.h"

#include <set>

#include "core/chess_exception.h"
#include "globalregister/max_mates.h"
#include "globalregister/table_position.h"

namespace quillon {

namespace {

/// Equal men may stand on their squares in any order, each of which is an index, unless groups are numbered as
/// combinations.
std::size_t IndexesOfABoard(const TPositionIndexing& indexing) {
    std::size_t nIndexes = 1, nEqual = 0;
    const std::string& type = indexing.typeName;
    for (std::size_t i = 0; i < type.size() && !indexing.bUseCombinations; ++i) {
        nEqual = i > 0 && type[i] == type[i - 1] ? nEqual + 1 : 1;
        nIndexes *= nEqual;
    }
    return nIndexes;
}

} // namespace

CBrowseMaxMates::CBrowseMaxMates(const TGlobalRegister& data, const std::filesystem::path& installation,
                                 std::size_t nLimit)
    : m_data(data) {
    std::set<std::uint64_t> indexes;
    m_nMoves = GetMaxMoves(data, installation, indexes, nLimit * IndexesOfABoard(data), true);
    std::set<std::uint64_t> numbers; // of the boards
    for (const std::uint64_t index : indexes)
        if (TChessboard b = EmptyChessboard(); m_indexes.size() < nLimit && GetTablePosition(data, index, b))
            if (numbers.insert(data.GetIndex(b)).second)
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
