// The fragment database in the table image, with the keys of the pre-screen.
#pragma once

#include <optional>
#include <string>

#include "search/screen_index.h"
#include "tables/DB.h"
#include "tables/imageParts.h"

/// The parts of a database that was read from its text, and of the index made from it.
image::Parts encodeDatabase(const DB& db, const ScreenIndex& index);

/// Fills `db`; false when the parts are not those of a database of at most `db.maxDBSize` entries.
bool decodeDatabase(const image::ImagedTable& table, DB& db);

/// The places of the pre-screen in the image that `db` was loaded from, as long as `db` lives.
std::span<const ScreenIndex::Place> placesInImage(const DB& db);

/// The database `path` from the image in its folder. False, and nothing said, when there is none that fits.
bool loadDatabaseImage(DB& db, const std::string& path, image::Bulk use);
