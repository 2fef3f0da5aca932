#include "library/problem_language.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <utility>

namespace quillon {

namespace {

constexpr std::size_t kLanguages = 3;
using TNames = std::array<std::string_view, kLanguages>; // by ELanguage; empty where there is no name

constexpr TNames kMainVariantNames{"Wariant główny", "Main variant", "Основний варіант"};

// Themes of problems. Tags in Ukrainian stay in the wording of the file.
constexpr std::array<TNames, 51> kTags{{
    {"roszada", "castling", ""},
    {"roszada długa", "castling long", ""},
    {"roszada krótka", "castling short", ""},
    {"klatka", "skittles setup", ""},
    {"wąż morski", "sea snake", ""},
    {"unikanie pata", "stalemate avoidance", ""},
    {"zagrożenie patem", "zagrożenie patem", ""},
    {"wahadło", "pendulum", ""},
    {"słaba promocja na gońca", "underpromotion to Bishop", ""},
    {"słaba promocja na skoczka", "underpromotion to Knight", ""},
    {"słaba promocja na wieżę", "underpromotion to Rook", ""},
    {"słaba promocja na gońca (wielokrotna)", "underpromotion to Bishop (multiple)", ""},
    {"słaba promocja na skoczka (wielokrotna)", "underpromotion to Knight (multiple)", ""},
    {"słaba promocja na czarnego skoczka (wielokrotna)", "underpromotion to Black Knight (multiple)", ""},
    {"słaba promocja na wieżę (wielokrotna)", "underpromotion to Rook (multiple)", ""},
    {"słaba promocja na czarną wieżę (wielokrotna)", "underpromotion to Black Rook (multiple)", ""},
    {"promocja na hetmana (wielokrotna)", "promotion to Queen (multiple)", ""},
    {"promocja na czarnego hetmana (wielokrotna)", "promotion to Black Queen (multiple)", ""},
    {"podwójny szach", "double check", ""},
    {"znaczne poświęcenie", "considerable sacrifice", ""},
    {"pozycja symetryczna", "symmetrical position", ""},
    {"mat idealny", "ideal mate", ""},
    {"mat wzorowy", "model mate", ""},
    {"Zygfryd (wieża)", "Siegfried (Rook)", ""},
    {"Zygfryd (hetman)", "Siegfried (Queen)", ""},
    {"Zygfryd (goniec)", "Siegfried (Bishop)", ""},
    {"mat beczkowy", "smothered mate", ""},
    {"wzajemny zugzwang", "dual zugzwang", ""},
    {"mat pionem", "pawn mate", ""},
    {"skakografia/litery/cyfry", "scaccografia/letters/digits", ""},
    {"pozycja nielegalna", "illegal position", ""},
    {"schodki", "staircase", ""},
    {"przesłona Plachuty", "Plachutta", ""},
    {"Plachutta/Nowotny", "Plachutta/Novotny", ""},
    {"blokowanie + kontrblokowanie Plachutta/Nowotny", "Plachutta/Novotny blocking + counterblocking", ""},
    {"kontrblokowanie (Plachutta/Nowotny)", "counterblocking (Plachutta/Novotny)", ""},
    {"\"ruchy jednego piona\"", "\"one pawn's moves\"", ""},
    {"figury z promocji na szachownicy", "promoted material on board", ""},
    {"bicie w przelocie", "en passant", ""},
    {"\"marsz piona\"", "\"the pawn's march\"", ""},
    {"przełom pionowy", "pawn break", ""},
    {"zamiana miejsc", "change of places", ""},
    {"całkowita bierność", "total passivity", ""},
    {"feniks", "Phoenix", ""},
    {"ulubione", "favourites", ""},
    {"ruchy po przekątnej", "moves on diagonal", ""},
    {"zamurowanie", "bricking up", ""},
    {"zamurowanie figury", "bricking up a figure", ""},
    {"\"spacer króla\"", "\"King's walk\"", ""},
    {"odciąganie", "pulling away", ""},
    {"zderoszowanie", "decastling", ""},
}};

constexpr std::string_view NameIn(const TNames& names, ELanguage language) {
    return names[static_cast<std::size_t>(language)];
}

/// Every name of the table with its row.
const std::map<std::string_view, const TNames*>& RowsByName() {
    static const std::map<std::string_view, const TNames*> rows = [] {
        std::map<std::string_view, const TNames*> byName;
        for (const TNames& row : kTags)
            for (const std::string_view name : row)
                if (!name.empty())
                    byName.emplace(name, &row);
        return byName;
    }();
    return rows;
}

bool RenameMainVariant(ChessProblem& problem, ELanguage language) {
    const std::string own(MainVariantName(language));
    bool bOnlyOne = true;
    for (const std::string_view name : kMainVariantNames) {
        const auto found = name == own ? problem.variants.end() : problem.variants.find(std::string(name));
        if (found == problem.variants.end())
            continue;
        Variant variant = std::move(found->second);
        problem.variants.erase(found);
        variant.name = own;
        // One of that name is kept.
        bOnlyOne = problem.variants.emplace(own, std::move(variant)).second && bOnlyOne;
    }
    return bOnlyOne;
}

} // namespace

std::string_view MainVariantName(ELanguage language) { return NameIn(kMainVariantNames, language); }

bool IsMainVariantName(std::string_view name) {
    return std::find(kMainVariantNames.begin(), kMainVariantNames.end(), name) != kMainVariantNames.end();
}

std::string_view TagName(std::string_view tag, ELanguage language) {
    const auto row = RowsByName().find(tag);
    if (row == RowsByName().end() || NameIn(*row->second, language).empty())
        return tag;
    return NameIn(*row->second, language);
}

std::set<std::string> KnownTags() {
    std::set<std::string> tags;
    for (const auto& [name, row] : RowsByName())
        tags.emplace(name);
    return tags;
}

bool BringToLanguage(ChessProblem& problem, ELanguage language) {
    const bool bOnlyOne = RenameMainVariant(problem, language);
    std::set<std::string> tags;
    for (const std::string& tag : problem.tags)
        tags.emplace(TagName(tag, language));
    problem.tags = std::move(tags);
    return bOnlyOne;
}

} // namespace quillon
