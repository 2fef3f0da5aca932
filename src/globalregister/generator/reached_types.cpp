#include "globalregister/generator/reached_types.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "core/position_type.h"
#include "globalregister/generator/generator_material.h"

namespace quillon {

namespace {

struct TSide {
    std::string_view m_own;      // letters of its men
    char m_pawn, m_hostilePawn;  // and their letters
    std::string_view m_promoted; // what its pawn can become
};
constexpr TSide kWhiteSide{"QRBNP", 'P', 'p', "QRBN"};
constexpr TSide kBlackSide{"qrbnp", 'p', 'P', "qrbn"};

using TTypeSet = std::set<std::string>;

bool IsOwn(const TSide& side, char letter) { return side.m_own.find(letter) != std::string_view::npos; }

/// What is left after a capture of each hostile man that `side` can take; a pawn that promotes takes no pawn.
TTypeSet AfterCaptures(const std::string& typeName, const TSide& side, bool bPawnsToo) {
    TTypeSet types;
    for (std::size_t i = 0; i < typeName.size(); ++i)
        if (!IsOwn(side, typeName[i]) && (bPawnsToo || typeName[i] != side.m_hostilePawn))
            types.insert(std::string(typeName).erase(i, 1));
    return types;
}

/// The materials that one capture or promotion of a side leads to.
TTypeSet AfterMove(const std::string& typeName, const TSide& side) {
    TTypeSet types = AfterCaptures(typeName, side, true);
    const std::size_t pawn = typeName.find(side.m_pawn);
    if (pawn == std::string::npos)
        return types;
    for (const char figure : side.m_promoted) {
        std::string promoted = typeName;
        promoted[pawn] = figure;
        types.merge(AfterCaptures(promoted, side, false));
        types.insert(std::move(promoted));
    }
    TTypeSet ordered;
    for (const std::string& type : types)
        ordered.insert(InTypeOrder(type));
    return ordered;
}

/// With Black to move, after White's conversion and whatever captures in passing may follow upon Black's double steps.
TTypeSet AfterWhite(const std::string& typeName) {
    TTypeSet types = AfterMove(typeName, kWhiteSide);
    std::vector<std::string> open(types.begin(), types.end());
    while (!open.empty()) {
        std::string type = std::move(open.back());
        open.pop_back();
        const std::size_t taken = type.find('p');
        if (taken == std::string::npos || type.find('P') == std::string::npos)
            continue;
        if (const auto [added, bNew] = types.insert(type.erase(taken, 1)); bNew)
            open.push_back(*added);
    }
    return types;
}

bool IsSimpler(const std::string& a, const std::string& b) {
    const auto order = [](const std::string& type) {
        return std::make_tuple(type.size(), std::ranges::count(type, 'P') + std::ranges::count(type, 'p'), type);
    };
    return order(a) < order(b);
}

std::vector<std::string> BySimplicity(const TTypeSet& types) {
    std::vector<std::string> sorted(types.begin(), types.end());
    std::ranges::sort(sorted, IsSimpler);
    return sorted;
}

} // namespace

std::string InTypeOrder(std::string_view letters) {
    std::string typeName(letters);
    std::ranges::sort(typeName, {}, [](char letter) { return kTypeLetters.find(letter); });
    return typeName;
}

std::vector<std::string> NeededTypes(std::string_view typeName) {
    const std::string type = InTypeOrder(typeName);
    TTypeSet needed = AfterMove(type, kBlackSide);
    for (const std::string& reached : AfterWhite(type)) {
        needed.merge(AfterMove(reached, kBlackSide));
        needed.insert(reached);
    }
    std::erase_if(needed, [](const std::string& reached) { return !CanWhiteMate(reached); });
    return BySimplicity(needed);
}

// A move that changes the material takes a man, or a pawn, away: what is needed is always simpler.
std::vector<std::string> TypesInOrderOfMaking(const std::vector<std::string>& typeNames) {
    TTypeSet all;
    std::vector<std::string> open;
    for (const std::string& typeName : typeNames)
        open.push_back(InTypeOrder(typeName));
    while (!open.empty()) {
        const std::string type = std::move(open.back());
        open.pop_back();
        if (!all.insert(type).second)
            continue;
        for (std::string& needed : NeededTypes(type))
            open.push_back(std::move(needed));
    }
    return BySimplicity(all);
}

} // namespace quillon
