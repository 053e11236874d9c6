// Support: a zero-filled block of heap memory that lives for one call.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <span>

namespace tvmeta {

class ZeroedBuffer {
  public:
    ZeroedBuffer() = default; // no block
    explicit ZeroedBuffer(std::size_t size)
        // An empty block is a block: calloc(0) may give a null pointer that is no failure.
        : bytes_(static_cast<unsigned char*>(std::calloc(size > 0 ? size : 1, 1))), size_(bytes_ ? size : 0) {}

    // False when the allocation failed.
    explicit operator bool() const { return bytes_ != nullptr; }

    unsigned char* data() { return bytes_.get(); }
    const unsigned char* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }
    std::span<unsigned char> bytes() { return {bytes_.get(), size_}; }
    char* text() { return reinterpret_cast<char*>(bytes_.get()); }

  private:
    struct Free {
        void operator()(unsigned char* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<unsigned char[], Free> bytes_;
    std::size_t size_ = 0;
};

} // namespace tvmeta
