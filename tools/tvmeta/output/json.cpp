#include "output/json.h"

#include <nlohmann/json.hpp>

#include <type_traits>

std::string jsonObject(const Record& record) {
    using nlohmann::ordered_json;
    ordered_json object = ordered_json::object();
    for (const NamedValue& member : record) {
        std::visit(
            [&](const auto& value) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
                    object[member.name] = value;
                }
            },
            member.value);
    }
    return object.dump(-1, ' ', true, ordered_json::error_handler_t::replace);
}
