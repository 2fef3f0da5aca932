#pragma once
// The precalculated data of a session with a chess interface: loaded once, used by all its searches. The command line
// says which at first, the interface may say otherwise.

#include <cstdint>
#include <optional>
#include <string>

#include "app/settings.h"
#include "cli/precalc_data.h"
#include "cli/uci_notifier.h"
#include "globalregister/active_registers.h"

namespace quillon {

class CUciPrecalc {
  public:
    ///   settings  where neither the command line nor the interface says anything.
    ///   Errors    ChessException: the folder is none.
    CUciPrecalc(const TSettings& settings, TPrecalcChoice choice, CUciOutput& output);

    /// The folder named; empty: the working folder's data.
    [[nodiscard]] std::string Folder() const { return m_choice.m_folder.value_or(std::string()); }
    [[nodiscard]] std::int64_t Megabytes() const { return static_cast<std::int64_t>(Quota() >> kMegabyteBits); }

    /// For the searches that follow the next Apply.
    ///   folder  empty or "<empty>": that of the working folder.
    ///   Errors  ChessException: it is none, and what was before stays.
    void SetFolder(const std::string& folder);
    void SetMegabytes(std::int64_t megabytes) { m_choice.m_memoryMB = static_cast<int>(megabytes); }

    /// Nothing may be searched meanwhile.
    void Apply();

  private:
    static constexpr int kMegabyteBits = 20;

    [[nodiscard]] std::uint64_t Quota() const { return PrecalcQuota(m_settings, m_choice, nullptr); }

    const TSettings m_settings;
    TPrecalcChoice m_choice;
    CUciNotifier m_notifier; // of loads
    CGlobalRegisters m_registers;
    const CActiveRegisters m_active;
    std::optional<TPrecalcOptions> m_next; // from other folders
};

} // namespace quillon
