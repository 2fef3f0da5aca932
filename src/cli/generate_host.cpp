#include "cli/generate_host.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "cli/output.h"
#include "globalregister/generator/generate_texts.h"

namespace quillon {

namespace {

using TGenerateJson = nlohmann::ordered_json;

constexpr const char* kLeftUnfinished = "; --continue goes on with it, --restart makes it anew";

std::string UpTo(const TGenerateReport& report) {
    return report.m_file.string() + " is not finished and contains up to #" + std::to_string(report.m_nMate);
}

/// What the user's stop has cost.
std::string GivenUp(const TGenerateReport& report) {
    return report.m_nGivenUp == 0 ? "" : "; level " + std::to_string(report.m_nGivenUp) + ", under way, was given up";
}

/// Nothing where they could not be counted, which has been told.
std::string MatesOf(const TGenerateReport& report) {
    if (!report.m_bCounted)
        return "";
    return "longest mate #" + std::to_string(report.m_nMate) + ", " + std::to_string(report.m_nPositions) +
           " indices with a mate, ";
}

const char* ResultName(const TGenerateReport& report) {
    if (report.m_status == EGenerateStatus::Failed)
        return "failed";
    if (report.m_status == EGenerateStatus::Done)
        return report.m_bMade ? "made" : "exists";
    return report.m_nLevels > 0 ? "unfinished" : "stopped";
}

/// Hours only where there are any.
std::string TimeText(double seconds) {
    const auto nSeconds = static_cast<long long>(seconds);
    char text[48];
    if (nSeconds < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld", nSeconds / 60, nSeconds % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", nSeconds / 3600, nSeconds / 60 % 60, nSeconds % 60);
    return text;
}

std::string WithDecimals(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

} // namespace

bool CGenerateHost::AskYesNo(std::string_view text, std::string_view) {
    if (text == kRemoveQuestion)
        return m_answers.m_bRemovePartial;
    // A second folder with data is only read. That data may stay packed, or on disk, is no harmless offer to a run that
    // looks them up as often as this one: it needs them in memory, and whoever can wait says --yes.
    return text.starts_with(kSecondRootBegin) || m_answers.m_bYes;
}

/// What is there is left to options; settings that make the run slow are turned off for it.
EThreeWay CGenerateHost::AskYesNoCancel(std::string_view, std::string_view) { return EThreeWay::Cancel; }

void CGenerateHost::Progress(const TGenerateProgress& progress) {
    const std::lock_guard lock(m_mutex);
    if (progress.m_typeName != m_progress.m_typeName || progress.m_level.m_nLevel != m_progress.m_level.m_nLevel) {
        m_nFirstPermille = progress.m_level.m_nPermille;
        m_firstSeen = progress.m_seconds;
    }
    m_progress = progress;
}

std::string CGenerateHost::ProgressText() const {
    const std::lock_guard lock(m_mutex);
    const TGeneratorProgress& level = m_progress.m_level;
    if (m_progress.m_typeName.empty())
        return "starting";
    std::string text = m_progress.m_typeName;
    if (m_progress.m_nTypes > 1)
        text += ", " + std::to_string(m_progress.m_nType) + " of " + std::to_string(m_progress.m_nTypes);
    text += ": level " + std::to_string(level.m_nLevel) + WithDecimals(", %.1f%%", level.m_nPermille / 10.0) + ", " +
            std::to_string(m_progress.m_nFoundBefore + level.m_nFound) + " found";
    const double seconds = m_progress.m_seconds - m_firstSeen;
    if (level.m_nPermille <= m_nFirstPermille || seconds <= 0)
        return text;
    const double permilleASecond = (level.m_nPermille - m_nFirstPermille) / seconds;
    const double indicesASecond = permilleASecond / 1000 * static_cast<double>(m_progress.m_nElements);
    return text + WithDecimals(", %.2f million a second, ", indicesASecond / 1e6) +
           TimeText((1000 - level.m_nPermille) / permilleASecond) + " left in the level";
}

void CGenerateHost::TypeEnded(const TGenerateReport& report) {
    if (report.m_status == EGenerateStatus::Failed)
        m_status = Graver(m_status, report.m_bSystemFailed ? EExitStatus::SystemFailure : EExitStatus::BadInput);
    else if (report.m_status == EGenerateStatus::Cancelled || report.m_bNotPacked)
        m_status = Graver(m_status, EExitStatus::Unanswered);
    if (m_answers.m_bJson)
        return m_line.WriteResult(GenerateJson(report));
    const std::string text = GenerateText(report);
    if (report.m_status == EGenerateStatus::Done)
        m_line.WriteResult(text + "\n");
    else if (!text.empty())
        m_line.WriteMessage(text);
}

std::string GenerateText(const TGenerateReport& report) {
    const std::string head = report.m_typeName + ": ";
    if (report.m_status == EGenerateStatus::Failed) // the reason has been told
        return "";
    if (report.m_status == EGenerateStatus::Cancelled)
        return head + (report.m_nLevels == 0 ? "stopped" : UpTo(report) + kLeftUnfinished) + GivenUp(report);
    const char* const packed = report.m_bNotPacked ? ", not packed" : "";
    if (!report.m_bMade)
        return head + WithoutControls(report.m_file.string()) + " exists already" + packed;
    return head + MatesOf(report) + std::to_string(report.m_nLevels) + " levels, " +
           WithDecimals("%.2f s, ", report.m_seconds) + WithoutControls(report.m_file.string()) + ", " +
           std::to_string(report.m_nBytes) + " bytes" + packed;
}

std::string GenerateJson(const TGenerateReport& report) {
    const TGenerateJson none = nullptr;
    TGenerateJson object;
    object["type"] = report.m_typeName;
    object["result"] = ResultName(report);
    const bool bMateKnown = report.m_bMade ? report.m_bCounted : report.m_nLevels > 0;
    object["mate"] = bMateKnown ? TGenerateJson(report.m_nMate) : none;
    object["positions"] = report.m_bCounted ? TGenerateJson(report.m_nPositions) : none;
    object["levels"] = report.m_bMade || report.m_nLevels > 0 ? TGenerateJson(report.m_nLevels) : none;
    object["given_up"] = report.m_nGivenUp > 0 ? TGenerateJson(report.m_nGivenUp) : none;
    object["packed"] = report.m_bPacked ? TGenerateJson(*report.m_bPacked) : none;
    object["seconds"] = report.m_seconds;
    object["file"] = report.m_file.string();
    object["bytes"] = report.m_nBytes;
    if (!report.m_missingTypes.empty())
        object["missing"] = report.m_missingTypes;
    return object.dump(-1, ' ', false, TGenerateJson::error_handler_t::replace) + "\n";
}

} // namespace quillon
