#pragma once
// The longest mates of endgames as they have been published: White to move and to win, moves to mate.

#include <string_view>

namespace quillon {

struct TPublishedMate {
    std::string_view m_type;
    int m_nMoves;
};

inline constexpr TPublishedMate kPublishedMates[] = {
    {"Q", 10},  {"R", 16},  {"P", 28},  {"QQ", 4},  {"QR", 6},  {"QB", 8},  {"QN", 9},  {"QP", 10},
    {"RR", 7},  {"RB", 16}, {"RN", 16}, {"RP", 16}, {"BB", 19}, {"BN", 33}, {"BP", 31}, {"NN", 1},
    {"NP", 27}, {"PP", 32}, {"Qq", 13}, {"Qr", 35}, {"Qb", 17}, {"Qn", 21}, {"Qp", 28}, {"Rq", 19},
    {"Rr", 19}, {"Rb", 29}, {"Rn", 40}, {"Rp", 26}, {"Np", 7},  {"Pp", 33},
};

} // namespace quillon
