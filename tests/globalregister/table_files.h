#pragma once
// Files of precalculated data for tests: tables of three men by rules of their own, written by the writers of the
// product.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/notifier.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/random_access_packed_buffer.h"
#include "globalregister/packed/simple_packing.h"
#include "globalregister/position_indexing.h"
#include "globalregister/precalc_read.h"
#include "support/three_men_table.h"

namespace quillon {

using TElements = std::vector<std::uint8_t>;

inline const reference::ThreeMenTable& ReferenceTable(const std::string& type) {
    if (type == "Q") {
        static const reference::ThreeMenTable queen('Q');
        return queen;
    }
    static const reference::ThreeMenTable rook('R');
    return rook;
}

/// Kings and piece on these squares, with what names the position: board, kings, counters.
inline TChessboard ThreeMenBoard(const std::string& type, int whiteKing, int piece, int blackKing) {
    TChessboard b = EmptyChessboard();
    b.m_board[static_cast<std::size_t>(whiteKing)] = kWhiteKing;
    b.m_board[static_cast<std::size_t>(piece)] = type == "Q" ? kWhiteQueen : kWhiteRook;
    b.m_board[static_cast<std::size_t>(blackKing)] = kBlackKing;
    b.m_whiteKingFile = static_cast<std::int8_t>(whiteKing % 8);
    b.m_whiteKingRank = static_cast<std::int8_t>(whiteKing / 8);
    b.m_blackKingFile = static_cast<std::int8_t>(blackKing % 8);
    b.m_blackKingRank = static_cast<std::int8_t>(blackKing / 8);
    (type == "Q" ? b.m_whiteQueens : b.m_whiteRooks) = 1;
    return b;
}

/// Calls visit(whiteKing, piece, blackKing) for all squares on which three men can stand.
template <class TVisit> void ForAllThreeMen(TVisit visit) {
    for (int w = 0; w < kSquares; ++w)
        for (int p = 0; p < kSquares; ++p)
            for (int b = 0; b < kSquares; ++b)
                if (w != p && p != b && w != b && std::max(std::abs(w % 8 - b % 8), std::abs(w / 8 - b / 8)) > 1)
                    visit(w, p, b);
}

/// The plain table of "Q" or "R".
inline TElements ThreeMenElements(const std::string& type) {
    const TPositionIndexing indexing(type);
    TElements elements(indexing.GetSize(), 0);
    ForAllThreeMen([&](int w, int p, int k) {
        elements[indexing.GetIndex(ThreeMenBoard(type, w, p, k))] =
            static_cast<std::uint8_t>(ReferenceTable(type).Length(w, p, k));
    });
    return elements;
}

inline void WriteElements(const std::filesystem::path& path, const TElements& bytes) {
    std::filesystem::create_directories(path.parent_path());
    ASSERT_TRUE(WriteWholeFile(path, bytes)) << path;
}

inline void WriteLz4(const std::filesystem::path& path, const TElements& elements) {
    TElements packed;
    ASSERT_TRUE(PackBlock(elements, packed, 1));
    WriteElements(path, packed);
}

inline void WriteSimple(const std::filesystem::path& path, const TElements& elements) {
    TElements packed;
    ASSERT_TRUE(PackBlockLong(PackSimple(elements).value(), packed, 1));
    WriteElements(path, packed);
}

inline void WriteLzw(const std::filesystem::path& path, const TElements& elements) {
    std::filesystem::create_directories(path.parent_path());
    const auto writer = RandomAccessLZWBuffer::MakePackedWriter(1);
    ASSERT_TRUE(writer->Compress(elements.size(), elements, true, 0, 0, 1));
    ASSERT_TRUE(writer->Save(path, elements[0]));
}

/// Hears what is told, and gives the answers of a list; no further ones: no.
class CHeardBoxes final : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view title) override {
        m_told.push_back(std::string(title) + ": " + std::string(text));
    }
    bool AskYesNo(std::string_view text, std::string_view) override {
        m_asked.emplace_back(text);
        return m_asked.size() <= m_answers.size() && m_answers[m_asked.size() - 1];
    }
    std::vector<std::string> m_told, m_asked;
    std::vector<bool> m_answers;
};

} // namespace quillon
