#pragma once
// CExpectedMate: what the element of a position must be, by the rules of chess and the elements of the positions one
// move ahead.
//
//   White to move: the least over White's moves of the greatest over Black's replies, and two half-moves more; a move
//   that mates is one half-move. A move that leaves Black without a move and not in check mates nobody.
//
// Positions of a table have neither castling nor en passant. After a double step of Black an en passant capture may be
// quicker than what the table says of the position: those captures are then tried, too.
//
// Threads: one object a thread; the tables are only read.

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/chess_exception.h"
#include "core/search_context.h"
#include "globalregister/global_registers.h"
#include "globalregister/verification/table_lengths.h"

namespace quillon {

/// The tables that one move from the positions of a type leads to.
///   Threads  made and let go on one thread, read from any.
class COneMoveTables {
  public:
    /// Loads the data of all other types that can be needed, as far as there are any and they are finished.
    /// Those that look unfinished are not used. Details of bit data are held in memory as far as the quota allows.
    ///   own   of the type itself, kept by the caller.
    ///   Errors  ChessException: damaged data. CNoRoom: data that there is no room for.
    COneMoveTables(CTableLengths& own, CGlobalRegisters& registers);

    [[nodiscard]] const CTableLengths& Own() const { return m_own; }

    /// The files of all other types.
    [[nodiscard]] std::vector<std::filesystem::path> OtherFiles() const;

    /// Of another type than the table's own; null if there are none.
    [[nodiscard]] const CTableLengths* Find(TPositionType type) const {
        const auto place = m_others.find(type);
        return place == m_others.end() ? nullptr : place->second.get();
    }

  private:
    void HoldDetails(const CGlobalRegisters& registers);

    CTableLengths& m_own;
    std::vector<std::unique_ptr<CRegisterUse>> m_uses;
    std::map<TPositionType, std::unique_ptr<CTableLengths>> m_others;
};

/// A table that a position needs is not there, or tells nothing of it.
class CNoTable : public ChessException {
  public:
    using ChessException::ChessException;
};

class CExpectedMate {
  public:
    /// A table has White to move: so many plies are left in its positions, enough for all that is tried.
    static constexpr std::uint16_t kPlies = 13;

    explicit CExpectedMate(const COneMoveTables& tables);

    /// Puts the position of an index onto the board.
    ///   Result  false: the index names none, or none that is legal with White to move.
    [[nodiscard]] bool SetPosition(std::uint64_t index);

    [[nodiscard]] const TChessboard& Position() const { return RootSlot(*m_context, kPlies); }

    /// Half-moves to mate of the position on the board, 0 for none.
    ///   Errors  CNoTable "Register not found or loaded for position %s !"; ChessException: damaged data.
    [[nodiscard]] int ComputeExpected();

  private:
    [[nodiscard]] int BestWhiteMove(TChessboard& b, bool bOtherType, bool bEnPassantOnly);
    [[nodiscard]] int AfterWhiteMove(TChessboard& b, bool bOtherType, int nBest);
    [[nodiscard]] int WhiteToMove(TChessboard& b, bool bOtherType);
    [[nodiscard]] int Look(const TChessboard& b, bool bOtherType) const;

    const COneMoveTables& m_tables;
    TChessboard m_empty; // the root of the game as castlings see it: no king is at home
    std::unique_ptr<TSearchContext> m_context;
};

/// What to tell of data that there is no room for.
[[nodiscard]] std::string NoRoomText(std::string_view typeName);

/// As in logs and messages: with White to move and without castlings.
[[nodiscard]] std::string TablePositionFEN(const TChessboard& b);

} // namespace quillon
