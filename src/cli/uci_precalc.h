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

    /// What holds unless the interface says otherwise. The folder named; empty: the working folder's data.
    [[nodiscard]] std::string UsualFolder() const { return m_usual.m_folder.value_or(std::string()); }
    [[nodiscard]] std::int64_t UsualMegabytes() const {
        return static_cast<std::int64_t>(Quota(m_usual) >> kMegabyteBits);
    }

    /// For the searches that follow the next Apply. The folder in use is not read again.
    ///   folder  empty or "<empty>": that of the working folder.
    ///   Errors  ChessException: it is none, and what was before stays.
    void SetFolder(const std::string& folder);
    void SetMegabytes(std::int64_t megabytes) { m_choice.m_memoryMB = static_cast<int>(megabytes); }

    /// Nothing may be searched meanwhile.
    void Apply();

  private:
    static constexpr int kMegabyteBits = 20;

    [[nodiscard]] std::uint64_t Quota(const TPrecalcChoice& choice) const {
        return PrecalcQuota(m_settings, choice, nullptr);
    }

    const TSettings m_settings;
    const TPrecalcChoice m_usual; // of the command line
    TPrecalcChoice m_choice;
    CUciNotifier m_notifier; // of loads
    CGlobalRegisters m_registers;
    const CActiveRegisters m_active;
    std::optional<TPrecalcOptions> m_next; // from other folders
};

} // namespace quillon
