#pragma once
// Random values for names and tests; not for anything secret.

#include <QString>

namespace ki::rnd {

/// `length` random characters: letters only with `letters_only`, else letters and digits.
/// A length below 1 gives an empty string.
QString next_QString(int length, bool letters_only);

/// A random integer in [low, high]; the bounds are swapped when given the wrong way round.
int next_int(int low, int high);

}  // namespace ki::rnd
