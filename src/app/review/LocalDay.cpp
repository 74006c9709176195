#include "app/review/LocalDay.h"

#include <QDateTime>
#include <QTimeZone>

namespace morvel::review {

namespace {
constexpr qint64 JULIAN_1970 = 2440588;
}

int LocalDay::of(qint64 msecsSinceEpoch, const QTimeZone& zone) {
    const QDate date = QDateTime::fromMSecsSinceEpoch(msecsSinceEpoch, zone).date();
    return static_cast<int>(date.toJulianDay() - JULIAN_1970);
}

qint64 LocalDay::start_of(int day, const QTimeZone& zone) {
    const QDate date = QDate::fromJulianDay(day + JULIAN_1970);
    // Where midnight is skipped by a clock change, the day begins at the first hour that exists.
    for (int hour = 0; hour < 24; ++hour) {
        const QDateTime start(date, QTime(hour, 0), zone);
        if (start.isValid() && start.date() == date) return start.toMSecsSinceEpoch();
    }
    return QDateTime(date, QTime(0, 0), zone).toMSecsSinceEpoch();
}

}  // namespace morvel::review
