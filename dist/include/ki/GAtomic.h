#pragma once
// A value shared between threads that the `$` formatter prints as its current value.

#include <ki/str/xprintF.h>

#include <atomic>
#include <string>

namespace ki {

template <typename T>
class GAtomic {
public:
    GAtomic() = default;
    GAtomic(T initial) : value(initial) {}

    T load() const { return value.load(); }
    void store(T v) { value.store(v); }
    GAtomic& operator=(T v) {
        store(v);
        return *this;
    }
    operator T() const { return load(); }

    std::string to_string() const { return str::xprintF(0, "$", load()); }

private:
    std::atomic<T> value{};
};

}  // namespace ki
