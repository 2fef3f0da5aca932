#include "cli/explain_text.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace quillon {

namespace {

std::string GuideLine(const TPlanReport& plan) {
    if (plan.m_nGuideNodes == 0)
        return {};
    const std::string positions = std::to_string(plan.m_nGuideNodes) + " positions";
    return plan.m_bGuided ? "Best-first proof: found a mate after " + positions + "; the passes try its moves first.\n"
                          : "Best-first proof: nothing found in " + positions + ".\n";
}

std::string PlanEnd(const TPlanReport& plan) {
    if (plan.m_initialSet.empty()) // then it runs, whether it was wanted or not
        return "The only pass, 2, runs without heuristics.\n";
    std::string text;
    if (!plan.m_bRelaxes)
        text += "Heuristics are not relaxed.\n";
    text += plan.m_bRunPass2 ? "The last pass, 2, runs without heuristics.\n"
                             : "There is no pass without heuristics: absence of a solution cannot be proved.\n";
    return text;
}

std::string KeysText(int count) {
    return count == 0 ? "no key" : std::to_string(count) + (count == 1 ? " key" : " keys");
}

/// "Pass 1b  3.204 s  1 key  SH_3MOVESTOMATE"
std::string RecordLine(const TPassRecord& record) {
    char text[64];
    std::snprintf(text, sizeof text, "  %-5s %10.3f s  ",
                  (record.m_name + (record.m_bTimeDependent ? "*" : "")).c_str(), record.m_seconds);
    return text + KeysText(record.m_nKeys) + "  " +
           (record.m_heuristics.empty() ? "without heuristics" : record.m_heuristics) + "\n";
}

nlohmann::ordered_json RecordObject(const TPassRecord& record) {
    nlohmann::ordered_json object;
    object["pass"] = record.m_name;
    object["heuristics"] = record.m_heuristics;
    object["seconds"] = record.m_seconds;
    object["keys"] = record.m_nKeys;
    object["timeDependent"] = record.m_bTimeDependent;
    return object;
}

} // namespace

std::string PlanText(const TPlanReport& plan) {
    std::string text;
    if (plan.m_bSafeModeForced)
        text += "> Safe Mode forced by engine\n";
    text += plan.m_bChosenByHand ? "Heuristics chosen by hand: " : "Initial set of heuristics: ";
    text += (plan.m_initialSet.empty() ? "none" : plan.m_initialSet) + "\n";
    for (const std::string& rule : plan.m_rules)
        text += "  because: " + rule + "\n";
    text += GuideLine(plan);
    for (const std::string& left : plan.m_leftOut)
        text += "Left out: " + left + "\n";
    return text + "Plan:\n" + plan.m_passPlan + "\n" + PlanEnd(plan);
}

std::string PassRecordsText(const TSolvingResult& result) {
    std::string text;
    if (!result.m_passRecords.empty())
        text += "Passes:\n";
    for (const TPassRecord& record : result.m_passRecords)
        text += RecordLine(record);
    for (const TSolution& key : result.m_solutions)
        text += "  1." + key.m_text + "! found " +
                (key.m_pass.empty() ? "by the initial analysis" : "in pass " + key.m_pass) + "\n";
    return text;
}

nlohmann::ordered_json ExplainObject(const TPlanReport& plan, const TSolvingResult& result) {
    nlohmann::ordered_json object;
    object["heuristics"] = plan.m_initialSet;
    object["chosenByHand"] = plan.m_bChosenByHand;
    object["safeModeForced"] = plan.m_bSafeModeForced;
    object["rules"] = plan.m_rules;
    object["leftOut"] = plan.m_leftOut;
    object["guided"] = plan.m_bGuided;
    object["guideNodes"] = plan.m_nGuideNodes;
    object["plan"] = plan.m_passPlan;
    object["passes"] = nlohmann::ordered_json::array();
    for (const TPassRecord& record : result.m_passRecords)
        object["passes"].push_back(RecordObject(record));
    nlohmann::ordered_json keys = nlohmann::ordered_json::object();
    for (const TSolution& key : result.m_solutions)
        keys[key.m_text] = key.m_pass;
    object["keys"] = std::move(keys);
    return object;
}

} // namespace quillon
