#pragma once
// Reading tables that stay on disk: a file has one place where it is read, so all such reads of the process take turns.

#include <mutex>

#include "globalregister/system_failure.h"

namespace quillon {

/// A file could not be read or written.
class CDiskFailure : public CSystemFailure {
  public:
    using CSystemFailure::CSystemFailure;
};

/// Held while a stream of a table is positioned and read. Nothing else is locked while it is held.
[[nodiscard]] inline std::mutex& DiskAccessSection() {
    static std::mutex section;
    return section;
}

} // namespace quillon
