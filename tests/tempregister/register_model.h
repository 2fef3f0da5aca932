#pragma once
// What the hash table of a register has to answer, told by a std::map and the rules one by one.

#include <cstdint>
#include <map>

#include "tempregister/register_bucket.h"

namespace quillon::test {

/// The longest mate and no mate of one board.
struct TModelEntry {
    int m_nMate = 0;   // final: shortest mate. Doubtful: not doubtful up to
    int m_nNoMate = 0; // final: longest no mate. Doubtful: doubtful up to
};

class CRegisterModel {
  public:
    void Insert(int nMoves, const TBoardBytes& board, bool bMate, bool bRepair) {
        TModelEntry& entry = m_entries[board];
        if (bMate && (entry.m_nMate == 0 || nMoves < entry.m_nMate))
            entry.m_nMate = nMoves;
        if (!bMate && nMoves > entry.m_nNoMate)
            entry.m_nNoMate = nMoves;
        if (bRepair && entry.m_nMate != 0 && entry.m_nNoMate >= entry.m_nMate)
            entry.m_nNoMate = entry.m_nMate == 1 ? 0 : entry.m_nMate - 2;
    }

    void InsertDoubtful(int nMoves, const TBoardBytes& board, bool bFirstWord) {
        TModelEntry& entry = m_entries[board];
        int& length = bFirstWord ? entry.m_nMate : entry.m_nNoMate;
        if (nMoves > length)
            length = nMoves;
    }

    [[nodiscard]] int Find(int nMoves, const TBoardBytes& board) const {
        const auto entry = m_entries.find(board);
        if (entry == m_entries.end())
            return -2;
        if (entry->second.m_nNoMate != 0 && nMoves <= entry->second.m_nNoMate)
            return 0;
        return entry->second.m_nMate != 0 && nMoves >= entry->second.m_nMate ? 1 : -2;
    }

    [[nodiscard]] bool IsDoubtful(int nMoves, const TBoardBytes& board) const {
        const auto entry = m_entries.find(board);
        return entry != m_entries.end() && entry->second.m_nNoMate != 0 && nMoves <= entry->second.m_nNoMate;
    }

    [[nodiscard]] std::size_t Remove(int mateLimit, int noMateLimit) {
        return std::erase_if(m_entries, [&](const auto& entry) {
            return entry.second.m_nMate <= mateLimit && entry.second.m_nNoMate <= noMateLimit;
        });
    }

    std::map<TBoardBytes, TModelEntry> m_entries;
};

} // namespace quillon::test
