#include "cli/probe_command.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "cli/console_notifier.h"
#include "cli/given_position.h"
#include "cli/output.h"
#include "cli/precalc_data.h"
#include "cli/solve_settings.h"
#include "core/castling.h"
#include "core/chess_exception.h"
#include "globalregister/global_registers.h"
#include "globalregister/table_position.h"
#include "globalregister/verification/compute_expected.h"

namespace quillon {

namespace {

constexpr const char* kProbeExamples = R"(
Examples:
  quillon probe --fen "8/8/8/3k4/8/8/8/K3Q3 w - -" --precalc DIR
  quillon probe --fen "8/8/8/3k4/8/8/8/K3Q3" --json
  quillon probe --type Q --index 2910 --precalc DIR

Data tell the length of the mate with White to move. They know no castling: of
a position where it is possible they say nothing. Custom types, of which a part
of the men never moves, tell of a mate in at most so many moves.

An index is the number of a position in the table of its type: each number is of
one position, or of none. Where men are equal a position has several; told is the
one that is looked up.

Exit status: 0 a mate or none, 1 the data have no answer, 2 bad usage.)";

constexpr const char* kNoDataOnPosition = "No data on this position";

struct TProbeOptions {
    std::string m_fen;           // empty: type and index are given
    std::string m_type, m_index; // as typed
    TPrecalcChoice m_precalc;
    bool m_bJson = false;
};

struct TProbe {
    std::string m_type;                   // empty: no material of data
    std::optional<std::uint64_t> m_index; // of the position in its table
    std::optional<int> m_halfMoves;       // 0: no mate; none: no answer
    std::string m_text;                   // for a person
    bool m_bAtMost = false;               // a custom type knows of this mate; there may be a quicker one
};

bool IsCastlingPossible(const TGivenPosition& position) {
    return (WhiteCastlingsOnBoard(position.m_board) & position.m_fields.m_nCastlingWhite) != 0 ||
           (BlackCastlingsOnBoard(position.m_board) & position.m_fields.m_nCastlingBlack) != 0;
}

TProbe ProbeData(const TGivenPosition& position, const TGlobalRegister& data) {
    TProbe probe{data.typeName, data.GetIndex(position.m_board), std::nullopt, kNoDataOnPosition};
    const int n = IsCastlingPossible(position) ? kUnknownHalfMoves : data.ProvedHalfMoves(position.m_board);
    if (n == kUnknownHalfMoves)
        return probe;
    probe.m_halfMoves = n;
    probe.m_text = n == 0 ? "No checkmate in this position" : "#" + std::to_string(n / 2 + 1) + " in current position";
    return probe;
}

/// A custom type knows of no play but that which leaves its frozen men where they are: its mates are mates, though
/// there may be quicker ones, and nothing else that it says proves anything.
TProbe ProbeCustomType(const TGivenPosition& position, const TGlobalRegister& data) {
    TProbe probe = ProbeData(position, data);
    if (probe.m_halfMoves.value_or(0) == 0)
        return {probe.m_type, probe.m_index, std::nullopt, kNoDataOnPosition};
    probe.m_bAtMost = true;
    probe.m_text = "Mate in at most " + std::to_string(*probe.m_halfMoves / 2 + 1) + " moves in current position";
    return probe;
}

bool IsQuicker(const TProbe& probe, const TProbe& other) {
    return probe.m_halfMoves && (!other.m_halfMoves || *probe.m_halfMoves < *other.m_halfMoves);
}

/// The quickest mate of all custom types that the position is of; none if it is of none.
std::optional<TProbe> ProbeCustomTypes(const TGivenPosition& position, CGlobalRegisters& registers) {
    std::optional<TProbe> best;
    for (std::size_t next = 0;;) {
        const CRegisterUse data(registers.GetCustomRegisterForTool(position.m_board, next));
        if (!data)
            return best;
        TProbe probe = ProbeCustomType(position, *data);
        if (!best || IsQuicker(probe, *best))
            best = std::move(probe);
    }
}

/// Its index is that of the same men with White to move.
TProbe ProbeBeforeBlack(const TGivenPosition& position, CGlobalRegisters& registers) {
    const TPositionType type = GetPositionType(position.m_board);
    const CRegisterUse data(registers.GetRegisterForTool(type));
    if (!data)
        return {PositionTypeToString(type), std::nullopt, std::nullopt, "No info about positions before Black's move"};
    return {data->typeName, data->GetIndex(position.m_board), std::nullopt,
            "No information about positions before Black's move"};
}

TProbe Probe(const TGivenPosition& position, CGlobalRegisters& registers) {
    if (position.m_fields.m_cSideToMove != 'w')
        return ProbeBeforeBlack(position, registers);
    const TPositionType type = GetPositionType(position.m_board);
    const CRegisterUse data(registers.GetRegisterForTool(type));
    const std::optional<TProbe> exact = data ? std::optional(ProbeData(position, *data)) : std::nullopt;
    if (exact && exact->m_halfMoves)
        return *exact;
    const std::optional<TProbe> custom = ProbeCustomTypes(position, registers);
    if (custom && (custom->m_bAtMost || !exact))
        return *custom;
    return exact.value_or(
        TProbe{PositionTypeToString(type), std::nullopt, std::nullopt, "No info on positions of this type"});
}

// --- a typed index

/// Numbers from 0 on; others are told of.
std::uint64_t TypedIndex(const std::string& text) {
    std::uint64_t index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error == std::errc::result_out_of_range)
        throw ChessException("no table has so many elements: " + text);
    if (error != std::errc() || end != text.data() + text.size())
        throw ChessException("Expected a integer number");
    return index;
}

/// The position of an index as the data number them.
///   Result  none: there are no data of the type.
///   Errors  ChessException: no number, or none of a position.
std::optional<TGivenPosition> PositionOfIndex(const TProbeOptions& options, CGlobalRegisters& registers) {
    const std::uint64_t index = TypedIndex(options.m_index);
    const CRegisterUse data(registers.GetRegisterForTool(AskedType(options.m_type)));
    if (!data)
        return std::nullopt;
    if (index >= data->GetSize())
        throw ChessException("the table of type " + data->typeName + " has " + std::to_string(data->GetSize()) +
                             " elements, the first of them is 0");
    TChessboard b = EmptyChessboard();
    if (!GetTablePosition(*data, index, b))
        throw ChessException("no position with White to move has this index in the table of type " + data->typeName);
    return ReadGivenPosition(TablePositionFEN(b));
}

// --- the command

std::string ProbeJson(const TGivenPosition& position, const TProbe& probe) {
    nlohmann::ordered_json object;
    object["fen"] = WriteFEN(position.m_board, false) + " " + position.m_fields.m_cSideToMove;
    object["type"] = probe.m_type;
    object["index"] = probe.m_index ? nlohmann::ordered_json(*probe.m_index) : nlohmann::ordered_json(nullptr);
    object["result"] = !probe.m_halfMoves ? "unknown" : *probe.m_halfMoves == 0 ? "no-mate" : "mate";
    if (probe.m_halfMoves && *probe.m_halfMoves != 0)
        object[probe.m_bAtMost ? "moves_at_most" : "moves"] = *probe.m_halfMoves / 2 + 1;
    return object.dump() + "\n";
}

std::string ProbeText(const TProbeOptions& options, const TGivenPosition& position, const TProbe& probe) {
    std::string text = options.m_index.empty() ? "" : "Position:       " + WriteFEN(position.m_board, false) + "\n";
    text += "Position type:  " + (probe.m_type.empty() ? "none" : probe.m_type) + "\n";
    if (probe.m_index)
        text += "Index:          " + std::to_string(*probe.m_index) + "\n";
    return text + probe.m_text + "\n";
}

EExitStatus RunProbe(const TProbeOptions& options) {
    try {
        if (options.m_fen.empty() == options.m_index.empty())
            throw ChessException("--fen, or --type and --index: one of the two");
        CProgressLine line(false);
        CConsoleNotifier notifier(line);
        const TSettings settings = LoadSettings(notifier, CommandLineDefaults());
        CGlobalRegisters registers(MakePrecalcOptions(settings, options.m_precalc), notifier,
                                   PrecalcQuota(settings, options.m_precalc, nullptr));
        const std::optional<TGivenPosition> position =
            options.m_index.empty() ? ReadGivenPosition(options.m_fen) : PositionOfIndex(options, registers);
        if (!position) {
            WriteDiagnostic("No info on positions of this type");
            return EExitStatus::Unanswered;
        }
        CheckSideToMove(*position);
        if (position->m_note.find("en passant") != std::string::npos) // castlings are taken from the text
            WriteDiagnostic(position->m_note);
        const TProbe probe = Probe(*position, registers);
        WriteOutput(options.m_bJson ? ProbeJson(*position, probe) : ProbeText(options, *position, probe));
        return probe.m_halfMoves ? EExitStatus::Answered : EExitStatus::Unanswered;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddProbeCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("probe", "Ask precalculated endgame data about a position");
    const auto options = std::make_shared<TProbeOptions>();
    command->add_option("--fen", options->m_fen, "A FEN, its placement alone, or a position id")->type_name("FEN");
    CLI::Option* const type =
        command->add_option("--type", options->m_type, "Letters of the men besides the kings, as QRr")
            ->type_name("TYPE");
    CLI::Option* const index =
        command
            ->add_option("--index", options->m_index,
                         "Instead of --fen: the index of this position, by which the table of --type has it")
            ->type_name("N")
            ->needs(type);
    type->needs(index);
    AddPrecalcOptions(*command, options->m_precalc, "Data");
    command->add_flag("--json", options->m_bJson, "One JSON object");
    command->footer(kProbeExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunProbe(*options); }; });
}

} // namespace quillon
