// Sample, conditions and referencing of an NMR-STAR 3.x entry.
#pragma once

#include "convert/entry.h"
#include "convert/star.h"

namespace convert {

/// Fills the entry's format name, facts and isotope labelling.
void readStarContext(const star::Document& document, Entry& entry);

}  // namespace convert
