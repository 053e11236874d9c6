// Photo: the record of an open photograph.
#pragma once

#include "photo/open_photo.h"
#include "photo/tag_set.h"

namespace tvmeta {

// Fills a cleared record. `tags` have been offered every entry of the walker. open.failure() says whether it is valid.
void fillPhoto(OpenPhoto& open, const TagSet& tags, tvmeta_Photo& photo);

} // namespace tvmeta
