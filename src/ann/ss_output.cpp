// Parts of the secondary structure tables that both prediction modes share.
#include "ann/ss_output.h"

void SequenceBlocks::add(const std::string& code, const SSAssignment& assignment) {
  codes += code;
  classes += assignment.letter;
  digits += std::to_string(static_cast<int>(10.0 * assignment.confidence));
  ++count;
  if (count % 10 == 0) {
    for (std::string* line : {&codes, &classes, &digits}) *line += ' ';
  }
  if (count % 50 == 0) flush();
}

void SequenceBlocks::flush() {
  text += "DATA SEQUENCE     " + codes + "\nDATA PREDICTED_SS " + classes + "\nDATA CONFIDENCE   " + digits +
          "\n\n";
  codes.clear();
  classes.clear();
  digits.clear();
}
