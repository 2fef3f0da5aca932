#pragma once
// CBrowseMaxMates: a walk through the positions of a table that have its longest mate.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "globalregister/global_registers.h"

namespace quillon {

/// Asked at the end of the walk; yes begins it anew.
inline constexpr std::string_view kRestartBrowsingQuestion = "No more such positions. Restart search from beginning?";

class CBrowseMaxMates {
  public:
    /// Before the first position.
    ///   data      used until this goes.
    ///   nLimit    positions at most. Those that differ only in which of equal men is which are one.
    ///   Errors    ChessException: damaged data, among them a longest mate that no legal position has.
    CBrowseMaxMates(const TGlobalRegister& data, const std::filesystem::path& installation, std::size_t nLimit);

    /// Moves of the longest mate; 0: the table has none, and there are no positions.
    [[nodiscard]] std::uint32_t Moves() const { return m_nMoves; }
    [[nodiscard]] std::size_t Count() const { return m_indexes.size(); }

    /// The next position, as it stands in the table; none at the end of the walk, unless the user wants to begin anew.
    [[nodiscard]] std::optional<TChessboard> Next(INotifier& notifier);

    /// Of the position shown: "#10 (3/72)".
    [[nodiscard]] std::string Caption() const;

  private:
    const TGlobalRegister& m_data;
    std::vector<std::uint64_t> m_indexes;
    std::uint32_t m_nMoves = 0;
    std::size_t m_nShown = 0; // positions so far
};

} // namespace quillon
