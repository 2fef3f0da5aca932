#pragma once
// CTableLengths: the elements of a table as lengths of mates, whatever form the data are in, and their correction.
//
// Of a table in the making only what is settled counts: the length without Black's mark, and nothing where none is.
//
// Threads: HalfMoves from any thread, while nobody sets lengths.

#include <cstdint>
#include <filesystem>
#include <vector>

#include "globalregister/global_register.h"

namespace quillon {

/// An element that tells neither a length nor that there is none.
inline constexpr int kUnknownLength = -1;

class CTableLengths {
  public:
    /// Of data that are loaded. Bit data get their details read into memory, where they fit.
    ///   bInTheMaking  the elements are those of a table whose levels are not done.
    ///   Errors        ChessException: details that cannot be read; a table of two bytes an element in the making that
    ///   is
    ///                 not in memory.
    CTableLengths(TGlobalRegister& data, bool bInTheMaking);

    [[nodiscard]] const TGlobalRegister& Data() const { return m_data; }

    /// Half-moves to mate with White to move: 0 no mate, kUnknownLength, else odd.
    ///   index  < Data().GetSize().
    [[nodiscard]] int HalfMoves(std::uint64_t index) const {
        if (m_elements == nullptr || m_data.bBitData) [[unlikely]]
            return OtherForm(index);
        return LengthOf(Element(index));
    }

    /// The longest mate in moves; 0: none.
    [[nodiscard]] int LongestMate() const;

    /// The element that stands for a mate in so many moves at this index: with Black's mark, where there is one.
    ///   Result  0 if an element has no room for the number.
    [[nodiscard]] std::uint16_t ElementFor(std::uint64_t index, int nMoves) const;

    /// Corrects what is in memory; data on disk are read there.
    ///   element  of ElementFor.
    void SetElement(std::uint64_t index, std::uint16_t element);

  private:
    [[nodiscard]] std::uint32_t Element(std::uint64_t index) const;
    [[nodiscard]] int LengthOf(std::uint32_t element) const;
    [[nodiscard]] int OtherForm(std::uint64_t index) const;
    void ReadDetails();

    TGlobalRegister& m_data;
    const bool m_bInTheMaking;
    std::uint32_t m_nLengthMask;         // the bits of an element that hold a length
    std::uint32_t m_nUnknown;            // from here on an element is none
    std::vector<std::uint8_t> m_details; // of bit data
    std::uint8_t* m_elements = nullptr;  // in memory: the table, or the details of bit data
};

/// The file with the lengths beside bit data that were loaded from this file.
[[nodiscard]] std::filesystem::path DetailsBeside(const std::filesystem::path& path);

} // namespace quillon
