// Sources of photographs for tests: memory, and one that counts, fails and lies.
#pragma once

#include "testing/bytes.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace test {

inline tvmeta_Photo emptyRecord() {
    tvmeta_Photo photo{};
    photo.recordSize = sizeof photo;
    return photo;
}

inline tvmeta_Source memorySource(const Bytes& bytes) {
    tvmeta_Source source{};
    tvmeta_memory(bytes.data(), std::ssize(bytes), &source);
    return source;
}

struct ReadPhoto {
    std::int32_t result;
    tvmeta_Photo record;
};
inline ReadPhoto readPhotoOf(const Bytes& bytes) {
    const tvmeta_Source source = memorySource(bytes);
    tvmeta_Photo record = emptyRecord();
    const std::int32_t result = tvmeta_read_photo(&source, &record);
    return {result, record};
}

// A source of an application. The bytes must outlive it.
class CallerSource {
  public:
    enum class Fault { None, Error, Excess, Short };
    static constexpr std::int64_t EveryCall = -2;

    explicit CallerSource(const Bytes& bytes, Fault fault = Fault::None, std::int64_t faultyCall = -1)
        : bytes_(bytes), fault_(fault), faultyCall_(faultyCall) {}
    CallerSource(const CallerSource&) = delete;
    CallerSource& operator=(const CallerSource&) = delete;

    tvmeta_Source source() { return {this, std::ssize(bytes_), read, nullptr}; }

    std::int64_t calls() const { return calls_; }
    std::int64_t bytesRead() const { return bytesRead_; }
    bool isMisused() const { return isMisused_; } // asked for bytes that it does not have

  private:
    static std::int64_t read(void* context, std::int64_t position, void* buffer, std::int64_t count) {
        auto& self = *static_cast<CallerSource*>(context);
        const std::int64_t size = std::ssize(self.bytes_);
        if (position < 0 || count <= 0 || position >= size || count > size - position) {
            self.isMisused_ = true;
            return -1;
        }
        const bool isFaulty = self.calls_++ == self.faultyCall_ || self.faultyCall_ == EveryCall;
        if (isFaulty && self.fault_ == Fault::Error) {
            return -5;
        }
        const std::int64_t kept = isFaulty && self.fault_ == Fault::Short ? count / 2 : count;
        std::memcpy(buffer, self.bytes_.data() + position, static_cast<std::size_t>(kept));
        self.bytesRead_ += kept;
        return isFaulty && self.fault_ == Fault::Excess ? count + 1 : kept;
    }

    const Bytes& bytes_;
    Fault fault_;
    std::int64_t faultyCall_;
    std::int64_t calls_ = 0;
    std::int64_t bytesRead_ = 0;
    bool isMisused_ = false;
};

} // namespace test
