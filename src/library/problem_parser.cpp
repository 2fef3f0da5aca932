#include "library/problem_parser.h"

#include <limits>

#include "library/ascii.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

constexpr std::string_view kVariants = "//!";
constexpr std::string_view kTags = "//#";
constexpr std::string_view kSortIndications = "//@SortIndications: ";

std::string_view NextSpecialToken(TProblemParser& parser) { return NextToken(parser.m_position, true, true); }

/// The digits an identifier begins with; the id of a problem is a signed number of 32 bits.
std::int32_t ReadId(TProblemParser& parser) {
    const std::string_view lexeme = NextIdentifier(parser.m_position);
    long long id = 0;
    for (const char c : lexeme) {
        if (!IsAsciiDigit(c))
            break;
        id = id * 10 + (c - '0');
        if (id > std::numeric_limits<std::int32_t>::max())
            parser.m_position.Fail("Problem number out of range: " + std::string(lexeme));
    }
    return static_cast<std::int32_t>(id);
}

/// The number of moves behind "#" or "s#".
int ReadMoves(TProblemParser& parser) {
    const std::string_view lexeme = NextIdentifier(parser.m_position);
    const std::string invalid = "Invalid stipulation: " + std::string(lexeme);
    if (!IsAsciiDigit(lexeme.front()))
        parser.m_position.Fail(invalid);
    if (!AreAllDigits(lexeme))
        parser.Warn(invalid);
    return LeadingNumber(lexeme);
}

void ApplyDefaults(TProblemParser& parser, const TDefaultClauses& defaults, int nMoves) {
    const auto clauses = defaults.find(nMoves);
    if (clauses == defaults.end())
        return;
    for (const std::string& option : clauses->second) {
        if (ToUpperAscii(option) != "ALLSOLUTIONS")
            parser.m_position.Fail("Unrecognizable option: " + option);
        parser.m_problem.flags |= kFlagAllSolutions;
    }
}

/// "#" or "s#" if that is what follows, and then it is consumed; else the kind of a problem without a stipulation.
std::uint16_t ReadKind(TProblemParser& parser) {
    CTextPosition& position = parser.m_position;
    const CTextPosition before = position;
    std::string_view lexeme = NextToken(position, true, true);
    if (lexeme == "#")
        return kDirectMate;
    if (lexeme == "s" && NextToken(position, true, true) == "#")
        return kSelfmate;
    position = before;
    return kNoStipulation;
}

/// The lines "//#name" behind "//#TAGS".
void ReadTags(TProblemParser& parser) {
    while (PeekToken(parser.m_position).starts_with(kTags)) {
        const std::string tag = parser.Decode(NextSpecialToken(parser).substr(kTags.size()));
        if (!tag.empty())
            parser.m_problem.tags.insert(tag);
    }
}

/// The lines "//!{Name} moves" behind "//!VARIANTS", to "//!ENDVARIANTS" or anything else that is no such line.
void ReadVariants(TProblemParser& parser) {
    while (PeekToken(parser.m_position).starts_with(kVariants)) {
        const std::string_view token = NextSpecialToken(parser);
        if (ToUpperAscii(Trimmed(token)) == "//!ENDVARIANTS")
            return;
        Variant variant;
        AtLexeme(parser, [&] { ParseVariantLine(variant, parser.Decode(token.substr(kVariants.size()))); });
        std::string name = variant.name;
        if (parser.m_problem.variants.contains(name))
            parser.Warn("Variant \"" + name + "\" redefinition - overwriting.");
        parser.m_problem.variants.insert_or_assign(std::move(name), std::move(variant));
    }
}

/// Consumes the line that opens a section, if it is that which follows.
bool OpensSection(TProblemParser& parser, std::string_view line) {
    if (ToUpperAscii(Trimmed(PeekToken(parser.m_position))) != line)
        return false;
    static_cast<void>(NextSpecialToken(parser));
    return true;
}

} // namespace

std::string TProblemParser::Decode(std::string_view bytes) const {
    return m_bUtf8 ? DecodeUtf8(bytes) : DecodeLegacyText(bytes);
}

void TProblemParser::Warn(const std::string& message) { Warn(CTextPosition::Shown(message), m_position.LexemePlace()); }

void ParseHeader(TProblemParser& parser, const TDefaultClauses& defaults) {
    ChessProblem& problem = parser.m_problem;
    problem.id = ReadId(parser);
    parser.m_bIdRead = true;
    problem.line = parser.m_position.LexemePlace().m_nLine;

    problem.kind = ReadKind(parser);
    problem.plies = kNoPlies;
    if (problem.kind == kNoStipulation)
        return;
    const int nMoves = ReadMoves(parser);
    AtLexeme(parser, [&] { SetStipulation(problem, problem.kind, nMoves); });
    ApplyDefaults(parser, defaults, nMoves);
}

void ParseSections(TProblemParser& parser) {
    if (OpensSection(parser, "//#TAGS"))
        ReadTags(parser);
    if (OpensSection(parser, "//!VARIANTS"))
        ReadVariants(parser);
    std::string_view token = NextSpecialToken(parser);
    if (token.starts_with(kSortIndications)) {
        const std::string_view text = token.substr(kSortIndications.size());
        AtLexeme(parser, [&] { ParseSortIndications(parser.m_problem.sortIndications, text, parser.m_bPolish); });
        token = NextSpecialToken(parser);
    }
    if (token != "{")
        parser.m_position.Fail("Opening bracket expected.");
    parser.m_bInBody = true;
}

void ParseWholeProblem(TProblemParser& parser, const TDefaultClauses& defaults) {
    ParseHeader(parser, defaults);
    ParseOptions(parser);
    ParseSections(parser);
    ParseBody(parser);
}

} // namespace quillon
