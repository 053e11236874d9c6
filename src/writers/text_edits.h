// Writers: changes to a text, collected first and then made at once.
#pragma once

#include "support/packed_numbers.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tvmeta {

class TextEdits {
  public:
    explicit TextEdits(std::string_view text) : text_(text) {}

    // Replaces [begin, end), which no other edit touches, by a text that must outlive this object.
    void replace(std::size_t begin, std::size_t end, std::string_view by) {
        if (count_ < edits_.size()) {
            const auto edits = std::span(edits_).first(++count_);
            const auto place = std::ranges::upper_bound(edits.first(count_ - 1), begin, {}, &Edit::begin);
            std::shift_right(place, edits.end(), 1);
            *place = {begin, end, by};
        }
    }
    void insert(std::size_t place, std::string_view text) { replace(place, place, text); }

    // The text with all edits. Its size is 0 without memory.
    ZeroedBuffer apply() {
        const auto edits = std::span(edits_).first(count_);
        std::size_t size = text_.size();
        for (const Edit& edit : edits) {
            size += edit.by.size();
            size -= edit.end - edit.begin;
        }
        ZeroedBuffer result(size);
        std::size_t from = 0;
        ByteWriter writer(result.bytes());
        const auto put = [&](std::string_view text) {
            writer.put({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
        };
        for (const Edit& edit : edits) {
            put({text_.data() + from, edit.begin - from});
            put(edit.by);
            from = edit.end;
        }
        put({text_.data() + from, text_.size() - from});
        return result;
    }

  private:
    struct Edit {
        std::size_t begin;
        std::size_t end;
        std::string_view by;
    };

    std::string_view text_;
    std::array<Edit, 16> edits_; // sorted by place; edits of one place in the order of their calls
    std::size_t count_ = 0;
};

} // namespace tvmeta
