// The scheduler's division of time.

#include "parallel/quantum.h"

#include <gtest/gtest.h>

namespace quillon::test {
namespace {

/// Slots, all open, with these times.
TSlotTimes Slots(int nLevel, int nSchedulerLevels, int nCustomFrom, const std::vector<std::uint32_t>& times) {
    TSlotTimes slots{nLevel, nSchedulerLevels, nCustomFrom, {}};
    for (const std::uint32_t time : times)
        slots.m_slots.push_back({true, time});
    return slots;
}

TEST(Quantum, TheFirstSlotHasMuchTimeHighInTheTree) {
    constexpr int kFirst[] = {83, 55, 35, 25, 21, 17, 11, 5, 3};
    for (int level = 1; level <= 9; ++level)
        EXPECT_EQ(Quantum(Slots(level, 9, 1, {0, 0, 0}), 0), kFirst[level - 1]) << level;
    EXPECT_EQ(Quantum(Slots(1, 6, 1, {0, 0}), 0), 25);
    EXPECT_EQ(Quantum(Slots(6, 6, 1, {0, 0}), 0), 3);
    EXPECT_EQ(Quantum(Slots(7, 6, 1, {0, 0}), 0), 6) << "outside the range";
}

TEST(Quantum, LateSlotsStandOnAFibonacciRow) {
    constexpr int kLate[] = {21, 13, 8, 5, 3, 2, 1, 0, -1};
    for (int level = 1; level <= 9; ++level)
        EXPECT_EQ(Quantum(Slots(level, 9, 1, {0, 0, 0}), 2), kLate[level - 1]) << level;
    EXPECT_EQ(Quantum(Slots(7, 6, 1, {0, 0, 0}), 2), -1) << "outside the range";
}

TEST(Quantum, SlotsThatWereSortedAmongTheBestHaveAMultiple) {
    constexpr int kAmongTheBest[] = {42, 26, 16, 10, 6, 4, 3, 2, 1};
    for (int level = 1; level <= 9; ++level)
        EXPECT_EQ(Quantum(Slots(level, 9, 3, {0, 0, 0}), 2), kAmongTheBest[level - 1]) << level;
}

TEST(Quantum, OutsideTheRangeAnEarlySlotHasASecond) {
    EXPECT_EQ(Quantum(Slots(7, 6, 3, {0, 0, 0}), 0), 6);
    EXPECT_EQ(Quantum(Slots(7, 6, 3, {0, 0, 0}), 1), 1);
    EXPECT_EQ(Quantum(Slots(7, 6, 3, {0, 0, 0}), 2), 1);
}

TEST(Quantum, TheFirstOpenSlotHasTheTimeOfTheFirst) {
    TSlotTimes slots = Slots(1, 6, 1, {0, 0, 0});
    slots.m_slots[0].m_bOpen = false;
    EXPECT_EQ(Quantum(slots, 1), 25);
    EXPECT_EQ(Quantum(slots, 2), 5);
    slots.m_slots[1].m_bOpen = false;
    EXPECT_EQ(Quantum(slots, 2), 25) << "the only one";
}

TEST(Quantum, Lengths) {
    EXPECT_EQ(QuantumMs(83), 83000);
    EXPECT_EQ(QuantumMs(0), 300);
    EXPECT_EQ(QuantumMs(-1), 100);
    EXPECT_EQ(QuantumMs(3, 10), 30);
    EXPECT_EQ(QuantumUnits(25), 250u);
    EXPECT_EQ(QuantumUnits(0), 3u);
    EXPECT_EQ(QuantumUnits(-1), 1u);
}

TEST(NextSlot, NothingOpenIsNothingToResume) {
    TSlotTimes slots = Slots(1, 6, 1, {5});
    slots.m_slots[0].m_bOpen = false;
    EXPECT_EQ(FirstOpenSlot(slots), -1);
    EXPECT_EQ(NextSlotToResume(slots, false), -1);
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 1, {}), false), -1);
}

TEST(NextSlot, ALaterOneComesWhenAnEarlierHasHadAMultiple) {
    // At distance s an early slot weighs s + 2, a late one s + 4.
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 9, {31, 10}), false), 1);
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 9, {30, 10}), false), 0);
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 1, {51, 10}), false), 1);
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 1, {50, 10}), false), 0);
    // From one to the next: 10 exceeds 2 * 4, then 2 does not exceed 1 * 5.
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 9, {31, 10, 2, 1}), false), 2);
    // The walk ends at the first that does not qualify.
    EXPECT_EQ(NextSlotToResume(Slots(1, 6, 9, {30, 10, 0}), false), 0);
}

TEST(NextSlot, ClosedSlotsArePassedOver) {
    TSlotTimes slots = Slots(1, 6, 9, {500, 31, 1, 7});
    slots.m_slots[0].m_bOpen = false;
    slots.m_slots[2].m_bOpen = false;
    EXPECT_EQ(NextSlotToResume(slots, false), 3) << "31 exceeds 7 * 4";
    slots.m_slots[3].m_nTime = 8;
    EXPECT_EQ(NextSlotToResume(slots, false), 1);
}

TEST(NextSlot, OnceAllHaveHadTheirShareNoSwitchIsDue) {
    EXPECT_EQ(NextSlotToResume(Slots(6, 6, 9, {300, 29}), true), 1);
    EXPECT_EQ(NextSlotToResume(Slots(6, 6, 9, {300, 30}), true), -1) << "three seconds each";
    EXPECT_EQ(NextSlotToResume(Slots(6, 6, 9, {300, 30}), false), 1);
    EXPECT_EQ(NextSlotToResume(Slots(7, 6, 9, {900, 59}), true), 1);
    EXPECT_EQ(NextSlotToResume(Slots(7, 6, 9, {900, 60}), true), -1) << "outside the range six";
}

} // namespace
} // namespace quillon::test
