#include "measure/table.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace bench {
namespace {

template <class... Args>
std::string format(const char *pattern, Args... args) {
  char text[96];
  std::snprintf(text, sizeof text, pattern, args...);
  return text;
}

std::string ratio_text(double ratio, Target target) {
  return target.kind == Target::times_faster ? format("%.1fx faster", 1 / ratio) : format("%.2fx", ratio);
}

std::string target_text(Target target) {
  switch (target.kind) {
    case Target::at_most:
      return format("<= %.2fx", target.value);
    case Target::times_faster:
      return format(">= %.1fx faster", target.value);
    case Target::none:
      break;
  }
  return "-";
}

std::string verdict(double ratio, Target target) {
  if (target.kind == Target::none) return "-";
  const bool met = target.kind == Target::at_most ? ratio <= target.value : 1 / ratio >= target.value;
  return met ? "yes" : "NO";
}

}  // namespace

std::string duration_text(double nanoseconds) {
  static constexpr std::array units = {"ns", "us", "ms", "s"};
  std::size_t unit = 0;
  while (nanoseconds >= 1000 && unit + 1 < units.size()) {
    nanoseconds /= 1000;
    ++unit;
  }
  return format(nanoseconds < 10    ? "%.2f %s"
                : nanoseconds < 100 ? "%.1f %s"
                                    : "%.0f %s",
                nanoseconds, units[unit]);
}

void Table::compare(const std::string &figure, const Contest &contest, const std::string &ours,
                    const std::string &peer, Target target, Contest::Clock clock) {
  const double ratio = contest.ratio(ours, peer, clock);
  rows_.push_back({figure, duration_text(contest.nanoseconds(ours, clock)), peer,
                   duration_text(contest.nanoseconds(peer, clock)), ratio_text(ratio, target),
                   target_text(target), verdict(ratio, target)});
}

void Table::limit(const std::string &figure, double value, double limit, const std::string &unit) {
  rows_.push_back({figure, format("%.3g ", value) + unit, "-", "-", "-", format("< %.3g ", limit) + unit,
                   value < limit ? "yes" : "NO"});
}

void Table::skip(const std::string &figure, const std::string &reason) {
  rows_.push_back({figure, "-", "skipped: " + reason, "-", "-", "-", "-"});
}

bool Table::all_met() const {
  return std::none_of(rows_.begin(), rows_.end(), [](const Row &row) { return row.met == "NO"; });
}

void Table::print() const {
  std::vector<std::array<std::string, 7>> lines = {
      {"figure", "ours", "peer", "peer's", "ratio", "target", "met"}};
  for (const Row &row : rows_)
    lines.push_back({row.figure, row.ours, row.peer_name, row.peer, row.ratio, row.target, row.met});
  std::array<std::size_t, 7> widths{};
  for (const auto &line : lines)
    for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], line[i].size());
  for (std::size_t n = 0; n < lines.size(); ++n) {
    std::string text = "|";
    for (std::size_t i = 0; i < widths.size(); ++i)
      text += " " + lines[n][i] + std::string(widths[i] - lines[n][i].size(), ' ') + " |";
    std::printf("%s\n", text.c_str());
    if (n > 0) continue;
    text = "|";
    for (const std::size_t width : widths) text += std::string(width + 2, '-') + "|";
    std::printf("%s\n", text.c_str());
  }
}

}  // namespace bench
