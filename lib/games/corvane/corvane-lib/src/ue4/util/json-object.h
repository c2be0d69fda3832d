// How documents are built and destroyed so that memory that runs out is an exception and nothing worse.
//
// nlohmann::json has two weak spots then. A null value that becomes an object because a member is set in it
// is broken when there is no memory for the object, and crashes when it is destroyed: AsObject makes the
// object first. And the destructor of an array or object that is not empty takes memory, and ends the process
// when there is none: members are set one by one, since a braced list of members destroys such temporaries,
// and whole documents are held by a Document.
#pragma once

#include <utility>

#include <nlohmann/json.hpp>

namespace ue4 {

// The value itself, an empty object if it was null.
inline nlohmann::json& AsObject(nlohmann::json& value) {
    if (value.is_null()) value = nlohmann::json::object();
    return value;
}

// Empties a value from the inside out; takes no memory.
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
