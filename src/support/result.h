// Support: a value, or the result code with which an exported function ends.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace tvmeta {

struct Failure {
    std::int32_t code;
};

template <typename Value>
class [[nodiscard]] Result {
  public:
    Result(Value value) : value_(std::move(value)) {}
    Result(Failure failure) : code_(failure.code) {}

    explicit operator bool() const { return value_.has_value(); }
    const Value& operator*() const { return *value_; }
    const Value* operator->() const { return &*value_; }

    std::int32_t code() const { return code_; } // of a failure

  private:
    std::optional<Value> value_;
    std::int32_t code_ = 0;
};

} // namespace tvmeta
