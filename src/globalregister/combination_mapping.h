#pragma once
// Groups of equal pieces as combinations: a group of K equal pieces is one number, the rank of its sorted squares among
// all combinations of K out of N squares in lexicographic order. The numbering is part of the file format.
//
// Eight mappings exist: N = 64 squares from a1 on, or for pawns N = 48 from a2 on, each for K = 2 to 5.
//
// Threads: immutable once made; call from anywhere.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon {

class CMappingCombinationIndexIntoSetBase {
  public:
    CMappingCombinationIndexIntoSetBase() = default;
    CMappingCombinationIndexIntoSetBase(const CMappingCombinationIndexIntoSetBase&) = delete;
    CMappingCombinationIndexIntoSetBase& operator=(const CMappingCombinationIndexIntoSetBase&) = delete;
    virtual ~CMappingCombinationIndexIntoSetBase() = default;

    /// Number of combinations.
    [[nodiscard]] virtual std::uint64_t GetCount() const = 0;

    /// The K members of combination `index` < GetCount(), ascending, counted from 0: M less than their squares.
    [[nodiscard]] virtual const unsigned char* GetSet(std::uint64_t index) const = 0;

    /// The number of the combination of K squares, ascending and all different, M <= square < M + N.
    [[nodiscard]] virtual std::uint64_t GetIndex(const unsigned char* squares) const = 0;
};

[[nodiscard]] constexpr std::uint64_t Binomial(int n, int k) {
    std::uint64_t result = 1;
    for (int i = 0; i < k; ++i)
        result = result * static_cast<std::uint64_t>(n - i) / static_cast<std::uint64_t>(i + 1);
    return n < k ? 0 : result;
}

/// N squares to choose from, K of them chosen, T the type of a square, M the first square.
template <int N, int K, class T, int M>
class CMappingCombinationIndexIntoSet final : public CMappingCombinationIndexIntoSetBase {
  public:
    CMappingCombinationIndexIntoSet() {
        m_sets.reserve(kCount * K);
        std::array<T, K> set{};
        AppendSets(set, 0, 0);
    }

    [[nodiscard]] std::uint64_t GetCount() const override { return kCount; }

    [[nodiscard]] const T* GetSet(std::uint64_t index) const override { return m_sets.data() + index * K; }

    // After a combination come, for each of its places, those that agree with it before that place and have a greater
    // member there: all members from that place on are then drawn from what lies above.
    [[nodiscard]] std::uint64_t GetIndex(const T* squares) const override {
        std::uint64_t index = kCount - 1;
        for (std::size_t i = 0; i < K; ++i)
            index -= kSetsAfter[i][static_cast<std::size_t>(squares[i] - M)];
        return index;
    }

  private:
    static constexpr std::uint64_t kCount = Binomial(N, K);

    static constexpr auto kSetsAfter = [] {
        std::array<std::array<std::uint32_t, N>, K> table{};
        for (int place = 0; place < K; ++place)
            for (int member = 0; member < N; ++member)
                table[static_cast<std::size_t>(place)][static_cast<std::size_t>(member)] =
                    static_cast<std::uint32_t>(Binomial(N - 1 - member, K - place));
        return table;
    }();

    void AppendSets(std::array<T, K>& set, std::size_t place, int first) {
        if (place == K) {
            m_sets.insert(m_sets.end(), set.begin(), set.end());
            return;
        }
        for (int member = first; member < N; ++member) {
            set[place] = static_cast<T>(member);
            AppendSets(set, place + 1, member + 1);
        }
    }

    std::vector<T> m_sets; // rows of K members in the order of their numbers
};

inline constexpr std::size_t kMinGroup = 2;
inline constexpr std::size_t kMaxGroup = 5;

/// The mapping of a group of `nMen` (kMinGroup..kMaxGroup) equal pieces. Made when first asked for (up to 38 MB),
/// shared by all of the process, never gone before its end.
///   Errors  std::bad_alloc.
[[nodiscard]] const CMappingCombinationIndexIntoSetBase& CombinationMapping(bool bPawns, std::size_t nMen);

} // namespace quillon
