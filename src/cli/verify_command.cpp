#include "cli/verify_command.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/console_notifier.h"
#include "cli/harmless_question.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "cli/precalc_data.h"
#include "cli/solve_settings.h"
#include "core/chess_exception.h"
#include "globalregister/precalc_loader.h"
#include "globalregister/system_failure.h"
#include "globalregister/verification/verify_type.h"
#include "platform/interrupt.h"
#include "platform/processors.h"
#include "platform/terminal.h"

namespace quillon {

namespace {

constexpr const char* kVerifyExamples = R"(
Examples:
  quillon verify QR --precalc DIR
  quillon verify QR QRr --precalc DIR --fix --threads 4
  quillon verify QR --precalc DIR --fix --second-pass

Every element is compared with what the rules of chess and the elements one
move ahead make it, so the tables of what captures and promotions lead to must
be there. Faults go to PrecalcFailuresTYPE.txt in the working folder: index,
FEN, stored and computed half-moves. A log that is left over there is kept as
.BAK, or with --second-pass is the list of what is checked. That mends mates on
the move only, unless the list is of a run that came to its end (.whole beside
it) and no file that was looked at, nor the log, has changed since.

Looked at is the file that the search would read; it is named, and so are other
files of the type, which are not looked at. --unpack holds all in memory, which
is quicker: it takes a .lz4 file where there is one, else the plain file, else
it unpacks. To look at the plain file move the .lz4 away.

--fix corrects elements that say "no mate", or a longer one than there is, in
the plain file. What an element must be is computed from others, so verify the
types that captures and promotions lead to first: a mate in those that is too
short would be taken over. If they are right, written is what is certain:
a fault that cannot be mended (a mate that is too short, or where there is none)
can make others look faulty, so longer mates than the shortest of these are left
as they are. Run again until nothing is left, for a correction can show another
fault, or that one was none; where nothing more is written, make the table anew.
While another process makes or mends the table, --fix is refused.

Exit status: 0 all right, 1 faults were found, mended or not, it was stopped,
or only a list was looked at, 2 no data, damaged data, or bad usage, 3 a file
cannot be read or written, or memory is short.)";

constexpr int kMostVerifyThreads = 256;
constexpr int kMostVerifyMB = 1 << 20;

struct TVerifyOptions {
    std::vector<std::string> m_types;
    TPrecalcChoice m_precalc;
    bool m_bFix = false, m_bPartial = false, m_bSecondPass = false, m_bUnpack = false;
    int m_nThreads = 0; // 0: as many as there are processors
    bool m_bJson = false, m_bProgress = false;
};

std::atomic<int> g_nVerifyInterrupts{0};

/// Answers what options have decided, and shows how far it has come. Where memory is short data stay packed; nothing
/// is packed or saved that no option asks for.
class CVerifyConsole final : public IVerificationHost {
  public:
    CVerifyConsole(CProgressLine& line, const TVerifyOptions& options)
        : m_line(line), m_notifier(line), m_options(options) {}

    void Inform(std::string_view text, std::string_view title) override { m_notifier.Inform(text, title); }
    bool AskYesNo(std::string_view text, std::string_view) override {
        if (IsHarmlessQuestion(text) || text == kTryFixQuestion)
            return true;
        if (text.starts_with(kLeftoverLogQuestion))
            return m_options.m_bSecondPass;
        return text.starts_with(kSaveUnpackedQuestion) && m_options.m_bFix;
    }
    ESlowSetting AskAboutSlowSetting(std::string_view) override {
        return m_options.m_bUnpack ? ESlowSetting::TurnOff : ESlowSetting::GoOn;
    }
    void ShowStatus(std::string_view text) override { m_line.Show(text); }
    ERunState RunState() override {
        return g_nVerifyInterrupts.load(std::memory_order_relaxed) > 0 ? ERunState::Break : ERunState::Run;
    }

  private:
    CProgressLine& m_line;
    CConsoleNotifier m_notifier;
    const TVerifyOptions& m_options;
};

std::string WordForEnd(const TVerifyResult& result) {
    switch (result.m_eEnd) {
    case EVerifyEnd::AllChecked:
        return result.m_bAllRight ? "ok" : result.m_nFaults == 0 ? "list_ok" : "faults";
    case EVerifyEnd::Stopped:
        return "stopped";
    default:
        return "error";
    }
}

std::string VerifyJson(const std::string& typeName, const TVerifyResult& result, double seconds) {
    nlohmann::ordered_json object;
    object["type"] = typeName;
    object["file"] =
        result.m_file.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(result.m_file.string());
    object["not_looked_at"] = nlohmann::ordered_json::array();
    for (const std::filesystem::path& other : result.m_otherFiles)
        object["not_looked_at"].push_back(other.string());
    object["second_pass"] = result.m_bSecondPass;
    object["result"] = WordForEnd(result);
    object["faults"] = result.m_nFaults;
    object["fixable"] = result.m_nFixable;
    object["fixed"] = result.m_nFixed;
    object["checked"] = result.m_nChecked;
    object["log"] =
        result.m_nFaults == 0 ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(result.m_log.string());
    object["seconds"] = seconds;
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

EExitStatus StatusOfVerification(const TVerifyResult& result) {
    if (result.m_bSystemFailure)
        return EExitStatus::SystemFailure;
    if (result.m_eEnd == EVerifyEnd::NotBegun || result.m_eEnd == EVerifyEnd::Failed)
        return EExitStatus::BadInput;
    return result.m_bAllRight ? EExitStatus::Answered : EExitStatus::Unanswered;
}

EExitStatus VerifyOne(const std::string& typeName, const TVerifyOptions& options, CGlobalRegisters& registers,
                      CProgressLine& line, IVerificationHost& host) {
    using TClock = std::chrono::steady_clock;
    const TVerifyRequest request{.m_typeName = typeName,
                                 .m_bPartial = options.m_bPartial,
                                 .m_bFix = options.m_bFix,
                                 .m_bSecondPassOnly = options.m_bSecondPass,
                                 .m_nThreads = options.m_nThreads != 0 ? options.m_nThreads : UsableProcessors()};
    const TClock::time_point start = TClock::now();
    const TVerifyResult result = VerifyType(request, registers, host);
    const double seconds = std::chrono::duration<double>(TClock::now() - start).count();
    if (options.m_bJson)
        line.WriteResult(VerifyJson(typeName, result, seconds));
    else if (!result.m_status.empty())
        line.WriteResult(result.m_status + "\nFile: " + WithoutControls(result.m_file.string()) + "\n");
    return StatusOfVerification(result);
}

/// A type that nobody has looked at is not all right.
EExitStatus TellNotBegun(const std::string& typeName, const TVerifyOptions& options, CProgressLine& line) {
    TVerifyResult stopped;
    stopped.m_eEnd = EVerifyEnd::Stopped;
    if (options.m_bJson)
        line.WriteResult(VerifyJson(typeName, stopped, 0));
    else
        line.WriteResult("Verification of precalculated data for position type " + typeName +
                         " not begun: stopped by user.\n");
    return EExitStatus::Unanswered;
}

/// Memory for the data, where no option says how much: it is not shared with a search.
std::uint64_t VerifyQuota(const TVerifyOptions& options, const TSettings& settings) {
    return options.m_precalc.m_memoryMB ? PrecalcQuota(settings, options.m_precalc, nullptr) : LargestTable(true);
}

void CheckVerifiedTypes(const std::vector<std::string>& types) {
    for (const std::string& typeName : types)
        if (IsCustomType(typeName) || TPositionIndexing(typeName).nPositionType == 0 || typeName.size() > kMaxTypeMen ||
            TPositionIndexing(typeName).bHasSpecialPiece)
            throw ChessException("not the letters of one to five men besides the kings: " + typeName);
}

EExitStatus RunVerify(const TVerifyOptions& options) {
    try {
        CheckVerifiedTypes(options.m_types);
        CProgressLine line(options.m_bProgress || IsTerminal(EStream::Error));
        CVerifyConsole host(line, options);
        const TSettings settings = LoadSettings(host, CommandLineDefaults());
        InstallInterruptHandler(g_nVerifyInterrupts);
        CGlobalRegisters registers(MakePrecalcOptions(settings, options.m_precalc), host,
                                   VerifyQuota(options, settings));
        EExitStatus status = EExitStatus::Answered;
        for (const std::string& typeName : options.m_types)
            status =
                Graver(status, g_nVerifyInterrupts.load() == 0 ? VerifyOne(typeName, options, registers, line, host)
                                                               : TellNotBegun(typeName, options, line));
        return status;
    } catch (const CSystemFailure& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::SystemFailure;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddVerifyCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("verify", "Compare precalculated endgame data with the rules");
    const auto options = std::make_shared<TVerifyOptions>();
    command->add_option("TYPE", options->m_types, "Letters of the men besides the kings, as QRr")->required();
    command->add_flag("--fix", options->m_bFix, "Correct what can be corrected in the plain file");
    command->add_flag("--partial", options->m_bPartial,
                      "The table is not finished: mates as long as its longest one, and longer ones, may be missing");
    command->add_flag("--second-pass", options->m_bSecondPass, "Check only what the log of the last run names");
    command->add_flag(
        "--unpack", options->m_bUnpack,
        "Unpack data and hold them in memory, whatever the settings say: .lz4 goes first, then the plain file");
    command->add_option("--threads", options->m_nThreads, "Threads; without the option one a processor")
        ->type_name("T")
        ->transform(WholeNumber(1, kMostVerifyThreads));
    command
        ->add_option("--precalc", options->m_precalc.m_folder,
                     "Folder with precalculated endgame data, or one that has them in Precalc; without it the working "
                     "folder")
        ->type_name("DIR");
    command
        ->add_option("--memory", options->m_precalc.m_memoryMB,
                     "Memory for the data, in MiB; without the option three quarters of that of the machine")
        ->type_name("MB")
        ->transform(WholeNumber(1, kMostVerifyMB));
    command->add_flag("--json", options->m_bJson, "One JSON object a type, on one line");
    command->add_flag("--progress", options->m_bProgress, "Show the progress line even if there is no terminal");
    command->footer(kVerifyExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunVerify(*options); }; });
}

} // namespace quillon
