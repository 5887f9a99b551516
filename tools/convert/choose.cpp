// Which chain and which shift list of a file are converted.
#include "convert/choose.h"

#include <algorithm>

#include "convert/names.h"
#include "tables/text.h"

namespace convert {

namespace {

using Choices = std::vector<std::string>;

Choices chainChoices(const Entry& entry, const BackboneCounts& counts) {
  Choices choices;
  for (const Chain& chain : entry.chains) {
    const std::string name = describeChain(chain) + ": ";
    choices.push_back(name + (!chain.protein ? "no protein"
                                             : std::to_string(chain.residues.size()) + " residues, " +
                                                   std::to_string(counts.of(chain.id)) + " backbone shifts"));
  }
  return choices;
}

Choices listChoices(const Entry& entry, const BackboneCounts& counts, const std::string& chain) {
  Choices choices;
  for (const ShiftList& list : entry.lists) {
    choices.push_back(describeList(list) + ": " + std::to_string(counts.of(chain, list.id)) +
                      " backbone shifts");
  }
  return choices;
}

/// The choices behind the message, one a line when they are many.
bool reportChoices(std::string text, const Choices& choices, Log& log) {
  constexpr std::size_t kMostInOneLine = 10;
  if (choices.size() > kMostInOneLine) return log.error(0, std::move(text), choices);
  for (const std::string& choice : choices) text += (&choice == &choices.front() ? "" : "; ") + choice;
  return log.error(0, std::move(text));
}

bool goesBy(const Chain& chain, const std::string& name) {
  return chain.id == name ||
         std::find(chain.aliases.begin(), chain.aliases.end(), name) != chain.aliases.end();
}

bool goesBy(const ShiftList& list, const std::string& name) {
  return list.name == name || std::find(list.aliases.begin(), list.aliases.end(), name) != list.aliases.end();
}

/// The chain of that identifier, else the only one with such another name.
const Chain* namedChain(const Entry& entry, const std::string& name) {
  // A chain letter is what users know; an identifier that is another chain's letter is still an identifier.
  if (const Chain* chain = entry.findChain(name)) return chain;
  const Chain* found = nullptr;
  for (const Chain& chain : entry.chains) {
    if (!goesBy(chain, name)) continue;
    if (found != nullptr) return nullptr;
    found = &chain;
  }
  return found;
}

/// A value that is no number tells more than the absence of known atoms.
bool reportNoShifts(const Entry& entry, Log& log) {
  for (const Shift& shift : entry.shifts) {
    if (shift.missing || wholeNumber(shift.text)) continue;
    return log.error(shift.line, "the shift '" + shift.text + "' of atom '" + shift.atom +
                                     "' is no number; are the columns in another order?");
  }
  const bool protein =
      std::any_of(entry.chains.begin(), entry.chains.end(), [](const Chain& chain) { return chain.protein; });
  if (protein || entry.chains.empty()) return log.error(0, "no protein chain has any backbone shift");
  return log.error(0, "the file has no protein: its shifts are of nucleic acids or other molecules");
}

bool chooseChain(const Entry& entry, const BackboneCounts& counts, const Settings& settings, Choice& choice,
                 Log& log) {
  if (!settings.chain.empty()) {
    const Chain* chain = namedChain(entry, settings.chain);
    if (chain == nullptr) {
      return reportChoices("there is no chain '" + settings.chain + "'; the file has ",
                           chainChoices(entry, counts), log);
    }
    if (!chain->protein) return log.error(0, "chain " + describeChain(*chain) + " is no protein");
    if (counts.of(chain->id) == 0) {
      return reportChoices("chain " + describeChain(*chain) + " has no backbone shifts; the file has ",
                           chainChoices(entry, counts), log);
    }
    choice.chain = chain->id;
    return true;
  }
  std::size_t candidates = 0;
  for (const Chain& chain : entry.chains) {
    if (!chain.protein || counts.of(chain.id) == 0) continue;
    choice.chain = chain.id;
    ++candidates;
  }
  if (candidates == 1) return true;
  if (candidates == 0) return reportNoShifts(entry, log);
  choice.ambiguous = true;
  return reportChoices("several chains have shifts, choose one with --chain: ", chainChoices(entry, counts),
                       log);
}

bool chooseList(const Entry& entry, const BackboneCounts& counts, const Settings& settings, Choice& choice,
                Log& log) {
  const bool exact = std::any_of(entry.lists.begin(), entry.lists.end(),
                                 [&](const ShiftList& list) { return list.id == settings.list; });
  std::size_t candidates = 0;
  for (const ShiftList& list : entry.lists) {
    const bool wanted =
        settings.list.empty() || (exact ? settings.list == list.id : goesBy(list, settings.list));
    if (!wanted || counts.of(choice.chain, list.id) == 0) continue;
    choice.list = list.id;
    ++candidates;
  }
  if (candidates == 1) return true;
  if (candidates == 0) {
    return reportChoices("there is no shift list '" + settings.list + "' with backbone shifts; the file has ",
                         listChoices(entry, counts, choice.chain), log);
  }
  choice.ambiguous = true;
  return reportChoices(
      "several shift lists, choose one with --list: ", listChoices(entry, counts, choice.chain), log);
}

}  // namespace

BackboneCounts::BackboneCounts(const Entry& entry) {
  for (const Shift& shift : entry.shifts) {
    if (shift.missing || backboneAtom(residueCode(shift.name), shift.atom).empty()) continue;
    auto& ofChain = counts_[shift.chain];
    ++ofChain[shift.list];
    if (!shift.list.empty()) ++ofChain[""];
  }
}

std::size_t BackboneCounts::of(const std::string& chain, const std::string& list) const {
  const auto lists = counts_.find(chain);
  if (lists == counts_.end()) return 0;
  const auto count = lists->second.find(list);
  return count == lists->second.end() ? 0 : count->second;
}

std::string describeChain(const Chain& chain) {
  std::string names;
  for (const std::string& alias : chain.aliases) names += (names.empty() ? "" : ", ") + alias;
  const bool listed =
      std::find(chain.aliases.begin(), chain.aliases.end(), chain.description) != chain.aliases.end();
  if (!chain.description.empty() && !listed) names += (names.empty() ? "" : ", ") + chain.description;
  return names.empty() ? chain.id : chain.id + " (" + names + ")";
}

std::string describeList(const ShiftList& list) {
  std::string names = list.name == list.id ? "" : list.name;
  if (!list.details.empty())
    names += (names.empty() ? "" : ", ") + tools::shortened(text::simplifyWhiteSpace(list.details));
  return names.empty() ? list.id : list.id + " (" + names + ")";
}

Choice choose(const Entry& entry, const Settings& settings, Log& log) {
  Choice choice;
  const BackboneCounts counts(entry);
  choice.ok =
      chooseChain(entry, counts, settings, choice, log) && chooseList(entry, counts, settings, choice, log);
  return choice;
}

}  // namespace convert
