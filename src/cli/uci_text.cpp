#include "cli/uci_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "cli/output.h"
#include "core/figures.h"
#include "core/notation.h"

namespace quillon {

namespace {

using TNumber = std::int64_t;

constexpr std::string_view kSeparators = " \t\r\n\v\f";
constexpr std::size_t kLongestEcho = 200; // of a text that is sent back

struct TPromotionLetter {
    TFigure m_kind;
    char m_cLetter;
};
constexpr TPromotionLetter kPromotionLetters[] = {{kQueen, 'q'}, {kRook, 'r'}, {kBishop, 'b'}, {kKnight, 'n'}};

TSquare ReadSquare(std::string_view text) {
    const int file = text[0] - 'a', rank = text[1] - '1';
    return IsOnBoard(file, rank) ? SquareAt(file, rank) : kNoSquare;
}

struct TNumberWord {
    std::string_view m_word;
    std::optional<TNumber> TUciGo::*m_pValue;
};
constexpr TNumberWord kNumberWords[] = {
    {"mate", &TUciGo::m_mate},           {"depth", &TUciGo::m_depth},   {"nodes", &TUciGo::m_nodes},
    {"movetime", &TUciGo::m_msMove},     {"wtime", &TUciGo::m_msWhite}, {"btime", &TUciGo::m_msBlack},
    {"movestogo", &TUciGo::m_movesToGo},
};

struct TIncrementWord {
    std::string_view m_word;
    TNumber TUciGo::*m_pValue;
};
constexpr TIncrementWord kIncrementWords[] = {{"winc", &TUciGo::m_msIncrementWhite},
                                              {"binc", &TUciGo::m_msIncrementBlack}};

struct TFlagWord {
    std::string_view m_word;
    bool TUciGo::*m_pFlag;
};
constexpr TFlagWord kFlagWords[] = {{"infinite", &TUciGo::m_bInfinite}, {"ponder", &TUciGo::m_bPonder}};

template <class TRow, std::size_t kRows> const TRow* RowOf(const TRow (&rows)[kRows], std::string_view word) {
    const TRow* const found = std::ranges::find(rows, word, &TRow::m_word);
    return found != std::end(rows) ? found : nullptr;
}

/// Takes the word, and the number behind it if it wants one; the number of words taken, 0 if it is none of those.
std::size_t TakeWord(TUciGo& go, const std::string& word, const std::string* next) {
    if (const TFlagWord* const flag = RowOf(kFlagWords, word)) {
        go.*flag->m_pFlag = true;
        return 1;
    }
    const TNumberWord* const row = RowOf(kNumberWords, word);
    const TIncrementWord* const increment = RowOf(kIncrementWords, word);
    if (row == nullptr && increment == nullptr)
        return 0;
    const std::optional<TNumber> number = next != nullptr ? ReadNumber(*next) : std::nullopt;
    if (!number)
        return 0;
    if (row != nullptr)
        go.*row->m_pValue = number;
    else
        go.*increment->m_pValue = *number;
    return 2;
}

/// Takes the first word off; empty: there is none.
std::string_view TakeFirstWord(std::string_view& line) {
    const std::size_t start = std::min(line.find_first_not_of(kSeparators), line.size());
    const std::size_t end = std::min(line.find_first_of(kSeparators, start), line.size());
    const std::string_view word = line.substr(start, end - start);
    line.remove_prefix(end);
    return word;
}

std::string_view WithoutOuterBlanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(kSeparators);
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(kSeparators) - start + 1);
}

// How a share of the clock is taken: a problem is no game of forty moves, so the share is generous.
constexpr TNumber kUsualMovesToGo = 30;
constexpr TNumber kClockReserveMs = 50; // what the way to and fro may take
constexpr TNumber kLeastMs = 10;

} // namespace

std::vector<std::string> WordsOf(std::string_view line) {
    std::vector<std::string> words;
    for (std::string_view word = TakeFirstWord(line); !word.empty(); word = TakeFirstWord(line))
        words.emplace_back(word);
    return words;
}

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lowered;
}

std::optional<TNumber> ReadNumber(std::string_view word) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.remove_prefix(1);
    TNumber number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error == std::errc::invalid_argument || end != word.data() + word.size())
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return word[0] == '-' ? std::numeric_limits<TNumber>::min() : std::numeric_limits<TNumber>::max();
    return number;
}

std::string UciMove(const TMove& move) {
    std::string text = SquareText(move.m_nFrom) + SquareText(move.m_nTo);
    for (const TPromotionLetter& row : kPromotionLetters)
        if (row.m_kind == PromotionKind(move))
            text += row.m_cLetter;
    return text;
}

std::optional<TMove> ReadUciMove(std::string_view word) {
    const std::string text = Lowered(word);
    if (text.size() != 4 && text.size() != 5)
        return std::nullopt;
    TMove move{ReadSquare(std::string_view(text).substr(0, 2)), ReadSquare(std::string_view(text).substr(2, 2)), 0, 0};
    if (move.m_nFrom == kNoSquare || move.m_nTo == kNoSquare)
        return std::nullopt;
    if (text.size() == 4)
        return move;
    const TPromotionLetter* const row = std::ranges::find(kPromotionLetters, text[4], &TPromotionLetter::m_cLetter);
    if (row == std::end(kPromotionLetters))
        return std::nullopt;
    move.m_nPromotion = row->m_kind;
    return move;
}

TUciGo ReadGo(const std::vector<std::string>& words) {
    TUciGo go;
    for (std::size_t i = 0; i < words.size();) {
        const std::string* const next = i + 1 < words.size() ? &words[i + 1] : nullptr;
        const std::size_t taken = TakeWord(go, Lowered(words[i]), next);
        if (taken == 0)
            go.m_unused.push_back(words[i]);
        i += std::max<std::size_t>(taken, 1);
    }
    return go;
}

std::optional<TNumber> TimeOf(const TUciGo& go, bool bWhiteToMove) {
    if (go.m_msMove)
        return std::max<TNumber>(*go.m_msMove, 1);
    const std::optional<TNumber> clock = bWhiteToMove ? go.m_msWhite : go.m_msBlack;
    if (!clock)
        return std::nullopt;
    const TNumber left = std::clamp<TNumber>(*clock, 0, TNumber{1} << 40);
    const TNumber increment =
        std::clamp<TNumber>(bWhiteToMove ? go.m_msIncrementWhite : go.m_msIncrementBlack, 0, TNumber{1} << 40);
    const TNumber moves = std::clamp<TNumber>(go.m_movesToGo.value_or(kUsualMovesToGo), 1, kUsualMovesToGo);
    const TNumber share = left / moves + increment * 3 / 4;
    return std::max(std::min(share, left - kClockReserveMs), kLeastMs);
}

TUciOption ReadOption(std::string_view line) {
    TUciOption option;
    bool bInName = false;
    for (std::string_view word = TakeFirstWord(line); !word.empty(); word = TakeFirstWord(line)) {
        const std::string lowered = Lowered(word);
        if (!bInName) {
            bInName = lowered == "name";
        } else if (lowered == "value") {
            option.m_value = WithoutOuterBlanks(line);
            break;
        } else {
            option.m_name += (option.m_name.empty() ? "" : " ") + lowered;
        }
    }
    return option;
}

std::string InfoLine(const TUciInfo& info) {
    std::string text = "info depth " + std::to_string(info.m_nDepth);
    if (info.m_nMate != 0)
        text += " score mate " + std::to_string(info.m_nMate);
    const std::uint64_t ms = static_cast<std::uint64_t>(std::max<TNumber>(info.m_ms, 1));
    text += " nodes " + std::to_string(info.m_nNodes) + " nps " + std::to_string(info.m_nNodes * 1000 / ms) + " time " +
            std::to_string(info.m_ms);
    if (!info.m_line.empty())
        text += " pv";
    for (const TMove& move : info.m_line)
        text += " " + UciMove(move);
    return text;
}

std::string InfoString(std::string_view text) {
    const std::string echo = WithoutControls(text.substr(0, kLongestEcho));
    return "info string " + echo + (text.size() > kLongestEcho ? "..." : "");
}

} // namespace quillon
