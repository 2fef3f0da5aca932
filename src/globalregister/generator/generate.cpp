#include "globalregister/generator/generate.h"

#include <algorithm>
#include <utility>

#include "core/chess_exception.h"
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
    CRunSettings(IGenerateHost& host, CGlobalRegisters& registers, std::uint64_t nMemory)
        : m_host(host), m_registers(registers), m_options(registers.Options()), m_nQuota(registers.Quota()) {
        m_host.LimitTemporaryRegister(kFewBuckets, kSmallSharePercent);
        m_registers.SetGeneratorMode(true);
        m_registers.SetQuota(nMemory);
    }
    ~CRunSettings() {
        m_registers.SetGeneratorMode(false);
        (void)m_registers.SetOptions(m_options); // with what has been made
        m_registers.SetQuota(m_nQuota);
        m_host.RestoreTemporaryRegister();
    }
    CRunSettings(const CRunSettings&) = delete;
    CRunSettings& operator=(const CRunSettings&) = delete;

    /// False: the user wants no run with these settings.
    [[nodiscard]] bool Challenge() {
        TPrecalcOptions options = m_options;
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
        return m_registers.SetOptions(std::move(options));
    }

  private:
    IGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    const TPrecalcOptions m_options;
    const std::uint64_t m_nQuota;
};

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
        std::vector<std::string> ordinary, custom;
        for (const std::string& typeName : typeNames)
            if (IsCustomType(typeName))
                custom.push_back(typeName);
            else
                ordinary.push_back(InTypeOrder(typeName));
        std::vector<std::string> plan;
        for (std::string& type : TypesInOrderOfMaking(ordinary))
            if (std::ranges::find(ordinary, type) != ordinary.end() ||
                (m_options.m_bWithSubtypes && !HasWholeData(type)))
                plan.push_back(std::move(type));
        for (std::string& type : custom)
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

  private:
    /// Loaded for a look only: of a long plan not everything has room at a time.
    [[nodiscard]] bool HasWholeData(const std::string& typeName) {
        const TPositionType type = TPositionIndexing(typeName).nPositionType;
        bool bWhole = false;
        if (const CRegisterUse data(m_registers.GetRegisterForTool(type)); data)
            bWhole = !data->bCompactUnfinished;
        m_registers.Unload(type);
        return bWhole;
    }

    const TGenerateOptions& m_options;
    IGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    TGeneratorControl& m_control;
    const std::uint64_t m_nMemory;
    CRunSettings m_settings;
};

bool IsStopped(const TGeneratorControl& control) {
    return control.m_bStop.load(std::memory_order_relaxed) ||
           control.m_nPause.load(std::memory_order_relaxed) == kGeneratorBreaks;
}

} // namespace

TGenerateReport Generate(std::string_view typeName, const TGenerateOptions& options, IGenerateHost& host,
                         CGlobalRegisters& registers, TGeneratorControl& control) {
    const std::string type(typeName);
    CGeneration generation(options, host, registers, control);
    if (!generation.Prepare()) {
        TGenerateReport report;
        report.m_typeName = type;
        report.m_status = EGenerateStatus::Cancelled;
        return report;
    }
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
        if (IsStopped(control))
            break;
        reports.push_back(generation.Make(type, {static_cast<int>(reports.size()) + 1, static_cast<int>(plan.size())}));
    }
    const auto hasFailed = [](const TGenerateReport& report) { return report.m_status == EGenerateStatus::Failed; };
    if (plan.size() > 1 && std::ranges::any_of(reports, hasFailed))
        host.Inform(kErrorDuringGeneration, kErrorTitle);
    return reports;
}

} // namespace quillon
