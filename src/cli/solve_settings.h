#pragma once
// The settings in a solve of the command line: what neither its options nor the problem's own say, options.ini may.

#include "app/settings.h"
#include "cli/solve_options.h"

namespace quillon {

/// The settings without a file, or of keys that it has not. Scripts rely on them: other than in the window no key
/// starts a scheduler that nobody has asked for.
[[nodiscard]] TSettings CommandLineDefaults();

/// What the settings say of the registers of all solves that follow. None may be under way.
void ApplyRegisterSettings(const TSettings& settings);

/// Puts the settings into what the options and the problem have left open in their request.
void ApplySettings(const TSettings& settings, const ChessProblem& problem, const TSolveOptions& options,
                   TSolveRequest& request);

/// Of several solves at a time each has its part of the memory; 0, no register, stays. A lone one has what `solve` has.
///   nPhysicalBytes  of the machine.
void ShareMemory(TSolveRequest& request, int nJobs, std::uint64_t nPhysicalBytes);

} // namespace quillon
