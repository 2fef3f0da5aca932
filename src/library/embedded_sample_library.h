#pragma once
// The sample library that the program carries in itself: what `solve` reads when it is given no file.
// Defined in a source file that the build makes from data/sample_problems.cp.

#include <string_view>

namespace quillon {

/// The bytes of the file as they are, in the file's own encoding. Valid as long as the program runs.
[[nodiscard]] std::string_view EmbeddedSampleLibrary();

} // namespace quillon
