#pragma once
// CTableLengths: the elements of a table as lengths of mates, whatever form the data are in, and their correction.
//
// Of a table in the making only what is settled counts: the length without Black's mark, and nothing where none is.
// The details of bit data have no marks. A table that looks to be in the making, and is not said to be, has no lengths
// where Black's marks would be.
//
// Threads: HalfMoves from any thread, while nobody sets lengths.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "globalregister/global_register.h"
#include "globalregister/system_failure.h"

namespace quillon {

/// There is no room for data that are needed.
class CNoRoom : public CSystemFailure {
  public:
    using CSystemFailure::CSystemFailure;
};

/// An element that tells neither a length nor that there is none.
inline constexpr int kUnknownLength = -1;

class CTableLengths {
  public:
    /// Of data that are loaded.
    ///   bInTheMaking  the elements are those of a table whose levels are not done.
    ///   Errors        ChessException: elements that cannot be read. CNoRoom: a table of two bytes an element in the
    ///                 making that is not in memory.
    CTableLengths(TGlobalRegister& data, bool bInTheMaking);

    [[nodiscard]] const TGlobalRegister& Data() const { return m_data; }

    /// The file that was loaded, and of bit data that of the details.
    [[nodiscard]] std::vector<std::filesystem::path> Files() const;

    /// Is it not said to be in the making, and looks so?
    [[nodiscard]] bool LooksUnfinished() const { return m_bLooksUnfinished; }

    /// Reads the details of bit data into memory, if they take no more than so many bytes.
    ///   Result  the bytes that they take.
    ///   Errors  CDiskFailure: they cannot be read; ChessException: the file is not of their size.
    std::uint64_t HoldDetails(std::uint64_t nMost);

    /// Half-moves to mate with White to move: 0 no mate, kUnknownLength, else odd.
    ///   index  < Data().GetSize().
    [[nodiscard]] int HalfMoves(std::uint64_t index) const {
        if (m_elements == nullptr || m_data.bBitData) [[unlikely]]
            return OtherForm(index);
        return LengthOf(Element(index));
    }

    /// Half-moves by the details of bit data alone, whatever the pair of bits says; else as HalfMoves.
    [[nodiscard]] int DetailHalfMoves(std::uint64_t index) const;

    /// The pair of bits of bit data: does it say that White mates? Read from the file where pairs are not in memory.
    ///   Errors  CDiskFailure: it cannot be read.
    [[nodiscard]] bool PairSaysMate(std::uint64_t index) const;

    /// No mate is stored. Of bit data the pair tells: a level that was given up has left its lengths in the details,
    /// where it will find them again.
    ///   Errors  as PairSaysMate.
    [[nodiscard]] bool SaysNoMate(std::uint64_t index) const {
        return m_data.bBitData ? !PairSaysMate(index) : HalfMoves(index) == 0;
    }

    /// Pair and details of bit data say the same. True for all other data.
    ///   Errors  as PairSaysMate.
    [[nodiscard]] bool PairAgrees(std::uint64_t index) const {
        return !m_data.bBitData || PairSaysMate(index) == (DetailHalfMoves(index) != 0);
    }

    /// The longest mate of a legal position in moves; 0: none.
    [[nodiscard]] int LongestMate() const;

    /// The element that stands for a mate in so many moves where another is: with Black's mark, if that has one.
    ///   stored  as it is in the file of the table, or of the details.
    ///   Result  0 if an element has no room for the number.
    [[nodiscard]] std::uint16_t ElementFor(std::uint16_t stored, int nMoves) const;

    /// Corrects what is in memory; data on disk are read there.
    ///   element  of ElementFor.
    void SetElement(std::uint64_t index, std::uint16_t element);

  private:
    [[nodiscard]] std::uint32_t Element(std::uint64_t index) const;
    [[nodiscard]] int LengthOf(std::uint32_t element) const;
    [[nodiscard]] int OtherForm(std::uint64_t index) const;
    [[nodiscard]] bool ArePairsInMemory() const { return m_data.bBitData && !m_data.diskStream.is_open(); }

    TGlobalRegister& m_data;
    const bool m_bMarked; // in the making, and no bit data: details have no marks
    const bool m_bLooksUnfinished;
    std::uint32_t m_nLengthMask;         // the bits of an element that hold a length
    std::uint32_t m_nUnknown;            // from here on an element is none
    std::vector<std::uint8_t> m_details; // of bit data
    std::uint8_t* m_elements = nullptr;  // in memory: the table, or the details of bit data
    mutable std::ifstream m_pairs;       // of bit data whose pairs are not in memory
};

/// Do the elements of loaded data look as if their table was not finished? They are looked through, where the load has
/// not done that.
///   Errors  ChessException: elements that cannot be read.
[[nodiscard]] bool LooksUnfinished(const TGlobalRegister& data);

/// The file with the lengths beside bit data that were loaded from this file.
[[nodiscard]] std::filesystem::path DetailsBeside(const std::filesystem::path& path);

} // namespace quillon
