#pragma once
// A folder for the files of the registers under test; the process-wide options are put back at the end.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/temporary_folder.h"
#include "tempregister/register_log.h"

namespace quillon::test {

class CRegisterFolder {
  public:
    CRegisterFolder() {
        RegisterOptions().m_registerInfoLog = LogPath();
        RegisterOptions().m_solvedProblemsFolder = m_folder.Path();
    }
    CRegisterFolder(const CRegisterFolder&) = delete;
    CRegisterFolder& operator=(const CRegisterFolder&) = delete;
    ~CRegisterFolder() { RegisterOptions() = m_before; }

    [[nodiscard]] const std::filesystem::path& Path() const { return m_folder.Path(); }
    [[nodiscard]] std::filesystem::path LogPath() const { return m_folder.Path() / "registerInfo.log"; }

    /// The bytes of a file; empty if there is none.
    [[nodiscard]] static std::string Read(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    static void Write(const std::filesystem::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }

  private:
    CTemporaryFolder m_folder;
    TRegisterOptions m_before = RegisterOptions();
};

} // namespace quillon::test
