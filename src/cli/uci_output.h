#pragma once
// The line to the interface: what several threads say comes out as whole lines, each handed on at once.

#include <atomic>
#include <exception>
#include <mutex>
#include <string>

namespace quillon {

/// Threads: any.
class CUciOutput {
  public:
    /// Writes the text as a line. Where it cannot be written nobody listens any more: it is dropped, and remembered.
    void Line(const std::string& text);

    /// Tells of it, as an info string. Where there is no memory for the words it is not told.
    void Failure(const std::exception& failure) noexcept;

    [[nodiscard]] bool IsBroken() const { return m_bBroken.load(std::memory_order_relaxed); }

  private:
    std::mutex m_mutex; // one line at a time
    std::atomic<bool> m_bBroken{false};
};

} // namespace quillon
