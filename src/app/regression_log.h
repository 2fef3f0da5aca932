#pragma once
// The log of regression runs: "RegressionTest.log" in the working folder, and the one before it beside it.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>

#include "platform/sleep.h"

namespace quillon {

inline constexpr const char* kRegressionLogName = "RegressionTest.log";

/// "RegressionTest.log" in the working folder.
[[nodiscard]] std::filesystem::path RegressionLogPath();

/// Appends the text. The file is opened and closed each time, so that what was written survives whatever follows.
///   Returns  false if the text could not be written whole. A run goes on without its log.
bool AppendRegressionLog(std::string_view text, const std::filesystem::path& path = RegressionLogPath());

/// Makes room for a new log: the old one is renamed to "NAME.BAK", in place of an earlier one of that name. A rename
/// that fails is tried again three times, at growing intervals (somebody may just be reading the file), and then given
/// up: the new lines go behind the old ones.
///   sleep  waits so many milliseconds.
void KeepPreviousRegressionLog(const std::filesystem::path& path = RegressionLogPath(),
                               const std::function<void(std::uint32_t)>& sleep = SleepMs);

} // namespace quillon
