// Writers: the directories of a result with everything that its photograph says.
#pragma once

#include "support/zeroed_buffer.h"
#include "writers/directory_builder.h"
#include "writers/pixel_writer.h"
#include "writers/result_contents.h"

#include <cstdint>

namespace tvmeta {

// The image directory is the first, and refers to the others. The contents are borrowed.
class ResultDirectories {
  public:
    ResultDirectories(const ResultContents& contents, DirectoryForm form);
    ResultDirectories(const ResultDirectories&) = delete;
    ResultDirectories& operator=(const ResultDirectories&) = delete;

    explicit operator bool() const { return static_cast<bool>(fields_); } // false without memory
    DirectoryForm form() const { return form_; }

    // Adds the photograph's entries, then the fields that only a result has. `layout` is null for an EXIF block, which
    // has neither pixels nor other blocks.
    void add(const tvmeta_Result& result, const PixelLayout* layout);

    DirectoryBuilder image;

  private:
    struct Slot {
        std::int32_t directory;
        DirectoryBuilder ResultDirectories::*builder;
    };
    static const Slot Slots[4];

    void addPhotographs();
    void addTexts(const tvmeta_Result& result, bool isFloat);
    void addExif(const tvmeta_Result& result);
    void link();

    const ResultContents& contents_;
    DirectoryForm form_;
    ZeroedBuffer fields_;
    DirectoryBuilder exif_;
    DirectoryBuilder gps_;
    DirectoryBuilder interoperability_;
};

} // namespace tvmeta
