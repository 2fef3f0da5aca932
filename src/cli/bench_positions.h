#pragma once
// The problems of `quillon bench`. Any change of this list changes the numbers of every bench before it.

#include <array>

namespace quillon {

struct TBenchPosition {
    int m_nMoves = 0; // mate in so many moves
    const char* m_placement = "";
};

inline constexpr std::array kBenchPositions{
    // Endings.
    TBenchPosition{4, "2K2k2/Q7/8/8/8/8/8/8"},
    TBenchPosition{4, "B7/7k/4K3/8/8/8/8/2B5"},
    TBenchPosition{4, "8/8/8/8/1KN5/4B3/8/1k6"},
    TBenchPosition{4, "k7/n7/3K4/3R4/8/8/8/8"},
    TBenchPosition{4, "1k6/8/2K3R1/8/8/8/4p3/8"},

    // One key.
    TBenchPosition{2, "8/8/8/5B2/6K1/8/3R2b1/4Q1bk"}, // zugzwang
    TBenchPosition{2, "8/3k4/8/8/PB4N1/6Q1/8/4K2R"},  // checking key
    TBenchPosition{3, "4k3/8/8/8/2b5/2R2QnR/8/3K4"},  // quiet key
    TBenchPosition{3, "1kn5/1b6/p1P5/2QRK1P1/5B1p/2N5/3P4/8"},
    TBenchPosition{4, "6rk/1p3Kpp/4P3/4Q3/8/8/8/8"},
    TBenchPosition{4, "3n2r1/P3BpR1/2p3b1/p1q3Pp/Q7/2p4K/1NP5/6k1"},
    TBenchPosition{4, "6n1/4b2B/p1N1Rr2/5B2/3Kp1Pk/5p2/N7/1QR5"},
    TBenchPosition{4, "1K6/4P3/1Q6/4n2k/4P1Rp/6r1/2p1p1B1/R7"},

    // Promotions.
    TBenchPosition{2, "8/R1P1k2P/6Kp/8/4B3/8/8/8"}, // to a knight
    TBenchPosition{2, "2N5/K3Pp2/3p4/k5P1/8/P3B3/8/8"},
    TBenchPosition{3, "8/6P1/2p5/3p4/4Qrk1/1N2b3/4P3/R3K3"},
    TBenchPosition{3, "8/PP2R3/5K2/k2P1p2/2rP3Q/p4p1P/5B2/r7"},
    TBenchPosition{4, "8/5P1P/P7/4p3/2p4K/8/8/7k"},

    // Castlings of White, and of Black.
    TBenchPosition{2, "8/4B1N1/6R1/8/5p2/8/8/1k2K2R"},
    TBenchPosition{2, "6B1/3P2n1/1p6/2P5/8/R7/8/R3K2k"},
    TBenchPosition{3, "6N1/8/3R1p2/2k5/8/7Q/8/R3K3"},
    TBenchPosition{3, "r3k3/8/8/8/P4Q2/8/8/1R4K1"},

    // En passant.
    TBenchPosition{3, "8/3p4/7N/2P5/1QP5/8/8/5K1k"},
    TBenchPosition{3, "8/2p5/6p1/kP6/6R1/4BQ2/8/2K5"},

    // No solution.
    TBenchPosition{3, "1r2b2n/Q1R2pKP/8/5p2/1B6/2BkP1bP/2N2p2/8"},
    TBenchPosition{4, "2R1r2N/4b3/nB2K3/p3B2p/7R/r7/P3p3/1k1b4"},
    TBenchPosition{4, "8/6R1/2K4n/P1b1p2N/8/1kBp1Q2/8/1n3r2"},
    TBenchPosition{4, "3Bk3/6bP/8/3p3P/2R1p3/B1rN1pK1/1RpP4/8"},

    // Longer, with many duals, and with one key.
    TBenchPosition{5, "4rR2/B7/K7/3pq2n/b3p3/1pPB4/1NpRP1Q1/4k3"},
    TBenchPosition{5, "7b/2K1B3/8/3P4/2N5/b1p1pkPB/Q1p5/8"},

    // Long enough for the register.
    TBenchPosition{6, "8/8/8/8/3N4/6pB/3K1pPb/5k1n"},
    TBenchPosition{6, "8/8/8/8/5p2/6pB/3KNpPb/5k1n"},
    TBenchPosition{7, "8/8/8/8/3N4/6pB/5pP1/3K1kbn"},
    TBenchPosition{7, "7k/6p1/6P1/4pP2/pKP1P3/8/8/8"},
    TBenchPosition{11, "7k/5p2/5P1p/2K4P/8/8/8/8"},
    TBenchPosition{12, "7k/3p1p2/2pP1P1p/2P4P/8/8/3K4/8"},
};

} // namespace quillon
