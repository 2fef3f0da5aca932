#include "app/auto_save_ini.h"

#include <algorithm>

#include "app/ini_file.h"
#include "app/ini_text.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

constexpr const char* kSection = "AutoSave";
constexpr const char* kProcessId = "ProcessId";
constexpr const char* kProcessFileName = "ProcessFileName";

void Put(std::string& text, const char* key, const std::string& value) {
    text = WithIniValue(std::move(text), kSection, key, value);
}

void Sign(std::string& text, const std::string& processId, const std::string& processFileName) {
    Put(text, kProcessId, processId);
    Put(text, kProcessFileName, processFileName);
}

std::string IniTextOf(const TAutoSaveIni& ini) {
    std::string text;
    Put(text, "FEN", ini.m_FEN);
    Put(text, "Stipulation", std::to_string(ini.m_nStipulation));
    Put(text, "Description", ini.m_description);
    Put(text, "HybridBruteForce", ini.m_bHybridBruteForce ? "1" : "0");
    Put(text, "AllSolutions", ini.m_bAllSolutions ? "1" : "0");
    Put(text, "MaxMemRatioForPrecalculatedData", std::to_string(ini.m_nMaxMemRatioForPrecalculatedData));
    Put(text, "MaxMemRatioPerProblem", std::to_string(ini.m_nMaxMemRatioPerProblem));
    Sign(text, ini.m_processId ? std::to_string(*ini.m_processId) : "", ini.m_processFileName);
    return text;
}

/// In percent.
int RatioOf(const CIniText& text, const char* key, int nDefault) {
    return std::clamp(text.Integer(kSection, key).value_or(nDefault), 0, 100);
}

} // namespace

std::filesystem::path AutoSaveIniPath(const std::filesystem::path& registerPath) {
    std::filesystem::path path = registerPath;
    path += ".ini";
    return path;
}

std::filesystem::path AutoSaveProblemPath(const std::filesystem::path& registerPath) {
    std::filesystem::path path = registerPath;
    return path.replace_extension(".cp");
}

TAutoSaveIni ReadAutoSaveIni(const std::filesystem::path& iniPath) {
    TAutoSaveIni ini;
    std::string file;
    if (ReadIniFile(iniPath, file))
        return ini;
    const CIniText text(file);
    ini.m_FEN = text.Value(kSection, "FEN").value_or("");
    ini.m_nStipulation = text.Integer(kSection, "Stipulation").value_or(0);
    ini.m_description = text.Value(kSection, "Description").value_or("");
    ini.m_bHybridBruteForce = text.Integer(kSection, "HybridBruteForce").value_or(0) != 0;
    ini.m_bAllSolutions = text.Integer(kSection, "AllSolutions").value_or(0) != 0;
    ini.m_nMaxMemRatioForPrecalculatedData =
        RatioOf(text, "MaxMemRatioForPrecalculatedData", ini.m_nMaxMemRatioForPrecalculatedData);
    ini.m_nMaxMemRatioPerProblem = RatioOf(text, "MaxMemRatioPerProblem", ini.m_nMaxMemRatioPerProblem);
    ini.m_processId = text.Integer(kSection, kProcessId);
    ini.m_processFileName = text.Value(kSection, kProcessFileName).value_or("");
    return ini;
}

std::error_code WriteAutoSaveIni(const std::filesystem::path& iniPath, const TAutoSaveIni& ini) {
    return SaveFile(iniPath, IniTextOf(ini), /*bBackup=*/false).m_error;
}

std::error_code SignAutoSaveIni(const std::filesystem::path& iniPath, int nProcessId,
                                const std::string& processFileName) {
    std::string text;
    if (const std::error_code failure = ReadIniFile(iniPath, text))
        return failure;
    Sign(text, std::to_string(nProcessId), processFileName);
    return SaveFile(iniPath, text, /*bBackup=*/false).m_error;
}

std::string AutoSaveProblemText(const TAutoSaveIni& ini) {
    const std::string mode = ini.m_bHybridBruteForce ? "HybridBruteForce" : ini.m_bAllSolutions ? "AllSolutions" : "";
    const std::string placement = ini.m_FEN.substr(0, ini.m_FEN.find(' ')); // behind it a library has moves
    return "1 #" + std::to_string(ini.m_nStipulation) + " " + mode + "\n{\n  FEN: " + placement + "\n}\n";
}

std::error_code WriteAutoSaveProblem(const std::filesystem::path& problemPath, const TAutoSaveIni& ini) {
    return SaveFile(problemPath, AutoSaveProblemText(ini), /*bBackup=*/false).m_error;
}

} // namespace quillon
