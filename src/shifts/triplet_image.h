// The triplet library in the table image.
#pragma once

#include <optional>
#include <string>

#include "shifts/triplet_library.h"
#include "tables/TableImage.h"
#include "tables/imageParts.h"

/// The parts of a library as read from its text, nothing excluded.
image::Parts encodeTriplets(const TripletLibrary& library);

/// Nothing when the parts are not those of a library.
std::optional<TripletLibrary> decodeTriplets(const image::ImagedTable& table);

/// The library `file` from the image in its folder. Nothing, and nothing said, when there is none that fits.
std::optional<TripletLibrary> loadTripletImage(const std::string& file);
