#pragma once
// Packing a table that is loaded: what the user is offered after a load.
//
//   level 1  simple packing, for types of three letters that were loaded from another form than the plain one
//   level 2  LZW for random access, for types of at least three letters
//   level 3  LZ4e, an archive, for a table that is read from disk
// A form that exists already is not offered, and nothing of a table in the making: it would be packed only to be packed
// anew when it is finished, and pass for a finished one elsewhere.

#include <filesystem>
#include <functional>
#include <string_view>

#include "core/notifier.h"
#include "globalregister/global_register.h"
#include "globalregister/precalc_options.h"

namespace quillon {

/// Offers what AskForGlobalRegisterRecompression allows.
///   path   the file that was loaded.
///   nKind  its kind.
void RecompressOffer(const TGlobalRegister& data, const std::filesystem::path& path, EPrecalcKind nKind,
                     const TPrecalcOptions& options, INotifier& notifier);

/// Share of a table that its packed form takes: "Possible mem.save ratio = 12.34%. Continue?".
[[nodiscard]] std::string SavingQuestion(std::uint64_t nPackedSize, std::uint64_t nTableSize);

} // namespace quillon
