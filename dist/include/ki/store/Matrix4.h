#pragma once
// A 4x4 float matrix as a record that a settings node can store.

#include <ki/store/GType.h>

#include <glm/mat4x4.hpp>
#include <string>

namespace ki::store {

struct Matrix4 {
    glm::mat4 value{1.0f};

    bool operator==(const Matrix4& other) const { return value == other.value; }
    /// "Matrix4{[a, b, c, d], ...}", row by row.
    std::string to_string() const;
};

template <>
struct GTypeInfo<Matrix4> {
    static constexpr unsigned int id = 2;
    static constexpr const char* name = "Matrix4";
};

static_assert(StorableRecord<Matrix4>);

}  // namespace ki::store
