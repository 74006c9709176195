#pragma once
// A horizontal slider over a value type T (integers, or floats mapped onto 1000 steps) with a
// value listener and a way to move it without telling anyone.

#include <ki/Listener.h>
#include <ki/qt/ext/ObjectName.h>

#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <cmath>
#include <type_traits>

namespace ki::qt {

template <typename T>
requires std::is_arithmetic_v<T>
class GenericSlider : public QSlider, public ObjectName<QWidget> {
public:
    explicit GenericSlider(QWidget* parent = nullptr, T min_value = T(0), T max_value = T(100))
        : QSlider(Qt::Horizontal, parent), ObjectName<QWidget>(this, "GenericSlider") {
        set_range(min_value, max_value);
        connect(this, &QSlider::valueChanged, this, [this](int position) {
            if (liValue.has_listener()) liValue.fire_event(from_position(position));
        });
    }

    /// A reversed range is swapped.
    void set_range(T min_value, T max_value) {
        if (max_value < min_value) std::swap(min_value, max_value);
        low = min_value;
        high = max_value;
        const QSignalBlocker blocker(this);
        if constexpr (std::is_integral_v<T>)
            setRange(int(low), int(high));
        else
            setRange(0, STEPS);
    }
    T get_min() const { return low; }
    T get_max() const { return high; }

    /// Moves the slider and fires `liValue` (when the position changes).
    void set_value(T value) { setValue(to_position(value)); }
    /// Moves the slider without firing anything: for updates that come from the model.
    void set_value_no_notify(T value) {
        const QSignalBlocker blocker(this);
        setValue(to_position(value));
    }
    T get_value() const { return from_position(value()); }

    Listener<T> liValue;

private:
    static constexpr int STEPS = 1000;

    int to_position(T value) const {
        value = std::clamp(value, low, high);
        if constexpr (std::is_integral_v<T>)
            return int(value);
        else
            return high == low ? 0 : int(std::lround((value - low) / (high - low) * STEPS));
    }
    T from_position(int position) const {
        if constexpr (std::is_integral_v<T>)
            return T(position);
        else
            return low + (high - low) * T(position) / T(STEPS);
    }

    T low = T(0);
    T high = T(100);
};

}  // namespace ki::qt
