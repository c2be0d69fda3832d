// How to build and destroy documents so that a lack of memory becomes an exception and never ends the
// process.
//
// nlohmann::json has two weak spots when memory runs out:
//
// - Setting a member turns a null value into an object. Without memory for the object the value is broken,
//   and its destructor crashes. So AsObject makes the object first.
// - The destructor of an array or object that is not empty takes memory, and ends the process if there is
//   none. So members are set one by one (a braced list destroys temporaries), and a Document holds whole
//   documents.
#pragma once

#include <utility>

#include <nlohmann/json.hpp>

namespace ue4 {

// Returns the value itself; makes it an empty object first if it was null.
inline nlohmann::json& AsObject(nlohmann::json& value) {
    if (value.is_null()) value = nlohmann::json::object();
    return value;
}

// Empties a value from the inside out. Takes no memory.
inline void Clear(nlohmann::json& value) noexcept {
    if (auto* object = value.get_ptr<nlohmann::json::object_t*>()) {
        for (auto& [key, member] : *object) Clear(member);
        object->clear();
    } else if (auto* array = value.get_ptr<nlohmann::json::array_t*>()) {
        for (nlohmann::json& element : *array) Clear(element);
        array->clear();
    }
}

struct Document {
    // NOLINTNEXTLINE(bugprone-exception-escape): a null value throws nothing
    Document() = default;
    explicit Document(nlohmann::json value) : json(std::move(value)) {}
    ~Document() { Clear(json); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    nlohmann::json json;
};

}  // namespace ue4
