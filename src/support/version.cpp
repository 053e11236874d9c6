#include "tvmeta.h"

#define TVMETA_TEXT(value) #value
#define TVMETA_VERSION_TEXT(major, minor, patch) TVMETA_TEXT(major) "." TVMETA_TEXT(minor) "." TVMETA_TEXT(patch)

const char* tvmeta_version() noexcept {
    return TVMETA_VERSION_TEXT(TVMETA_VERSION_MAJOR, TVMETA_VERSION_MINOR, TVMETA_VERSION_PATCH);
}
