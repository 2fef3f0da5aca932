#include "globalregister/verification/one_move_types.h"

#include <algorithm>

#include "core/position_type.h"

namespace quillon {

namespace {

using TTypeNames = std::set<std::string>;

constexpr std::string_view kWhiteLetters = "QRBNP";
constexpr std::string_view kBlackLetters = "qrbnp";
constexpr std::string_view kWhitePromotions = "QRBN";
constexpr std::string_view kBlackPromotions = "qrbn";

std::string InOrder(std::string typeName) {
    std::ranges::sort(typeName, {}, [](char letter) { return kTypeLetters.find(letter); });
    return typeName;
}

/// The types without one of the letters.
TTypeNames AfterCaptures(const TTypeNames& types, std::string_view letters) {
    TTypeNames result;
    for (const std::string& type : types)
        for (const char letter : letters)
            if (type.find(letter) != std::string::npos)
                result.insert(RemoveFromPosType(type, letter));
    return result;
}

TTypeNames AfterPromotions(const TTypeNames& types, char pawn, std::string_view figures) {
    TTypeNames result;
    for (const std::string& type : types)
        if (const std::size_t place = type.find(pawn); place != std::string::npos)
            for (std::string promoted = type; const char figure : figures) {
                promoted[place] = figure;
                result.insert(InOrder(promoted));
            }
    return result;
}

/// After one move of a side: quiet, a capture, a promotion, or both.
TTypeNames AfterMove(TTypeNames types, std::string_view captured, char pawn, std::string_view figures) {
    types.merge(AfterPromotions(types, pawn, figures));
    types.merge(AfterCaptures(types, captured));
    return types;
}

/// A reply of two steps may be met by an en passant capture, and that by another such reply, before anything can be
/// looked up.
void AddEnPassantCaptures(TTypeNames& types) {
    for (std::size_t nBefore = 0; nBefore != types.size();) {
        nBefore = types.size();
        TTypeNames both;
        std::ranges::copy_if(types, std::inserter(both, both.end()), [](const std::string& type) {
            return type.find('P') != std::string::npos && type.find('p') != std::string::npos;
        });
        types.merge(AfterCaptures(both, "p"));
    }
}

} // namespace

std::set<std::string> TypesAfterOneMove(std::string_view typeName) {
    TTypeNames types = AfterMove({std::string(typeName)}, kBlackLetters, 'P', kWhitePromotions);
    AddEnPassantCaptures(types);
    types = AfterMove(std::move(types), kWhiteLetters, 'p', kBlackPromotions);
    std::erase_if(types, [](const std::string& type) { return CannotMate(type); });
    return types;
}

} // namespace quillon
