#pragma once

// A board with a handful of men, and how they move: by the rules of chess, without castling. Every move that the men's
// ways allow is played, also one that leaves the own king in check; who asks for moves looks at that.

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace reference {

/// Men are known by their numbers: 0 the white king, 1 the black king, then the others. Squares: a1 0, b1 1, h8 63.
class FewMenBoard {
  public:
    static constexpr std::size_t kMaxMen = 5;
    static constexpr int kNobody = -1, kOffBoard = -1;

    struct Move {
        int man, from, to;
        int taken = kNobody;
        char promotion = 0; // the letter that the pawn turns into
    };

    /// The men by their letters in FEN, "Kk" first.
    explicit FewMenBoard(std::string_view letters);

    /// Puts every man onto his square.
    ///   Result  false: two on one square, or a pawn on the first or last rank; the men then do not stand anywhere.
    [[nodiscard]] bool Set(std::span<const int> squares);

    [[nodiscard]] bool IsInCheck(bool white) const;

    /// Plays the moves of a side one after the other, each on the board as it stands, and takes it back after
    /// visit(move), which sees the board with the move played. Stops when visit returns true, and then returns true.
    ///   doubleStepper  the pawn that has just made a double step, or kNobody.
    template <class Visit> bool AnyMove(bool white, int doubleStepper, Visit visit);

    /// The man of the move just played, if he is a pawn that came two squares to the side of a hostile one.
    [[nodiscard]] int DoubleStepperOf(const Move& move) const;

    /// By numbers of men; kOffBoard for those taken.
    [[nodiscard]] std::span<const int> Squares() const { return {m_squares.data(), m_count}; }

    /// By numbers of men, as they are after promotions.
    [[nodiscard]] std::string_view Letters() const { return {m_letters.data(), m_count}; }

  private:
    static constexpr int kDirections = 16; // straight, diagonal, knight's

    [[nodiscard]] char Letter(int man) const { return m_letters[static_cast<std::size_t>(man)]; }
    [[nodiscard]] int SquareOf(int man) const { return m_squares[static_cast<std::size_t>(man)]; }
    [[nodiscard]] int ManOn(int square) const { return m_men[static_cast<std::size_t>(square)]; }
    [[nodiscard]] bool IsWhite(int man) const { return Letter(man) < 'a'; }
    [[nodiscard]] bool IsPawn(int man) const { return Letter(man) == 'P' || Letter(man) == 'p'; }
    void Put(int man, int square);
    void Lift(int man);
    void Play(const Move& move);
    void TakeBack(const Move& move, char letter);

    [[nodiscard]] bool Attacks(int man, int square) const;
    [[nodiscard]] bool IsFree(int from, int to) const;

    template <class Visit> bool Try(const Move& move, Visit& visit);
    template <class Visit> bool AnyPieceMove(int man, Visit& visit);
    template <class Visit> bool AnyPawnMove(int man, int doubleStepper, Visit& visit);
    template <class Visit> bool ArrivePawn(const Move& move, Visit& visit);

    struct Way {
        int first, last; // directions
        bool rides;
    };
    static Way WayOf(char letter);
    static int Next(int square, int direction);

    std::size_t m_count;
    std::array<char, kMaxMen> m_letters{};
    std::array<int, kMaxMen> m_squares{};
    std::array<int, 64> m_men{}; // who stands on a square
};

template <class Visit> bool FewMenBoard::AnyMove(bool white, int doubleStepper, Visit visit) {
    for (int man = 0; man < static_cast<int>(m_count); ++man)
        if (IsWhite(man) == white && SquareOf(man) != kOffBoard &&
            (IsPawn(man) ? AnyPawnMove(man, doubleStepper, visit) : AnyPieceMove(man, visit)))
            return true;
    return false;
}

template <class Visit> bool FewMenBoard::AnyPieceMove(int man, Visit& visit) {
    const int from = SquareOf(man);
    const Way way = WayOf(Letter(man));
    for (int direction = way.first; direction < way.last; ++direction)
        for (int to = Next(from, direction); to != kOffBoard; to = Next(to, direction)) {
            const int there = ManOn(to);
            if (there != kNobody && IsWhite(there) == IsWhite(man))
                break;
            if (Try({man, from, to, there}, visit))
                return true;
            if (there != kNobody || !way.rides)
                break;
        }
    return false;
}

template <class Visit> bool FewMenBoard::AnyPawnMove(int man, int doubleStepper, Visit& visit) {
    const int from = SquareOf(man), forward = IsWhite(man) ? 8 : -8;
    if (ManOn(from + forward) == kNobody) {
        if (ArrivePawn({man, from, from + forward}, visit))
            return true;
        if (from / 8 == (IsWhite(man) ? 1 : 6) && ManOn(from + 2 * forward) == kNobody &&
            Try({man, from, from + 2 * forward}, visit))
            return true;
    }
    for (const int side : {-1, 1}) {
        const int to = from + forward + side;
        if (from % 8 + side < 0 || from % 8 + side > 7)
            continue;
        if (const int there = ManOn(to); there != kNobody) {
            if (IsWhite(there) != IsWhite(man) && ArrivePawn({man, from, to, there}, visit))
                return true;
        } else if (doubleStepper != kNobody && SquareOf(doubleStepper) == from + side &&
                   Try({man, from, to, doubleStepper}, visit)) {
            return true;
        }
    }
    return false;
}

template <class Visit> bool FewMenBoard::ArrivePawn(const Move& move, Visit& visit) {
    if (move.to >= 8 && move.to < 56)
        return Try(move, visit);
    for (const char letter : IsWhite(move.man) ? std::string_view("QRBN") : std::string_view("qrbn"))
        if (Try({move.man, move.from, move.to, move.taken, letter}, visit))
            return true;
    return false;
}

template <class Visit> bool FewMenBoard::Try(const Move& move, Visit& visit) {
    const char letter = Letter(move.man);
    const int takenFrom = move.taken == kNobody ? kOffBoard : SquareOf(move.taken);
    Play(move);
    const bool stops = visit(move);
    TakeBack(move, letter);
    if (move.taken != kNobody)
        Put(move.taken, takenFrom);
    return stops;
}

} // namespace reference
