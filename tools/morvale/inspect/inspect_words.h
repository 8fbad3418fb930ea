/// A result record in words.
#pragma once

#include <string>

#include "service/camera_service.h"
#include "session/json.h"

namespace tool {

/// What the record says, as lines that begin with two blanks.
std::string record_words(const PersonWholeMeta& record, Camera camera);

/// The same as JSON: faces, or person box, hint and grid.
morvale::session::Json record_json(const PersonWholeMeta& record, Camera camera);

/// How many blocks of the record are a face's: at most three on the front camera, none on the back camera.
int face_blocks(const PersonWholeMeta& record, Camera camera);

/// Every word of the record with its offset, name, value and meaning.
std::string word_table(const PersonWholeMeta& record, Camera camera);
morvale::session::Json words_json(const PersonWholeMeta& record, Camera camera);

/// The record's bytes, sixteen a line behind their decimal offset.
std::string hex_dump(const PersonWholeMeta& record);
std::string hex_digits(const PersonWholeMeta& record);

}  // namespace tool
