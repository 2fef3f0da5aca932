#include "cli/precalc_command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/console_notifier.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "cli/precalc_data.h"
#include "cli/solve_settings.h"
#include "core/chess_exception.h"
#include "globalregister/browse_max_mates.h"
#include "globalregister/global_registers.h"
#include "globalregister/missing_types.h"
#include "globalregister/precalc_files.h"
#include "globalregister/system_failure.h"
#include "globalregister/table_conversion.h"
#include "globalregister/verification/compute_expected.h"
#include "platform/processors.h"

namespace quillon {

namespace {

using TPrecalcJson = nlohmann::ordered_json;

constexpr const char* kPrecalcExamples = R"(
Examples:
  quillon precalc list --precalc DIR
  quillon precalc status QR QRr --precalc DIR
  quillon precalc missing 4 --precalc DIR
  quillon precalc longest QR --limit 5 --precalc DIR
  quillon precalc pack DIR/Precalc/QR.precalc --form lzw
  quillon precalc unpack DIR/Precalc/QR.precalc.packed.lzw

A file is named for its data: the letters of the men besides the kings, with
"_" behind those of Black, and ".precalc". Forms: lz4 (.lz4), unpacked when it
is loaded; lzw (.packed.lzw), read as it is; archive (.packed.lz4), only kept;
simple (.packed.lz4), quick to read, for tables with no mate above 127 moves.

Exit status: 0 done, 1 some types cannot be had (missing, longest; status, for
whatever reason), 2 bad usage, or a file that is not what its name says or has
no such form, 3 a file cannot be read or written, or memory is short.)";

constexpr int kMostPositions = 1'000'000; // of longest

struct TFormName {
    std::string_view m_name;
    ETableForm m_form;
};
constexpr std::array kFormNames{TFormName{"plain", ETableForm::Plain},   TFormName{"lz4", ETableForm::Lz4},
                                TFormName{"lzw", ETableForm::Lzw},       TFormName{"archive", ETableForm::Archive},
                                TFormName{"simple", ETableForm::Simple}, TFormName{"unknown", ETableForm::Unknown}};

struct TPrecalcCommandOptions {
    TPrecalcChoice m_precalc;
    std::vector<std::string> m_types; // of status
    std::string m_type;               // of longest
    int m_nPieces = kFewestTableMen;  // of missing
    int m_nLimit = 10;                // of longest
    std::string m_file, m_form = "lzw", m_output;
    bool m_bForce = false;
    bool m_bJson = false;
};

std::string NameOfForm(ETableForm form) {
    for (const TFormName& name : kFormNames)
        if (name.m_form == form)
            return std::string(name.m_name);
    return {};
}

std::string Padded(std::string text, std::size_t nWidth) {
    text.resize(std::max(text.size(), nWidth), ' ');
    return text;
}

// --- list

std::string FormText(const TPrecalcFileFound& found) {
    return NameOfForm(FormOf(found.m_path)) + (found.m_file.m_bDetails ? " details" : "");
}

/// May a load take what the file has? Lengths of bit data are read from the plain file only, and archives from none.
bool IsLoaded(const TPrecalcFileFound& found, ETableForm form) {
    return form != ETableForm::Archive && form != ETableForm::Unknown &&
           (!found.m_file.m_bDetails || found.m_file.m_kind == EPrecalcKind::Plain);
}

std::string FileLine(const TPrecalcFileFound& found) {
    return Padded(found.m_typeName, 8) + Padded(FormText(found), 16) + Padded(std::to_string(found.m_nSize), 14) +
           WithoutControls(found.m_path.string()) + "\n";
}

std::string FileJson(const TPrecalcFileFound& found) {
    TPrecalcJson object;
    object["type"] = found.m_typeName;
    const ETableForm form = FormOf(found.m_path);
    object["form"] = NameOfForm(form);
    object["details"] = found.m_file.m_bDetails;
    object["searched"] = IsLoaded(found, form);
    object["elements"] = TPositionIndexing(found.m_typeName).GetSize();
    object["bytes"] = found.m_nSize;
    object["path"] = found.m_path.string();
    return object.dump(-1, ' ', false, TPrecalcJson::error_handler_t::replace) + "\n";
}

EExitStatus ListFiles(const TPrecalcCommandOptions& options) {
    CProgressLine line(false);
    CConsoleNotifier notifier(line);
    const TSettings settings = LoadSettings(notifier, CommandLineDefaults());
    std::string text;
    for (const TPrecalcFileFound& found : FindPrecalcFiles(MakePrecalcOptions(settings, options.m_precalc).m_folders))
        text += options.m_bJson ? FileJson(found) : FileLine(found);
    WriteOutput(text.empty() && !options.m_bJson ? "no precalculated data\n" : text);
    return EExitStatus::Answered;
}

// --- status

std::string StatusJson(const TRegistersStatus& status) {
    TPrecalcJson object;
    object["bytes"] = status.m_nBytes;
    object["pending"] = status.m_nPending;
    object["types"] = TPrecalcJson::array();
    for (const TRegisterStatus& type : status.m_types) {
        TPrecalcJson one;
        one["type"] = type.m_typeName;
        one["loaded"] = type.m_bLoaded;
        one["bytes"] = type.m_nBytes;
        object["types"].push_back(std::move(one));
    }
    return object.dump() + "\n";
}

/// Those that are named, else those that have files.
std::set<std::string> AskedTypes(const TPrecalcCommandOptions& options, const TPrecalcFolders& folders) {
    std::set<std::string> names(options.m_types.begin(), options.m_types.end());
    if (names.empty())
        for (const TPrecalcFileFound& found : FindPrecalcFiles(folders))
            if (IsCustomType(found.m_typeName) || TypeToLookUp(found.m_typeName) != 0)
                names.insert(found.m_typeName);
    return names;
}

/// Loads data of a type, custom ones too; what cannot be had is told of in the status.
bool LoadForStatus(const std::string& name, CGlobalRegisters& registers, TRegistersStatus& withoutFiles) {
    const bool bCustom = IsCustomType(name);
    const std::string typeName = bCustom ? TPositionIndexing(name).typeName : name;
    const TPositionType type = bCustom ? registers.CustomNumber(typeName) : AskedType(name);
    if (type == 0)
        withoutFiles.m_types.push_back({typeName});
    return type != 0 && static_cast<bool>(CRegisterUse(registers.GetRegisterForTool(type)));
}

EExitStatus TellStatus(const TPrecalcCommandOptions& options) {
    CProgressLine line(false);
    CConsoleNotifier notifier(line);
    const TSettings settings = LoadSettings(notifier, CommandLineDefaults());
    const TPrecalcOptions precalc = MakePrecalcOptions(settings, options.m_precalc);
    CGlobalRegisters registers(precalc, notifier, PrecalcQuota(settings, options.m_precalc, nullptr));
    TRegistersStatus withoutFiles;
    bool bAll = true;
    for (const std::string& name : AskedTypes(options, precalc.m_folders))
        bAll = LoadForStatus(name, registers, withoutFiles) && bAll;
    TRegistersStatus status = registers.Status();
    std::ranges::move(withoutFiles.m_types, std::back_inserter(status.m_types));
    WriteOutput(options.m_bJson ? StatusJson(status) : ShowStatus(status) + "\n");
    return bAll ? EExitStatus::Answered : EExitStatus::Unanswered;
}

// --- missing

EExitStatus TellMissing(const TPrecalcCommandOptions& options) {
    CProgressLine line(false);
    CConsoleNotifier notifier(line);
    const TSettings settings = LoadSettings(notifier, CommandLineDefaults());
    const CGlobalRegisters registers(MakePrecalcOptions(settings, options.m_precalc), notifier, 1);
    const std::vector<std::string> types = MissingTypes(options.m_nPieces, registers);
    TPrecalcJson object;
    object["pieces"] = options.m_nPieces;
    object["missing"] = types;
    WriteOutput((options.m_bJson ? object.dump() : MissingTypesText(options.m_nPieces, types)) + "\n");
    return types.empty() ? EExitStatus::Answered : EExitStatus::Unanswered;
}

// --- longest

std::string LongestText(CBrowseMaxMates& mates, const std::string& typeName, INotifier& notifier, bool bJson) {
    TPrecalcJson object;
    object["type"] = typeName;
    object["mate"] = mates.Moves();
    object["positions"] = TPrecalcJson::array();
    std::string text = mates.Count() == 0 ? "No checkmate in positions of this type\n" : "";
    while (const std::optional<TChessboard> b = mates.Next(notifier)) { // to the end: nobody says to begin anew
        const std::string fen = TablePositionFEN(*b);
        object["positions"].push_back(fen);
        text += mates.Caption() + " " + fen + "\n";
    }
    return bJson ? object.dump() + "\n" : text;
}

EExitStatus TellLongest(const TPrecalcCommandOptions& options) {
    CProgressLine line(false);
    CConsoleNotifier notifier(line);
    const TSettings settings = LoadSettings(notifier, CommandLineDefaults());
    const TPrecalcOptions precalc = MakePrecalcOptions(settings, options.m_precalc);
    CGlobalRegisters registers(precalc, notifier, PrecalcQuota(settings, options.m_precalc, nullptr));
    const TPositionType type = AskedType(options.m_type);
    const CRegisterUse data(registers.GetRegisterForTool(type));
    if (!data && registers.LacksRoom(type))
        throw CNoRoom(NoRoomText(options.m_type));
    if (!data) {
        WriteDiagnostic("No info on positions of this type");
        return EExitStatus::Unanswered;
    }
    if (LooksUnfinished(*data)) { // what is not resolved looks like a long mate
        WriteDiagnostic("The data of type " + options.m_type + " are not finished: their longest mate is not known");
        return EExitStatus::Unanswered;
    }
    CBrowseMaxMates mates(*data, precalc.m_folders.m_installation, static_cast<std::size_t>(options.m_nLimit));
    WriteOutput(LongestText(mates, options.m_type, notifier, options.m_bJson));
    return EExitStatus::Answered;
}

// --- pack, unpack

std::string ConversionText(const std::filesystem::path& from, const std::filesystem::path& to, bool bJson) {
    const std::uint64_t nBefore = std::filesystem::file_size(from), nAfter = std::filesystem::file_size(to);
    if (!bJson)
        return WithoutControls(to.string()) + ": " + std::to_string(nAfter) + " bytes, from " +
               std::to_string(nBefore) + "\n";
    TPrecalcJson object;
    object["from"] = from.string();
    object["to"] = to.string();
    object["bytes_before"] = nBefore;
    object["bytes_after"] = nAfter;
    return object.dump(-1, ' ', false, TPrecalcJson::error_handler_t::replace) + "\n";
}

EExitStatus ConvertTable(const TPrecalcCommandOptions& options, ETableForm form) {
    const std::filesystem::path source = options.m_file;
    const std::filesystem::path target =
        options.m_output.empty() ? NameInForm(source, form) : std::filesystem::path(options.m_output);
    std::error_code error;
    if (!std::filesystem::is_regular_file(source, error))
        throw ChessException(source.string() + ": no such file");
    if (target == source || (form != ETableForm::Plain && FormOf(source) != ETableForm::Plain))
        throw ChessException(source.string() +
                             (form == ETableForm::Plain ? ": not a packed file" : ": is packed already"));
    if (!options.m_bForce && std::filesystem::exists(target, error))
        throw ChessException(target.string() + ": exists already; --force replaces it");
    if (form == ETableForm::Plain)
        UnpackTableFile(source, target);
    else
        PackTableFile(source, form, target, UsableProcessors());
    WriteOutput(ConversionText(source, target, options.m_bJson));
    return EExitStatus::Answered;
}

ETableForm PackedForm(const std::string& text) {
    for (const TFormName& name : kFormNames)
        if (name.m_name == text)
            return name.m_form;
    return ETableForm::Lzw; // the option takes no other word
}

// --- the command

template <class TRun>
void SetPrecalcCallback(CLI::App& command, TChosenCommand& chosen, std::shared_ptr<TPrecalcCommandOptions> options,
                        TRun run) {
    command.callback([options, run, &chosen] {
        chosen = [options, run] {
            try {
                return run(*options);
            } catch (const CSystemFailure& failure) {
                WriteDiagnostic(failure.what());
                return EExitStatus::SystemFailure;
            } catch (const ChessException& failure) {
                WriteDiagnostic(failure.what());
                return EExitStatus::BadInput;
            }
        };
    });
}

void AddConversion(CLI::App& command, TPrecalcCommandOptions& options) {
    command.add_option("FILE", options.m_file, "File of precalculated data")->required();
    command.add_option("--output", options.m_output, "File to write instead of the one beside it")->type_name("OUT");
    command.add_flag("--force", options.m_bForce, "Replace a file that exists");
    command.add_flag("--json", options.m_bJson, "One JSON object");
}

} // namespace

void AddPrecalcCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("precalc", "Files of precalculated endgame data");
    command->require_subcommand(1);
    command->footer(kPrecalcExamples);
    const auto options = std::make_shared<TPrecalcCommandOptions>();

    CLI::App* const list = command->add_subcommand("list", "List the files that would be looked at");
    AddPrecalcFolder(*list, options->m_precalc, "Data");
    list->add_flag("--json", options->m_bJson, "One JSON object a file, on one line");
    SetPrecalcCallback(*list, chosen, options, ListFiles);

    CLI::App* const status = command->add_subcommand("status", "Load data and tell what they take and what is missing");
    status->add_option("TYPE", options->m_types,
                       "Letters of the men besides the kings, as QRr, or a custom type; without any, all types");
    AddPrecalcOptions(*status, options->m_precalc, "Data");
    status->add_flag("--json", options->m_bJson, "One JSON object");
    SetPrecalcCallback(*status, chosen, options, TellStatus);

    CLI::App* const missing =
        command->add_subcommand("missing", "List the types of so many men that have no finished data");
    missing->add_option("N", options->m_nPieces, "Men of a position, the kings among them: 3 to 7")
        ->transform(WholeNumber(kFewestTableMen, kMostTableMen))
        ->required();
    AddPrecalcFolder(*missing, options->m_precalc, "Data");
    missing->add_flag("--json", options->m_bJson, "One JSON object");
    SetPrecalcCallback(*missing, chosen, options, TellMissing);

    CLI::App* const longest = command->add_subcommand("longest", "Show positions of the longest mate of a type");
    longest->add_option("TYPE", options->m_type, "Letters of the men besides the kings, as QRr")->required();
    longest->add_option("--limit", options->m_nLimit, "Positions at most; without the option 10")
        ->type_name("K")
        ->transform(WholeNumber(1, kMostPositions));
    AddPrecalcOptions(*longest, options->m_precalc, "Data");
    longest->add_flag("--json", options->m_bJson, "One JSON object");
    SetPrecalcCallback(*longest, chosen, options, TellLongest);

    CLI::App* const pack = command->add_subcommand("pack", "Pack a plain file");
    AddConversion(*pack, *options);
    pack->add_option("--form", options->m_form, "lzw, lz4, archive or simple; without the option lzw")
        ->type_name("FORM")
        ->check(CLI::IsMember({"lzw", "lz4", "archive", "simple"}));
    SetPrecalcCallback(*pack, chosen, options,
                       [](const TPrecalcCommandOptions& o) { return ConvertTable(o, PackedForm(o.m_form)); });

    CLI::App* const unpack = command->add_subcommand("unpack", "Make the plain file of a packed one");
    AddConversion(*unpack, *options);
    SetPrecalcCallback(*unpack, chosen, options,
                       [](const TPrecalcCommandOptions& o) { return ConvertTable(o, ETableForm::Plain); });
}

} // namespace quillon
