#include "cli/uci_client.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <sstream>
#include <thread>

#include "support/reference_chess.h"

namespace quillon::testing {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 120s;

/// Without a last line that is not complete.
std::vector<std::string> CompleteLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream input(text.substr(0, text.rfind('\n') + 1));
    for (std::string line; std::getline(input, line);)
        lines.push_back(line);
    return lines;
}

std::string CoordinateText(const reference::Move& move) {
    const auto square = [](int at) {
        return std::string{static_cast<char>('a' + at % 8), static_cast<char>('1' + at / 8)};
    };
    std::string text = square(move.from) + square(move.to);
    if (move.promotion != 0)
        text += static_cast<char>(move.promotion - 'A' + 'a');
    return text;
}

std::optional<reference::Position> After(const reference::Position& position, const std::string& text) {
    for (const reference::Move& move : reference::LegalMoves(position))
        if (CoordinateText(move) == text)
            return reference::Play(position, move);
    return std::nullopt;
}

std::vector<std::string> Command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "uci");
    return arguments;
}

std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream input(line);
    for (std::string word; input >> word;)
        words.push_back(word);
    return words;
}

} // namespace

CUciClient::CUciClient(const std::vector<std::string>& arguments) : m_run(Command(arguments), {"", "", true}) {}

std::vector<std::string> CUciClient::Until(const std::string& beginning) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
        const std::vector<std::string> lines = CompleteLines(m_run.OutputSoFar());
        const auto first = lines.begin() + static_cast<std::ptrdiff_t>(std::min(m_nRead, lines.size()));
        const auto found =
            std::find_if(first, lines.end(), [&](const auto& line) { return line.starts_with(beginning); });
        if (found != lines.end()) {
            m_nRead = static_cast<std::size_t>(found - lines.begin()) + 1;
            return {first, found + 1};
        }
        std::this_thread::sleep_for(2ms);
    }
    return {"(nothing)"};
}

std::vector<std::string> CUciClient::Ask(const std::string& position, const std::string& order) {
    Send("position " + position);
    Send(order);
    return Until("bestmove ");
}

std::string First(const std::vector<std::string>& lines, const std::string& beginning) {
    const auto found = std::ranges::find_if(lines, [&](const auto& line) { return line.starts_with(beginning); });
    return found != lines.end() ? *found : std::string();
}

std::string Last(const std::vector<std::string>& lines, const std::string& beginning) {
    return First({lines.rbegin(), lines.rend()}, beginning);
}

int Count(const std::vector<std::string>& lines, const std::string& beginning) {
    return static_cast<int>(
        std::ranges::count_if(lines, [&](const auto& line) { return line.starts_with(beginning); }));
}

std::string MateLine(const std::vector<std::string>& lines) {
    for (auto line = lines.rbegin(); line != lines.rend(); ++line)
        if (line->find(" score mate ") != std::string::npos)
            return *line;
    return {};
}

std::string WordBehind(const std::string& line, const std::string& word) {
    const std::vector<std::string> words = Words(line);
    const auto found = std::ranges::find(words, word);
    return found != words.end() && found + 1 != words.end() ? found[1] : std::string();
}

std::vector<std::string> MovesOfLine(const std::string& line) {
    const std::vector<std::string> words = Words(line);
    const auto found = std::ranges::find(words, "pv");
    return found != words.end() ? std::vector<std::string>(found + 1, words.end()) : std::vector<std::string>();
}

std::string Judge(const std::string& fen, const std::vector<std::string>& moves) {
    reference::Position position = reference::FromFen(fen);
    for (const std::string& move : moves) {
        const std::optional<reference::Position> after = After(position, move);
        if (!after)
            return "illegal: " + move;
        position = *after;
    }
    return reference::IsMate(position) ? "mate" : "no mate at the end";
}

std::string JudgeMove(const std::string& fen, const std::string& move) {
    const reference::Position position = reference::FromFen(fen);
    if (move == "0000")
        return reference::HasLegalMove(position) ? "there is a legal move" : "none";
    return After(position, move) ? "legal" : "illegal: " + move;
}

} // namespace quillon::testing
