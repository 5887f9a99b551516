// Residue labels (M1, Met1, 1MET, A.43.ALA) and assignments (M1CA, 43.CA, A.43.ALA.CA) in one word.
#include "convert/assignment.h"

#include <array>
#include <cctype>
#include <utility>
#include <vector>

#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

bool isLetter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool isResidueName(std::string_view text) {
  return (text.size() == 1 && text[0] >= 'A' && text[0] <= 'Z') ||
         (text.size() >= 3 && residueCode(text) != 'X');
}

/// Words between separators; a dash is one of them, or stays the sign of a number.
std::vector<std::string_view> wordsOf(std::string_view text, bool dashJoins) {
  std::vector<std::string_view> words;
  const std::string_view separators = dashJoins ? ".:|/@_, -" : ".:|/@_, ";
  while (!text.empty()) {
    const std::size_t end = text.find_first_of(separators);
    if (end != 0) words.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return words;
}

/// The letters in front of the number, the number, and what follows it; false when there is no number.
bool cutAtNumber(std::string_view word, std::string_view& before, std::string_view& number,
                 std::string_view& behind) {
  std::size_t at = 0;
  while (at < word.size() && isLetter(word[at])) ++at;
  std::size_t end = at;
  if (end < word.size() && word[end] == '-') ++end;
  const std::size_t digits = end;
  while (end < word.size() && isDigit(word[end])) ++end;
  if (end == digits || end - digits > 6) return false;
  before = word.substr(0, at);
  number = word.substr(at, end - at);
  behind = word.substr(end);
  return true;
}

/// What stands behind the number, with or without a separator: a residue name, an atom, a chain.
bool takeBehind(std::string_view text, Assignment& assignment) {
  // M1-CA joins with a dash, 43-1 is the residue before 43.
  if (text.size() > 1 && text[0] == '-' && isLetter(text[1])) text.remove_prefix(1);
  if (text.empty()) return true;
  if (assignment.name.empty() && text.size() >= 3 && residueCode(text) != 'X') {
    assignment.name = text;
  } else if (assignment.name.empty() && text.size() > 3 && residueCode(text.substr(0, 3)) != 'X') {
    assignment.name = text.substr(0, 3);
    return takeBehind(text.substr(3), assignment);
  } else if (assignment.atom.empty() && looksLikeAtom(text)) {
    assignment.atom = text::upper(text);
  } else if (assignment.name.empty() && text.size() == 1 && isResidueName(text)) {
    assignment.name = text;
  } else if (assignment.chain.empty() && text.size() <= 2 && isLetter(text[0])) {
    assignment.chain = text;
  } else {
    return false;
  }
  return true;
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kSpelled = {
    {{"\xCE\xB1", "a"},
     {"\xCE\xB2", "b"},
     {"\xCE\xB3", "g"},
     {"\xCE\xB4", "delta"},
     {"\xE2\x80\xB2", "'"},
     {"\xE2\x80\x99", "'"},
     {"\xC2\xB9\xC2\xB3", "13"},
     {"\xC2\xB9\xE2\x81\xB5", "15"},
     {"\xC2\xB9", "1"},
     {"\xC2\xA0", " "}}};

std::string spelled(std::string_view heading) {
  std::string text(heading);
  for (const auto& [symbol, word] : kSpelled) {
    for (std::size_t at = 0; (at = text.find(symbol, at)) != std::string::npos;)
      text.replace(at, symbol.size(), word);
  }
  return text;
}

/// "Value (ppm)", "delta / ppm", "CA [ppm]": the unit goes.
std::string withoutUnit(std::string text) {
  for (const std::string_view unit : {"(ppm)", "[ppm]", "/ppm", "/ ppm", "{ppm}", "(p.p.m.)"}) {
    const std::size_t at = text.find(unit);
    if (at != std::string::npos) text.erase(at, unit.size());
  }
  return text;
}

}  // namespace

bool looksLikeAtom(std::string_view text) {
  std::string name = text::upper(text);
  if (name == "HN" || name == "CO" || name == "C'" || name == "NH") return true;
  if (!name.empty() && name[0] >= '1' && name[0] <= '3') name.erase(0, 1);
  if (name.size() > 5 || name.empty() || std::string_view("HCNQM").find(name[0]) == std::string_view::npos)
    return false;
  if (name.size() == 1) return name[0] != 'Q' && name[0] != 'M';
  std::size_t at = 1;
  if (name.starts_with("QQ")) at = 2;
  if (at < name.size() && std::string_view("ABGDEZHXY").find(name[at]) != std::string_view::npos) ++at;
  return name.find_first_not_of("0123456789XY*%#'", at) == std::string::npos;
}

bool parseAssignment(std::string_view text, bool dashJoins, Assignment& assignment) {
  assignment = {};
  std::string_view before, number, behind;
  bool numbered = false;
  for (const std::string_view word : wordsOf(text::trim(text), dashJoins)) {
    if (numbered) {
      if (!takeBehind(word, assignment)) return false;
      continue;
    }
    if (!cutAtNumber(word, before, number, behind)) {
      // A word in front of the number is the residue when it names one in three letters, else the chain.
      if (word.size() == 3 && assignment.name.empty() && residueCode(word) != 'X') {
        assignment.name = word;
      } else if (dashJoins && assignment.name.empty() && isResidueName(word)) {
        assignment.name = word;
      } else if (assignment.chain.empty() && word.size() <= 4) {
        assignment.chain = word;
      } else {
        return false;
      }
      continue;
    }
    if (!before.empty() && (!assignment.name.empty() || (before.size() != 1 && before.size() != 3)))
      return false;
    if (!before.empty()) assignment.name = before;
    assignment.number = number;
    numbered = true;
    if (!takeBehind(behind, assignment)) return false;
  }
  // "M 1": a single letter before a number, blank between, is the residue and not a chain.
  if (numbered && assignment.name.empty() && text.find(' ') != std::string_view::npos &&
      assignment.chain.size() == 1) {
    assignment.name = std::exchange(assignment.chain, {});
  }
  return numbered;
}

std::string plainHeading(std::string_view heading) {
  std::string text = spelled(heading);
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  text = withoutUnit(text);
  const std::size_t point = text.find_last_of('.');
  if (point != std::string::npos && point + 1 < text.size() && text.find(' ') == std::string::npos)
    text.erase(0, point + 1);
  std::string plain;
  for (const char c : text) {
    if (c == '#') plain += "num";
    if (isLetter(c) || isDigit(c)) plain += c;
  }
  if (plain.size() > 3 && plain.ends_with("ppm")) plain.erase(plain.size() - 3);
  return plain;
}

std::string atomOfHeading(std::string_view heading) {
  std::string text = spelled(heading);
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const std::string_view extra :
       {"(PPM)", "[PPM]", "/PPM", "/ PPM", "DELTA", "SHIFT", "CHEMICAL", "(I)", "_PPM", "_CS"}) {
    const std::size_t at = text.find(extra);
    if (at != std::string::npos) text.erase(at, extra.size());
  }
  std::string name;
  for (const char c : text) {
    if (!text::isSpace(c) && c != '_') name += c;
  }
  static constexpr std::pair<std::string_view, std::string_view> kNuclei[] = {
      {"15N", "N"},   {"N15", "N"},    {"1H", "H"},   {"H1", "H"},    {"13C", "C"}, {"C13", "C"},
      {"1HN", "HN"},  {"HN1", "HN"},   {"15NH", "N"}, {"NH15", "N"},  {"NH", "NH"}, {"COI", "CO"},
      {"H(N)", "HN"}, {"1H(N)", "HN"}, {"N(H)", "N"}, {"15N(H)", "N"}};
  for (const auto& [known, atom] : kNuclei) {
    if (name == known) return std::string(atom);
  }
  for (const std::string_view isotope : {"13", "15", "1"}) {
    if (name.starts_with(isotope) && name.size() > isotope.size() + 1) {
      name.erase(0, isotope.size());
      break;
    }
  }
  return looksLikeAtom(name) && name.find_first_of("-+(") == std::string::npos ? name : "";
}

}  // namespace convert
