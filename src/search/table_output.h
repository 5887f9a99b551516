// Parts shared by the writers of the prediction tables.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tables/GDB.h"

/// Text of a number cell; 9999 for a number that is not finite (a damaged database or input).
std::string finiteCell(double value);

/// The residue type as read, "?" unless it is one character.
std::string residueName(const std::map<int, std::string>& names, int resid);

/// "?" for characters that would break a table row.
char printableCode(char code);

void addRemarks(GDB& table, const std::vector<std::string>& remarks);

/// Five remarks, the first of them "Reference:".
void addReferenceRemarks(GDB& table);

/// The DATA lines of the input's numbering and sequence.
void addSequenceData(GDB& table, const GDB& input);
