// Sequences: FASTA records, XEASY .seq files, one-letter texts.
#include <cctype>

#include "convert/names.h"
#include "convert/readers.h"
#include "tables/text.h"

namespace convert {

namespace {

/// Pseudo residues that join chains in one .seq file.
bool isLinker(std::string_view name) {
  const std::string raised = text::upper(name);
  for (const std::string_view linker : {"PL", "NL", "LL", "LL2", "LL5", "LP", "LN", "LM"}) {
    if (raised == linker) return true;
  }
  return false;
}

/// Chains of one file without names of their own: A, B, C ...
std::string chainLetter(std::size_t index) {
  return index < 26 ? std::string(1, static_cast<char>('A' + index)) : std::to_string(index + 1);
}

Chain newChain(std::size_t index) {
  Chain chain;
  chain.id = chainLetter(index);
  chain.sequenceGiven = true;
  return chain;
}

void addLetters(Chain& chain, std::string_view line, int number) {
  for (Residue& residue : residuesFromLetters(line, number)) {
    residue.key = std::to_string(chain.residues.size() + 1);
    chain.residues.push_back(std::move(residue));
  }
}

bool readFasta(std::string_view text, std::vector<Chain>& chains, Log& log) {
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const std::string_view trimmed = text::trim(line);
    if (trimmed.starts_with('>')) {
      chains.push_back(newChain(chains.size()));
      chains.back().description = trimmed.substr(1);
      return true;
    }
    for (const char c : trimmed) {
      const bool known = std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '*' || c == '(' ||
                         c == ')' || c == '-' || text::isSpace(c);
      if (!known) return log.error(number, std::string("'") + c + "' is no letter of a sequence");
    }
    if (chains.empty()) chains.push_back(newChain(0));
    addLetters(chains.back(), trimmed, number);
    return true;
  });
  if (!read) return false;
  std::erase_if(chains, [](const Chain& chain) { return chain.residues.empty(); });
  return !chains.empty() || log.error(0, "holds no sequence");
}

bool readXeasySequence(std::string_view text, std::vector<Chain>& chains, Log& log) {
  int next = 1;
  bool chainEnded = true;
  const bool read = forEachLine(text, [&](int number, std::string_view line) {
    const auto words = text::split_WhiteSpace(line);
    if (words.empty() || words[0][0] == '#' || words[0][0] == '!') return true;
    if (words.size() > 1) {
      const auto given = wholeInteger(words[1]);
      if (!given) return log.error(number, "'" + std::string(words[1]) + "' is no residue number");
      next = *given;
    }
    if (isLinker(words[0])) {
      chainEnded = true;
    } else {
      if (chainEnded) chains.push_back(newChain(chains.size()));
      chainEnded = false;
      Residue residue;
      residue.key = residue.author = std::to_string(next);
      residue.name = words[0];
      residue.code = residueCode(words[0]);
      residue.line = number;
      chains.back().residues.push_back(std::move(residue));
    }
    ++next;
    return true;
  });
  return read && (!chains.empty() || log.error(0, "holds no residues"));
}

}  // namespace

std::vector<Residue> residuesFromLetters(std::string_view letters, int line) {
  std::vector<Residue> residues;
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (std::isalpha(static_cast<unsigned char>(letters[i])) == 0 && letters[i] != '(') continue;
    Residue residue;
    residue.name = std::string(1, letters[i]);
    if (letters[i] == '(') {
      const std::size_t end = std::min(letters.find(')', i), letters.size());
      residue.name = letters.substr(i + 1, end - i - 1);
      i = end;
    }
    residue.code = residueCode(residue.name);
    residue.key = std::to_string(residues.size() + 1);
    residue.line = line;
    residues.push_back(std::move(residue));
  }
  return residues;
}

bool readSequence(std::string_view text, std::vector<Chain>& chains, Log& log) {
  return recognise(text) == Format::XeasySequence ? readXeasySequence(text, chains, log)
                                                  : readFasta(text, chains, log);
}

}  // namespace convert
