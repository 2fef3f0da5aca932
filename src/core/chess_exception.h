#pragma once
// ChessException: a failure of chess input or of the register and file layers, with an English text for the user.
// The search itself never throws.

#include <stdexcept>

namespace quillon {

class ChessException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace quillon
