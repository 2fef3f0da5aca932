// Four men: the longest mates that are known, and marks against sweeps where men are equal or change.

#include "globalregister/generated_tables.h"

namespace quillon {

namespace {

TElements Generated(CGeneratedTables& tables, const std::string& type, bool bFullSweeps) {
    TGeneratorOptions options;
    options.m_nThreads = 2;
    options.m_bFullSweeps = bFullSweeps;
    return tables.Generate(type, std::move(options));
}

} // namespace

TEST(GeneratorLongest, FourMenWithoutPawns) {
    CGeneratedTables tables;
    for (const auto& [type, nMoves] : std::initializer_list<std::pair<const char*, unsigned>>{
             {"Q", 10}, {"R", 16}, {"BN", 33}, {"BB", 19}, {"QR", 6}, {"RR", 7}, {"Qr", 35}, {"Rr", 19}, {"Qq", 13}})
        EXPECT_EQ(LongestMate(Generated(tables, type, false)), nMoves) << type;
}

TEST(GeneratorLongest, SweepsFindTheSame) {
    CGeneratedTables tables;
    for (const char* const type : {"Q", "R", "RR", "Qr", "BB"})
        EXPECT_EQ(Generated(tables, type, false), Generated(tables, type, true)) << type;
}

} // namespace quillon
