#pragma once
// The precalculated data that a command works with: from which folder, and how much memory they may take.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/settings.h"
#include "globalregister/precalc_options.h"
#include "library/chess_problem.h"

namespace quillon {

inline constexpr int kMostPrecalcMB = 1 << 20; // no machine has more: a greater number was meant in other units

struct TPrecalcChoice {
    std::optional<std::string> m_folder; // of --precalc
    std::optional<int> m_memoryMB;       // of --precalc-memory; 0: none
};

/// Adds --precalc, for commands that load no data; `choice` must outlive the reading of the command line.
void AddPrecalcFolder(CLI::App& command, TPrecalcChoice& choice, const char* group);

/// Adds --precalc-memory, too.
void AddPrecalcOptions(CLI::App& command, TPrecalcChoice& choice, const char* group);

/// Settings and choice: a chosen folder takes the place of the working folder.
///   Errors  ChessException: the folder is none.
[[nodiscard]] TPrecalcOptions MakePrecalcOptions(const TSettings& settings, const TPrecalcChoice& choice);

/// 0 for letters of no type that is looked up.
[[nodiscard]] TPositionType TypeToLookUp(const std::string& name);

///   Errors  ChessException: the letters are none of a type that is looked up.
[[nodiscard]] TPositionType AskedType(const std::string& name);

/// Bytes that the data may take: none if the problem forbids them; what the command line says, else the problem, else
/// the settings' share of the memory of the machine.
///   problem  null: none.
[[nodiscard]] std::uint64_t PrecalcQuota(const TSettings& settings, const TPrecalcChoice& choice,
                                         const ChessProblem* problem);

} // namespace quillon
