// The files of a register: setting its position, saving and loading.

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

#include "core/chess_exception.h"
#include "tempregister/chessboard_register.h"
#include "tempregister/register_log.h"
#include "tempregister/subproblem_file.h"

namespace quillon {

namespace {

TChessboardId IdOf(const TBoardBytes& position) {
    TChessboard b = EmptyChessboard();
    b.m_board = position;
    return MakeChessboardId(b);
}

// While records are read, an entry must not displace another one of the same file.
class CKeepSubsumed {
  public:
    explicit CKeepSubsumed(bool& bRemoveSubsumed) : m_bRemoveSubsumed(bRemoveSubsumed) { m_bRemoveSubsumed = false; }
    CKeepSubsumed(const CKeepSubsumed&) = delete;
    CKeepSubsumed& operator=(const CKeepSubsumed&) = delete;
    ~CKeepSubsumed() { m_bRemoveSubsumed = true; }

  private:
    bool& m_bRemoveSubsumed;
};

} // namespace

void TChessboardRegister<bool>::SetPosition(const TBoardBytes& position, TDeferredLoad* pDeferred) {
    if (pDeferred != nullptr)
        pDeferred->m_bPending = false;
    if (position == board)
        return;
    const TChessboardId newId = bTemporary ? TChessboardId{} : IdOf(position);
    Clear();
    board = position;
    id = newId;
    problemHeader = {};
    moves.clear();
    subproblemsPath.clear();
    problemPath.clear();
    if (bTemporary)
        return;
    const std::filesystem::path& folder = RegisterOptions().m_solvedProblemsFolder;
    subproblemsPath = SolvedPositionPath(folder, id, kSubproblemsExtension);
    problemPath = SolvedPositionPath(folder, id, kProblemExtension);
    if (pDeferred != nullptr)
        pDeferred->m_bPending = true;
    else
        LoadSubproblems();
}

bool TChessboardRegister<bool>::SaveSubproblems() {
    if (bTemporary || !MoveToBackup(subproblemsPath))
        return false;
    std::ofstream file(subproblemsPath, std::ios::binary);
    const CSharedLock shared(lock);
    int count = 0;
    for (const auto& [length, entries] : *this)
        for (const auto& [item, info] : entries)
            if (!WriteSubproblem(file, {item, info}) || ++count == kMaxSavedSubproblems)
                return false;
    file.close();
    return static_cast<bool>(file);
}

bool TChessboardRegister<bool>::ReadRecords(std::istream& file) {
    TSubproblemRecord record;
    for (;;) {
        const ERecordRead read = ReadSubproblem(file, record);
        if (read != ERecordRead::Record)
            return read == ERecordRead::End;
        const TSubproblemRegisterInfo<bool>& info = record.m_info;
        if ((info.nMoves & 1) != 0)
            Insert(info.nMoves, record.m_item.m_board, info.bValue, &info.nMove, false);
        else
            InsertDefence(info.nMoves, record.m_item.m_board, info.bValue, &info.nMove, false);
    }
}

bool TChessboardRegister<bool>::LoadSubproblems() {
    std::error_code error;
    if (bTemporary || !std::filesystem::is_regular_file(subproblemsPath, error))
        return false;
    std::ifstream file(subproblemsPath, std::ios::binary);
    if (!file)
        return false;
    Clear();
    const CKeepSubsumed keep(bRemoveSubsumed);
    try {
        return ReadRecords(file);
    } catch (const ChessException&) { // the file contradicts itself: what came before is kept
        return false;
    }
}

} // namespace quillon
