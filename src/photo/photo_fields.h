// Photo: the fields of the record, from the entries of the directories (EXIF 2.32, TIFF 6.0).
#pragma once

#include "metadata/source_reader.h"
#include "photo/tag_set.h"

#include <string_view>

namespace tvmeta {

// The tags, and the record that is filled from them.
struct PhotoFields {
    SourceReader& reader;
    const TagSet& tags;
    tvmeta_Photo& photo;

    void fill() const;

    void set(int field) const { photo.present |= std::uint64_t{1} << field; }
    void derive(int field) const {
        set(field);
        photo.derived |= std::uint64_t{1} << field;
    }
    void damage(int field) const { photo.damaged |= std::uint64_t{1} << field; }
    bool has(int field) const { return TVMETA_HAS(&photo, field) != 0; }

  private:
    void fillTexts() const;
    void fillIntegers() const;
    void fillFractions() const;
    void fillIsoSpeed() const;
    void deriveExposure() const;
    void fillTime() const;
    void fillFraction(const tvmeta_Tag* tag) const;
    void fillPosition() const;
    void fillAltitude() const;
    void fillGpsTime() const;
};

// Sets a text field, in UTF-8. A text that is too long is cut, and its field is damaged.
void setText(const PhotoFields& fields, int field, std::span<char> text, std::string_view value);

} // namespace tvmeta
