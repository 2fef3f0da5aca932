#pragma once
// A folder of its own for a test, removed with all it holds when the test ends.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace quillon {

class CTemporaryFolder {
  public:
    CTemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quillon_test_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("cannot make " + pattern);
        m_path = pattern;
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    ~CTemporaryFolder() { std::filesystem::remove_all(m_path); }

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

    /// Writes a file, and the folders above it.
    void Write(const std::filesystem::path& relative, const std::string& text) const {
        std::filesystem::create_directories((m_path / relative).parent_path());
        std::ofstream(m_path / relative, std::ios::binary) << text;
    }

  private:
    std::filesystem::path m_path;
};

} // namespace quillon
