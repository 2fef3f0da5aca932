#pragma once
// Failures of memory, files or threads. What the data say, or what was asked for, is not to blame for them: with the
// same data all may be well another time.

#include <exception>

#include "core/chess_exception.h"

namespace quillon {

class CSystemFailure : public ChessException {
  public:
    using ChessException::ChessException;
};

/// Is it one of those? All that is no ChessException is.
[[nodiscard]] inline bool IsOfSystem(const std::exception& failure) {
    return dynamic_cast<const ChessException*>(&failure) == nullptr ||
           dynamic_cast<const CSystemFailure*>(&failure) != nullptr;
}

} // namespace quillon
