#include <ki/store/Matrix4.h>

#include <sstream>

namespace ki::store {

std::string Matrix4::to_string() const {
    std::ostringstream os;
    os << "Matrix4{";
    for (int row = 0; row < 4; ++row) {
        if (row > 0) os << ", ";
        // glm keeps columns: value[column][row].
        os << str::xprintF(0, "[$, $, $, $]", value[0][row], value[1][row], value[2][row], value[3][row]);
    }
    os << "}";
    return os.str();
}

}  // namespace ki::store
