#pragma once
// Whole days in the learner's calendar: the scheduler counts days, and a day turns at local
// midnight, not at midnight UTC.

#include <QtGlobal>

class QTimeZone;

namespace morvel::review {

class LocalDay {
public:
    /// Days from 1970-01-01 to the local date of `msecsSinceEpoch` in `zone`.
    static int of(qint64 msecsSinceEpoch, const QTimeZone& zone);
    /// The instant `day` begins in `zone` (the first valid local time on that date).
    static qint64 start_of(int day, const QTimeZone& zone);
};

}  // namespace morvel::review
