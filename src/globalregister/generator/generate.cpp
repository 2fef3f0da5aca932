#include "globalregister/generator/generate.h"

#include <algorithm>
#include <utility>

#include "core/chess_exception.h"
#include "globalregister/changed_options.h"
#include "globalregister/generator/existing_table.h"
#include "globalregister/generator/generate_texts.h"
#include "globalregister/generator/reached_types.h"
#include "globalregister/generator/table_making.h"
#include "platform/memory_info.h"

namespace quillon {

namespace {

constexpr std::size_t kFewBuckets = 16384;
constexpr int kSmallSharePercent = 3;
constexpr int kDataSharePercent = 90;

/// The settings of a run, until it ends.
class CRunSettings {
  public:
    /// What fails in here is restored as well.
    CRunSettings(IGenerateHost& host, CGlobalRegisters& registers, std::uint64_t nMemory)
        : CRunSettings(host, registers) {
        m_host.LimitTemporaryRegister(kFewBuckets, kSmallSharePercent);
        m_registers.SetGeneratorMode(true);
        m_registers.SetQuota(nMemory);
    }
    ~CRunSettings() {
        m_host.RestoreTemporaryRegister();
        m_registers.SetGeneratorMode(false);
        m_registers.SetQuota(m_nQuota);
    }
    CRunSettings(const CRunSettings&) = delete;
    CRunSettings& operator=(const CRunSettings&) = delete;

    /// False: the user wants no run with these settings.
    [[nodiscard]] bool Challenge() {
        TPrecalcOptions options = m_registers.Options();
        if (options.m_nUseDataPackedForRandomAccess != 0) {
            const EThreeWay answer = m_host.AskYesNoCancel(PackedDataQuestion(), kQuestionTitle);
            if (answer == EThreeWay::No)
                return false;
            if (answer == EThreeWay::Cancel)
                options.m_nUseDataPackedForRandomAccess = 0;
        }
        if (options.m_bGlobalRegisterForceDiskAccess) {
            const EThreeWay answer = m_host.AskYesNoCancel(DiskAccessQuestion(), kQuestionTitle);
            if (answer == EThreeWay::No)
                return false;
            options.m_bGlobalRegisterForceDiskAccess = answer == EThreeWay::Yes;
        }
        const std::string secondRoot = options.m_folders.m_secondRoot.string();
        if (!secondRoot.empty() && !m_host.AskYesNo(SecondRootQuestion(secondRoot), kQuestionTitle))
            return false;
        return m_changed.Change(std::move(options));
    }

  private:
    CRunSettings(IGenerateHost& host, CGlobalRegisters& registers)
        : m_host(host), m_registers(registers), m_changed(registers), m_nQuota(registers.Quota()) {}

    IGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    CChangedOptions m_changed; // back behind all else, with what has been made
    const std::uint64_t m_nQuota;
};

TGenerateReport Cancelled(const std::string& typeName) {
    TGenerateReport report;
    report.m_typeName = typeName;
    report.m_status = EGenerateStatus::Cancelled;
    return report;
}

class CGeneration {
  public:
    CGeneration(const TGenerateOptions& options, IGenerateHost& host, CGlobalRegisters& registers,
                TGeneratorControl& control)
        : m_options(options), m_host(host), m_registers(registers), m_control(control),
          m_nMemory(options.m_nMemoryBytes != 0 ? options.m_nMemoryBytes : PhysicalMemory() / 100 * kDataSharePercent),
          m_settings(host, registers, m_nMemory) {}

    [[nodiscard]] bool Prepare() { return m_settings.Challenge(); }

    /// The types that are to be made, what others need before them.
    [[nodiscard]] std::vector<std::string> Plan(const std::vector<std::string>& typeNames) {
        std::vector<std::string> ordinary, others; // these need none before them, or turn out to be wrong
        for (const std::string& typeName : typeNames)
            if (IsCustomType(typeName) || !IsGeneratedType(typeName))
                others.push_back(typeName);
            else
                ordinary.push_back(InTypeOrder(typeName));
        std::vector<std::string> plan;
        for (std::string& type : TypesInOrderOfMaking(ordinary))
            if (std::ranges::find(ordinary, type) != ordinary.end() ||
                (m_options.m_bWithSubtypes &&
                 !HasFinishedTable(TPositionIndexing(type), m_registers.Options().m_folders)))
                plan.push_back(std::move(type));
        for (std::string& type : others)
            if (std::ranges::find(plan, type) == plan.end())
                plan.push_back(std::move(type));
        return plan;
    }

    [[nodiscard]] TGenerateReport Make(const std::string& typeName, TPlaceInSeries place) {
        TGenerateReport report;
        report.m_typeName = typeName;
        try {
            (void)m_registers.UnloadAll(); // what an earlier type could not have may be there by now
            report = CTableMaking(IsCustomType(typeName) ? typeName : InTypeOrder(typeName), m_options, m_host,
                                  m_registers, m_control, m_nMemory, place)
                         .Run();
        } catch (const ChessException& failure) {
            m_host.Inform(failure.what(), kErrorTitle);
        }
        m_host.TypeEnded(report);
        return report;
    }

    /// The run has been told to end before this type.
    [[nodiscard]] TGenerateReport LeaveOut(const std::string& typeName) {
        TGenerateReport report = Cancelled(typeName);
        m_host.TypeEnded(report);
        return report;
    }

  private:
    [[nodiscard]] static bool IsGeneratedType(const std::string& typeName) {
        try {
            CheckGeneratedType(typeName);
            return true;
        } catch (const ChessException&) {
            return false;
        }
    }

    const TGenerateOptions& m_options;
    IGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    TGeneratorControl& m_control;
    const std::uint64_t m_nMemory;
    CRunSettings m_settings;
};

} // namespace

TGenerateReport Generate(std::string_view typeName, const TGenerateOptions& options, IGenerateHost& host,
                         CGlobalRegisters& registers, TGeneratorControl& control) {
    const std::string type(typeName);
    CGeneration generation(options, host, registers, control);
    if (!generation.Prepare())
        return Cancelled(type);
    return generation.Make(type, {});
}

std::vector<TGenerateReport> GenerateMany(const std::vector<std::string>& typeNames, const TGenerateOptions& options,
                                          IGenerateHost& host, CGlobalRegisters& registers,
                                          TGeneratorControl& control) {
    std::vector<TGenerateReport> reports;
    CGeneration generation(options, host, registers, control);
    if (!generation.Prepare())
        return reports;
    const std::vector<std::string> plan = generation.Plan(typeNames);
    for (const std::string& type : plan) {
        const TPlaceInSeries place{static_cast<int>(reports.size()) + 1, static_cast<int>(plan.size())};
        reports.push_back(IsStopped(control) ? generation.LeaveOut(type) : generation.Make(type, place));
    }
    const auto hasFailed = [](const TGenerateReport& report) { return report.m_status == EGenerateStatus::Failed; };
    if (plan.size() > 1 && std::ranges::any_of(reports, hasFailed))
        host.Inform(kErrorDuringGeneration, kErrorTitle);
    return reports;
}

} // namespace quillon
