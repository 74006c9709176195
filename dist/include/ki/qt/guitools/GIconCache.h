#pragma once
// Icons drawn from SVG files whose renderings are kept in one file of the user's cache folder.
// Rendering an SVG icon loads Qt's SVG icon engine and Qt SVG, parses the document and draws
// it: a few milliseconds of every start for the dozen icons of a window. With the renderings
// stored, a later start paints them from the file without touching SVG at all; only a size,
// mode or document not seen before is rendered (and stored).
//
// A rendering is keyed by the document's content, the pixel size, the mode and the state, so a
// changed file or a new program version never shows an old picture. The file holds what the
// last run used; it is written shortly after a new rendering and when the application quits.
// A missing, damaged or unwritable file only costs the rendering.

#include <QIcon>
#include <QString>

namespace ki::qt::icon_cache {

/// An icon of the SVG file `path` (a resource or a file) served from the stored renderings.
QIcon make(const QString& path);

/// The file of stored renderings; an empty name keeps nothing on disk. The default is
/// "icons.bin" in the application's cache folder. Setting it drops what was read before.
void set_file(const QString& file);
QString file();

/// Writes the renderings used so far now, when there is anything new. False when writing failed.
bool save();

/// How many renderings were made from SVG since the start (not read from the file).
int renders();

}  // namespace ki::qt::icon_cache
