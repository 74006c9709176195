#pragma once
// The printable worksheet: per character a heading, the stroke order as a strip of small
// squares and practice squares, written as vector PDF through the same stroke model and
// painter context as the canvas.

#include <ki/GError.h>

#include <QString>
#include <vector>

#include "app/worksheet/WorksheetLayout.h"
#include "app/worksheet/WorksheetSource.h"

class QIODevice;

namespace ki::qt {
class GPC;
}

namespace morvel {

class Worksheet {
public:
    /// Writes the PDF to `fileName`; an existing file is replaced only once the new one is
    /// complete. Returns the number of pages, or the reason the file could not be written.
    static ki::GSysResult<int> write_file(const QString& fileName, const std::vector<WorksheetEntry>& entries,
                                          const WorksheetOptions& options);
    /// Writes the PDF into an open device. Returns the number of pages.
    static ki::GSysResult<int> write(QIODevice& device, const std::vector<WorksheetEntry>& entries,
                                     const WorksheetOptions& options);
    /// Paints one page of `layout` in millimetres: the painter's transform maps them to the device.
    static void draw_page(ki::qt::GPC& gpc, const WorksheetLayout& layout, int page,
                          const std::vector<WorksheetEntry>& entries, const WorksheetOptions& options);
    /// The family of the bundled writing font, registered on first use; "" when it cannot be.
    static QString writing_font();
};

}  // namespace morvel
