// Which chain and which shift list of a file are converted.
#include "convert/choose.h"

#include <algorithm>

#include "convert/names.h"

namespace convert {

namespace {

std::string chainChoices(const Entry& entry) {
  std::string text;
  for (const Chain& chain : entry.chains) {
    text += text.empty() ? "" : "; ";
    text += describeChain(chain) + ": ";
    if (!chain.protein) {
      text += "no protein";
      continue;
    }
    text += std::to_string(chain.residues.size()) + " residues, " +
            std::to_string(countBackboneShifts(entry, chain.id, "")) + " backbone shifts";
  }
  return text;
}

std::string listChoices(const Entry& entry, const std::string& chain) {
  std::string text;
  for (const ShiftList& list : entry.lists) {
    text += (text.empty() ? "" : "; ") + describeList(list) + ": " +
            std::to_string(countBackboneShifts(entry, chain, list.id)) + " backbone shifts";
  }
  return text;
}

bool goesBy(const Chain& chain, const std::string& name) {
  return chain.id == name ||
         std::find(chain.aliases.begin(), chain.aliases.end(), name) != chain.aliases.end();
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
  return log.error(0, "no protein chain has any backbone shift");
}

bool chooseChain(const Entry& entry, const Settings& settings, Choice& choice, Log& log) {
  if (!settings.chain.empty()) {
    const Chain* chain = namedChain(entry, settings.chain);
    if (chain == nullptr) {
      return log.error(0, "there is no chain '" + settings.chain + "'; the file has " + chainChoices(entry));
    }
    if (!chain->protein) return log.error(0, "chain " + describeChain(*chain) + " is no protein");
    if (countBackboneShifts(entry, chain->id, "") == 0) {
      return log.error(0, "chain " + describeChain(*chain) + " has no backbone shifts; the file has " +
                              chainChoices(entry));
    }
    choice.chain = chain->id;
    return true;
  }
  std::size_t candidates = 0;
  for (const Chain& chain : entry.chains) {
    if (!chain.protein || countBackboneShifts(entry, chain.id, "") == 0) continue;
    choice.chain = chain.id;
    ++candidates;
  }
  if (candidates == 1) return true;
  if (candidates == 0) return reportNoShifts(entry, log);
  choice.ambiguous = true;
  return log.error(0, "several chains have shifts, choose one with --chain: " + chainChoices(entry));
}

bool chooseList(const Entry& entry, const Settings& settings, Choice& choice, Log& log) {
  std::size_t candidates = 0;
  for (const ShiftList& list : entry.lists) {
    const bool wanted = settings.list.empty() || settings.list == list.id || settings.list == list.name;
    if (!wanted || countBackboneShifts(entry, choice.chain, list.id) == 0) continue;
    choice.list = list.id;
    ++candidates;
  }
  if (candidates == 1) return true;
  if (candidates == 0) {
    return log.error(0, "there is no shift list '" + settings.list + "' with backbone shifts; the file has " +
                            listChoices(entry, choice.chain));
  }
  choice.ambiguous = true;
  return log.error(0, "several shift lists, choose one with --list: " + listChoices(entry, choice.chain));
}

}  // namespace

std::size_t countBackboneShifts(const Entry& entry, const std::string& chain, const std::string& list) {
  return static_cast<std::size_t>(
      std::count_if(entry.shifts.begin(), entry.shifts.end(), [&](const Shift& shift) {
        return !shift.missing && shift.chain == chain && (list.empty() || shift.list == list) &&
               !backboneAtom(residueCode(shift.name), shift.atom).empty();
      }));
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
  std::string names = list.name;
  if (!list.details.empty()) names += (names.empty() ? "" : ", ") + list.details;
  return names.empty() ? list.id : list.id + " (" + names + ")";
}

Choice choose(const Entry& entry, const Settings& settings, Log& log) {
  Choice choice;
  choice.ok = chooseChain(entry, settings, choice, log) && chooseList(entry, settings, choice, log);
  return choice;
}

}  // namespace convert
